#include "cli/attachment_files.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "platform/failure.h"
#include "platform/localized.h"
#include "reading/safe_file_name.h"

namespace tidewrack {
namespace {

constexpr std::size_t longestExtension = 20;
constexpr int mostNumbers = 100'000;

/// Where the extension begins; the length of the name when it has none.
std::size_t extensionStart(std::string_view name) {
  const auto dot = name.rfind('.');
  const bool isExtension = dot != std::string_view::npos && dot > 0 && name.size() - dot <= longestExtension;
  return isExtension ? dot : name.size();
}

FileFailure failure(const std::filesystem::path& path, int error) {
  return FileFailure(formatText(localized("ctl_attachment_failed", "The file \"%@\" could not be written: %@",
                                          "tidewrackctl error with file and reason"),
                                {path.string(), std::string(std::strerror(error))}));
}

/// Opens a file that did not exist before: `name`, or `name` with a number.
int createNew(const std::filesystem::path& folder, const std::string& name, std::filesystem::path& path) {
  const auto dot = extensionStart(name);
  for (int number = 1; number < mostNumbers; ++number) {
    const auto mark = number == 1 ? std::string() : " (" + std::to_string(number) + ")";
    path = folder / (name.substr(0, dot) + mark + name.substr(dot));
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (descriptor >= 0 || errno != EEXIST) {
      return descriptor;
    }
  }
  errno = EEXIST;
  return -1;
}

void writeAll(int descriptor, std::string_view bytes, const std::filesystem::path& path) {
  while (!bytes.empty()) {
    const auto written = write(descriptor, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      const int error = errno;
      close(descriptor);
      unlink(path.c_str());
      throw failure(path, error);
    }
  }
  if (close(descriptor) != 0) {
    throw failure(path, errno);
  }
}

}  // namespace

std::vector<std::filesystem::path> saveAttachments(const EmailMessage& message,
                                                   const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) {
    throw failure(folder, error.value());
  }
  std::vector<std::filesystem::path> files;
  for (const auto& attachment : message.attachments) {
    const auto bytes = attachment.data.bytes();
    std::filesystem::path path;
    const int descriptor = createNew(folder, safeFileName(attachment.fileName), path);
    if (descriptor < 0) {
      throw failure(path, errno);
    }
    writeAll(descriptor, bytes, path);
    files.push_back(path);
  }
  return files;
}

}  // namespace tidewrack
