#include "library/library_catalog.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

#include "platform/desktop_services.h"
#include "platform/failure.h"
#include "platform/localized.h"
#include "platform/unicode.h"
#include "platform/uuid.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;

// Longest file name that the usual file systems of Linux take, in bytes.
constexpr std::size_t maximumFileNameSize = 255;

CodingFailure damagedCatalog() {
  return CodingFailure(localized("catalog_error_damaged",
                                 "The list of libraries (libraries.json) is damaged and was left as it is.",
                                 "Catalog failure: the file is not the documented JSON"));
}

nlohmann::json toJSON(const MBOXLibrary& library) {
  return {{"id", library.id.view()},
          {"displayName", library.displayName.view()},
          {"fileName", library.fileName.view()},
          {"importedAt", formatISO8601(library.importedAt)},
          {"isCloudDerived", library.isCloudDerived}};
}

MBOXLibrary libraryFromJSON(const nlohmann::json& json) {
  const auto date = parseISO8601(json.at("importedAt").get_ref<const std::string&>());
  const std::string& fileName = json.at("fileName").get_ref<const std::string&>();
  // A name that leads out of the folder was not written here, and a delete would follow it.
  if (!date || fileName.find('/') != std::string::npos || fileName == "." || fileName == "..") {
    throw damagedCatalog();
  }
  return {json.at("id").get_ref<const std::string&>(), json.at("displayName").get_ref<const std::string&>(),
          fileName, *date, json.at("isCloudDerived").get<bool>()};
}

std::vector<MBOXLibrary> decodeCatalog(const std::string& text) {
  std::vector<MBOXLibrary> libraries;
  try {
    const nlohmann::json json = nlohmann::json::parse(text);
    if (!json.is_array()) {
      throw damagedCatalog();
    }
    for (const auto& element : json) {
      libraries.push_back(libraryFromJSON(element));
    }
  } catch (const nlohmann::json::exception&) {
    throw damagedCatalog();
  }
  return libraries;
}

std::string lastPathComponent(const fs::path& path) {
  const fs::path name = path.has_filename() ? path.filename() : path.parent_path().filename();
  return repairUTF8(name.string());
}

// "a.b.mbox" is shown as "a.b"; a name that only begins or ends with a dot has no extension.
std::string withoutExtension(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 || dot + 1 == name.size() ? name : name.substr(0, dot);
}

// A fresh name for the copy that keeps the source's name readable. A name that would become too long for the
// file system with the identifier before it loses the end of its stem.
std::string makeStoredName(const std::string& sourceName) {
  const std::string prefix = UUID::make().lowerCaseString() + "-";
  const std::string name = sourceName.empty() ? "library.mbox" : sourceName;
  const std::size_t room = maximumFileNameSize - prefix.size();
  if (name.size() <= room) {
    return prefix + name;
  }
  const std::string stem = withoutExtension(name);
  std::string_view extension = std::string_view(name).substr(stem.size());
  if (extension.size() > room / 2) {
    extension = {};
  }
  std::size_t end = room - extension.size();
  while (end > 0 && (static_cast<unsigned char>(stem[end]) & 0xC0U) == 0x80U) {
    --end;  // Never in the middle of a character.
  }
  return prefix + stem.substr(0, end) + std::string(extension);
}

}  // namespace

void sortNewestFirst(std::vector<MBOXLibrary>& libraries) {
  std::stable_sort(libraries.begin(), libraries.end(),
                   [](const auto& a, const auto& b) { return a.importedAt > b.importedAt; });
}

LibraryCatalog::LibraryCatalog(fs::path folder, Clock clock)
    : folder_(std::move(folder)), clock_(std::move(clock)) {
  if (!clock_) {
    clock_ = [] {
      return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
    };
  }
}

fs::path LibraryCatalog::catalogFile() const {
  return folder_ / "libraries.json";
}

fs::path LibraryCatalog::librariesFolder() const {
  return folder_ / "Libraries";
}

fs::path LibraryCatalog::fileLocation(const MBOXLibrary& library) const {
  return library.fileName.empty() ? librariesFolder() : librariesFolder() / library.fileName.string();
}

