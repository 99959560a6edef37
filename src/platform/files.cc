#include "platform/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <glib.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/atomic_file.h"
#include "platform/descriptor.h"
#include "platform/failure.h"
#include "platform/localized.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;

/// Removes a half-made file unless it is kept.
class Unfinished {
 public:
  explicit Unfinished(fs::path path) : path_(std::move(path)) {}
  ~Unfinished() {
    if (!path_.empty()) {
      ::unlink(path_.c_str());
    }
  }
  Unfinished(const Unfinished&) = delete;
  Unfinished& operator=(const Unfinished&) = delete;
  void keep() { path_.clear(); }

 private:
  fs::path path_;
};

std::string quotedName(const fs::path& path) {
  const fs::path name = path.filename();
  return displayPath(name.empty() ? path : name);
}

FileFailure copyFailure(const fs::path& path, int error) {
  return FileFailure(formatText(localized("file_error_copy", "“%@” could not be copied: %@.",
                                          "File failure: name of the file, the system's reason"),
                                {quotedName(path), std::string(g_strerror(error))}));
}

// The ways of copying, the fastest first. Each copies up to `count` bytes from where the files stand and
// gives their number, 0 at the end of the source.
ssize_t copyInKernel(int source, int destination, std::size_t count) {
  return ::copy_file_range(source, nullptr, destination, nullptr, count, 0);
}

ssize_t copyBySendfile(int source, int destination, std::size_t count) {
  return ::sendfile(destination, source, nullptr, count);
}

ssize_t copyThroughMemory(int source, int destination, std::size_t count) {
  static constexpr std::size_t bufferSize = std::size_t{1} << 20U;
  std::vector<char> buffer(std::min(count, bufferSize));
  const ssize_t got = ::read(source, buffer.data(), buffer.size());
  if (got > 0) {
    if (const int error = writeAll(destination, buffer.data(), static_cast<std::size_t>(got)); error != 0) {
      errno = error;
      return -1;
    }
  }
  return got;
}

// Whether an error says that this way of copying does not work between these files.
bool meansUnsupported(int error) {
  return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EPERM ||
         error == EBADF;
}

// Copies to the end of the source; the error number, or 0.
int copyAll(int source, int destination, std::uint64_t expectedSize, const CopyProgress& progress) {
  // Some file systems let both files share their blocks.
  if (::ioctl(destination, FICLONE, source) == 0) {
    struct stat status = {};
    if (progress && ::fstat(destination, &status) == 0 && status.st_size > 0) {
      progress(static_cast<std::uint64_t>(status.st_size), expectedSize);
    }
    return 0;
  }
  // A disk without room for the whole says so before anything is copied, and blocks that are taken in one go
  // cost less. The size stays that of what has been copied. Not every file system can do this.
  if (expectedSize > 0 &&
      ::fallocate(destination, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(expectedSize)) != 0 &&
      errno == ENOSPC) {
    return ENOSPC;
  }
  // Pieces of this size start on their way to the disk while the next one is copied, so that the fsync at the
  // end has little left to wait for.
  constexpr std::size_t pieceSize = std::size_t{16} << 20U;
  using Way = ssize_t (*)(int, int, std::size_t);
  constexpr Way ways[] = {copyInKernel, copyBySendfile, copyThroughMemory};
  std::size_t way = 0;
  std::uint64_t copied = 0;
  for (;;) {
    const ssize_t count = ways[way](source, destination, pieceSize);
    const bool lastWay = way + 1 == std::size(ways);
    if (count < 0) {
      if (errno == EINTR) {
        continue;
      }
      if (lastWay || !meansUnsupported(errno)) {
        return errno;
      }
      ++way;
      continue;
    }
    if (count == 0) {
      // Some virtual files give nothing to the kernel's copy although they hold something.
      if (copied < expectedSize && !lastWay) {
        ++way;
        continue;
      }
      return 0;
    }
    // A failure here is seen by the fsync as well.
    ::sync_file_range(destination, static_cast<off_t>(copied), count, SYNC_FILE_RANGE_WRITE);
    copied += static_cast<std::uint64_t>(count);
    if (progress) {
      progress(copied, expectedSize);
    }
  }
}

fs::path applicationFolder(const char* base) {
  return fs::path(base) / "Tidewrack";
}

}  // namespace

