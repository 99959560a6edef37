#include "platform/atomic_file.h"

#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/uuid.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t bufferSize = std::size_t{256} << 10U;
// What comes in such pieces needs no buffer.
constexpr std::size_t largePiece = std::size_t{64} << 10U;
// Pieces of this size start on their way to the disk while the next one is made, so that the fsync at the end
// has little left to wait for.
constexpr std::uint64_t pieceSize = std::uint64_t{4} << 20U;

fs::path folderOf(const fs::path& path) {
  const fs::path folder = path.parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

fs::path hiddenName(const fs::path& target) {
  return folderOf(target) / (".tidewrack-" + UUID::make().lowerCaseString());
}

// The name under which the system knows an open file that has none of its own.
std::string systemName(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace

struct AtomicFile::State {
  explicit State(const fs::path& path) : target(path) {
    std::error_code ignored;
    if (fs::is_symlink(path, ignored)) {
      const fs::path end = fs::canonical(path, ignored);
      target = ignored ? path : end;
    }
    struct stat status = {};
    const bool exists = ::stat(target.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
      file = Descriptor(::open(target.c_str(), O_WRONLY | O_CLOEXEC));
      requireOpen();
      return;
    }
    replaces = true;
    openNew();
    if (exists) {
      ::fchmod(file.number(), status.st_mode & 07777U);
    }
  }

  ~State() {
    if (!temporary.empty()) {
      ::unlink(temporary.c_str());
    }
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  void requireOpen() const {
    if (file.number() < 0) {
      throw writeFailure(target, errno);
    }
  }

  void openNew() {
    Descriptor nameless(::open(folderOf(target).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    if (nameless.number() >= 0 && fileExists(systemName(nameless.number()))) {
      file = std::move(nameless);
      ::fchmod(file.number(), 0600);
      return;
    }
    const fs::path name = hiddenName(target);
    file = Descriptor(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    requireOpen();
    temporary = name;
    ::fchmod(file.number(), 0600);
  }

  void writeNow(std::string_view bytes) {
    if (const int error = writeAll(file.number(), bytes.data(), bytes.size()); error != 0) {
      throw writeFailure(target, error);
    }
    written += bytes.size();
    if (replaces && written - started >= pieceSize) {
      // A failure here is seen by the fsync as well.
      ::sync_file_range(file.number(), static_cast<off_t>(started), static_cast<off_t>(written - started),
                        SYNC_FILE_RANGE_WRITE);
      started = written;
    }
  }

  void flush() {
    writeNow(buffer);
    buffer.clear();
  }

  fs::path target;
  fs::path temporary;  // Empty while the file has no name.
  bool replaces = false;
  Descriptor file;
  std::string buffer;
  std::uint64_t written = 0;
  std::uint64_t started = 0;  // Bytes that are on their way to the disk.
};

AtomicFile::AtomicFile(const fs::path& path) : state_(std::make_unique<State>(path)) {
  state_->buffer.reserve(bufferSize);
}

AtomicFile::~AtomicFile() = default;

void AtomicFile::write(std::string_view bytes) {
  const bool isLarge = bytes.size() >= largePiece;
  if (isLarge || state_->buffer.size() + bytes.size() > bufferSize) {
    state_->flush();
  }
  if (isLarge) {
    state_->writeNow(bytes);
  } else {
    state_->buffer += bytes;
  }
}

void AtomicFile::commit() {
  State& state = *state_;
  state.flush();
  if (!state.replaces) {
    if (!state.file.close()) {
      throw writeFailure(state.target, errno);
    }
    return;
  }
  if (::fsync(state.file.number()) != 0) {
    throw writeFailure(state.target, errno);
  }
  if (state.temporary.empty()) {
    // A name has to be free before it can be given to an open file: the rename then takes the target's place.
    const fs::path name = hiddenName(state.target);
    if (::linkat(AT_FDCWD, systemName(state.file.number()).c_str(), AT_FDCWD, name.c_str(),
                 AT_SYMLINK_FOLLOW) != 0) {
      throw writeFailure(state.target, errno);
    }
    state.temporary = name;
  }
  if (!state.file.close() || ::rename(state.temporary.c_str(), state.target.c_str()) != 0) {
    throw writeFailure(state.target, errno);
  }
  state.temporary.clear();
  syncFolder(folderOf(state.target));
}

}  // namespace tidewrack
