#include "cli/attachment_files.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>
#include <unistd.h>

#include "platform/failure.h"
#include "platform/localized.h"

namespace tidewrack {
namespace {

// Well below the 255 bytes of the file systems, so that a number fits behind.
constexpr std::size_t longestName = 200;
constexpr std::size_t longestExtension = 20;
constexpr int mostNumbers = 100'000;

bool isHidden(UChar32 character) {
  const auto type = u_charType(character);
  return character < 0 || type == U_CONTROL_CHAR || type == U_FORMAT_CHAR || type == U_LINE_SEPARATOR ||
         type == U_PARAGRAPH_SEPARATOR;
}

/// Where the extension begins; the length of the name when it has none.
std::size_t extensionStart(std::string_view name) {
  const auto dot = name.rfind('.');
  const bool isExtension = dot != std::string_view::npos && dot > 0 && name.size() - dot <= longestExtension;
  return isExtension ? dot : name.size();
}

void cutToBytes(std::string& text, std::size_t count) {
  if (text.size() <= count) {
    return;
  }
  while (count > 0 && (static_cast<unsigned char>(text[count]) & 0xC0) == 0x80) {
    --count;
  }
  text.resize(count);
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
    path =
        folder /
        (number == 1 ? name : name.substr(0, dot) + " (" + std::to_string(number) + ")" + name.substr(dot));
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

std::string safeFileName(std::string_view name) {
  std::string result;
  const auto length = static_cast<int64_t>(name.size());
  for (int64_t i = 0; i < length;) {
    const auto start = static_cast<std::size_t>(i);
    UChar32 character = 0;
    U8_NEXT(name.data(), i, length, character);
    const bool isLeading = result.empty() && (character == '.' || character == ' ');
    if (isLeading || isHidden(character)) {
      continue;
    }
    if (character == '/' || character == '\\') {
      result += '_';
    } else {
      result += name.substr(start, static_cast<std::size_t>(i) - start);
    }
  }
  while (!result.empty() && result.back() == ' ') {
    result.pop_back();
  }
  if (result.size() > longestName) {
    const auto extension = result.substr(extensionStart(result));
    cutToBytes(result, longestName - extension.size());
    result += extension;
  }
  return result.empty() ? "attachment" : result;
}

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