FileFailure readFailure(const fs::path& path, int error) {
  return FileFailure(formatText(localized("file_error_read", "“%@” could not be read: %@.",
                                          "File failure: name of the file, the system's reason"),
                                {quotedName(path), std::string(g_strerror(error))}));
}

FileFailure writeFailure(const fs::path& path, int error) {
  return FileFailure(formatText(localized("file_error_write", "“%@” could not be written: %@.",
                                          "File failure: name of the file, the system's reason"),
                                {quotedName(path), std::string(g_strerror(error))}));
}

// The data directory is shared by all programs, and a bare "default.store" in it could be anybody's:
// everything lies in a folder of our own.
fs::path applicationSupportFolder() {
  return applicationFolder(g_get_user_data_dir());
}
fs::path cachesFolder() {
  return applicationFolder(g_get_user_cache_dir());
}
fs::path settingsFolder() {
  return applicationFolder(g_get_user_config_dir());
}

std::string displayPath(const fs::path& path) {
  char* text = g_filename_display_name(path.c_str());
  std::string result(text);
  g_free(text);
  return result;
}

void createPrivateFolders(const fs::path& folder) {
  if (folder.empty() || fileExists(folder / "")) {
    return;
  }
  const fs::path parent = folder.has_filename() ? folder.parent_path() : folder.parent_path().parent_path();
  if (parent != folder) {
    createPrivateFolders(parent);
  }
  if (::mkdir(folder.c_str(), 0700) != 0) {
    const int error = errno;
    std::error_code ignored;
    if (error == EEXIST && fs::is_directory(folder, ignored)) {
      return;
    }
    throw FileFailure(formatText(localized("file_error_folder", "The folder “%@” could not be made: %@.",
                                           "File failure: path of the folder, the system's reason"),
                                 {displayPath(folder), std::string(g_strerror(error))}));
  }
}

bool fileExists(const fs::path& path) {
  return ::access(path.c_str(), F_OK) == 0;
}

std::string readFile(const fs::path& path) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.number() < 0) {
    throw readFailure(path, errno);
  }
  std::string content;
  char buffer[65536];
  for (;;) {
    const ssize_t got = ::read(file.number(), buffer, sizeof buffer);
    if (got < 0) {
      if (errno == EINTR) {
        continue;
      }
      throw readFailure(path, errno);
    }
    if (got == 0) {
      return content;
    }
    content.append(buffer, static_cast<std::size_t>(got));
  }
}

void writeFileAtomically(const fs::path& path, std::string_view bytes) {
  AtomicFile file(path);
  file.write(bytes);
  file.commit();
}

void copyFile(const fs::path& source, const fs::path& destination, const CopyProgress& progress) {
  // Without O_NONBLOCK the opening of a named pipe would wait for a writer.
  const Descriptor from(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status = {};
  if (from.number() < 0 || ::fstat(from.number(), &status) != 0) {
    throw copyFailure(source, errno);
  }
  if (!S_ISREG(status.st_mode)) {
    throw copyFailure(source, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
  }
  Descriptor to(::open(destination.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (to.number() < 0) {
    throw copyFailure(source, errno);
  }
  Unfinished unfinished(destination);
  ::fchmod(to.number(), 0600);
  const auto expectedSize = static_cast<std::uint64_t>(status.st_size);
  if (const int error = copyAll(from.number(), to.number(), expectedSize, progress); error != 0) {
    throw copyFailure(source, error);
  }
  if (::fsync(to.number()) != 0 || !to.close()) {
    throw copyFailure(source, errno);
  }
  unfinished.keep();
  syncFolder(destination.parent_path());
}

void removeItem(const fs::path& path) {
  std::error_code error;
  if (fs::remove_all(path, error) == 0 && !error) {
    error = std::make_error_code(std::errc::no_such_file_or_directory);
  }
  if (error) {
    throw FileFailure(formatText(localized("file_error_remove", "“%@” could not be removed: %@.",
                                           "File failure: name of the file, the system's reason"),
                                 {quotedName(path), std::string(g_strerror(error.value()))}));
  }
  syncFolder(path.has_filename() ? path.parent_path() : path.parent_path().parent_path());
}

void syncFolder(const fs::path& folder) {
  const Descriptor descriptor(
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // Some file systems do not know the fsync of a folder; their entries are safe by themselves.
  if (descriptor.number() < 0 || (::fsync(descriptor.number()) != 0 && errno != EINVAL && errno != EROFS)) {
    throw writeFailure(folder, errno);
  }
}

}  // namespace tidewrack