void LibraryCatalog::ensureDirectories() const {
  createPrivateFolders(librariesFolder());
}

std::vector<MBOXLibrary> LibraryCatalog::loadLibraries() const {
  ensureDirectories();
  if (!fileExists(catalogFile())) {
    return {};
  }
  auto libraries = decodeCatalog(readFile(catalogFile()));
  sortNewestFirst(libraries);
  return libraries;
}

std::vector<MBOXLibrary> LibraryCatalog::importLibraries(const std::vector<fs::path>& urls,
                                                         const CopyObserver& observer) const {
  if (urls.empty()) {
    return {};
  }
  auto libraries = loadLibraries();
  std::vector<MBOXLibrary> imported;
  for (const auto& url : urls) {
    const std::string sourceName = lastPathComponent(url);
    std::string displayName = withoutExtension(sourceName);
    const std::string storedName = makeStoredName(sourceName);
    if (displayName.empty()) {
      displayName = sourceName;
    }
    MBOXLibrary library{UUID::make().string(), displayName, storedName, {}, false};
    const fs::path file = fileLocation(library);
    CopyProgress progress;
    if (observer) {
      progress = [&](std::uint64_t there, std::uint64_t expected) {
        observer({library, file, there, expected});
      };
    }
    copyFile(url, file, progress);
    library.importedAt = clock_();
    imported.push_back(library);
    libraries.push_back(std::move(library));
  }
  writeLibraries(libraries);
  sortNewestFirst(imported);
  return imported;
}

MBOXLibrary LibraryCatalog::adoptLibrary(const DiscoveredLibrary& discovered) const {
  auto libraries = loadLibraries();
  const auto known = std::find_if(libraries.begin(), libraries.end(),
                                  [&](const auto& library) { return library.id == discovered.id; });
  if (known != libraries.end()) {
    return *known;
  }
  Date importedAt = discovered.latestDate.value_or(clock_());
  if (!parseISO8601(formatISO8601(importedAt))) {
    importedAt = clock_();  // Mail may carry a year that the catalog could not read back.
  }
  libraries.push_back({discovered.id, discovered.displayName, Text(), importedAt, true});
  writeLibraries(libraries);
  return libraries.back();
}

std::vector<MBOXLibrary> LibraryCatalog::renameLibrary(const Text& id, const Text& name) const {
  auto libraries = loadLibraries();
  const std::string_view trimmed = trimWhitespaceAndNewlines(name);
  if (trimmed.empty()) {
    return libraries;
  }
  const auto renamed =
      std::find_if(libraries.begin(), libraries.end(), [&](const auto& library) { return library.id == id; });
  if (renamed == libraries.end()) {
    return libraries;
  }
  renamed->displayName = trimmed;
  // A library that the user has named is one of his own from now on, although it still has no file.
  renamed->isCloudDerived = false;
  writeLibraries(libraries);
  sortNewestFirst(libraries);
  return libraries;
}

std::vector<MBOXLibrary> LibraryCatalog::deleteLibrary(const Text& id) const {
  auto libraries = loadLibraries();
  const auto found =
      std::find_if(libraries.begin(), libraries.end(), [&](const auto& library) { return library.id == id; });
  if (found == libraries.end()) {
    return libraries;
  }
  // For a library without a file this is the folder of all copies, which then goes as a whole: into the
  // trash, from where the user can take back the copies of the other libraries.
  const fs::path file = fileLocation(*found);
  const bool isWholeFolder = found->fileName.empty();
  libraries.erase(found);
  ensureDirectories();
  if (isWholeFolder) {
    std::error_code unknown;
    if (!fs::is_empty(file, unknown)) {
      moveToTrash(file);
    }
  } else if (fileExists(file)) {
    removeItem(file);
  }
  writeLibraries(libraries);
  sortNewestFirst(libraries);
  return libraries;
}

void LibraryCatalog::writeLibraries(const std::vector<MBOXLibrary>& libraries) const {
  nlohmann::json json = nlohmann::json::array();
  for (const auto& library : libraries) {
    json.push_back(toJSON(library));
  }
  writeFileAtomically(catalogFile(), json.dump(2) + "\n");
}

}  // namespace tidewrack
