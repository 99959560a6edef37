#pragma once

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <utility>

#include <unistd.h>

#include "platform/failure.h"

/// What the functions over files share. Internal to this folder.
namespace tidewrack {

/// An open file, closed when it goes.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) {
      ::close(number_);
    }
  }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int number() const { return number_; }
  /// Closes now, so that a failure of the close is seen (network file systems report a full disk here).
  [[nodiscard]] bool close() {
    const int number = std::exchange(number_, -1);
    return ::close(number) == 0;
  }

 private:
  int number_;
};

/// Writes all bytes; the error number, or 0.
inline int writeAll(int descriptor, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = ::write(descriptor, bytes, count);
    if (written < 0) {
      if (errno == EINTR) {
        continue;
      }
      return errno;
    }
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return 0;
}

/// "“name” could not be read: the system's reason."
FileFailure readFailure(const std::filesystem::path& path, int error);
/// "“name” could not be written: the system's reason."
FileFailure writeFailure(const std::filesystem::path& path, int error);

}  // namespace tidewrack
