#pragma once

#include <cstdint>
#include <filesystem>

#include "platform/descriptor.h"

namespace tidewrack {

/// Sends to the disk what a file grows by while it is still growing, so that the flush at the end has little
/// left to wait for. It is a help only: nothing of it is needed for what is written to be safe, and where it
/// fails the flush does everything. One thread at a time.
///
/// Goes after everything else in this process that has the file open: closing it gives up every lock that the
/// process holds on the file (POSIX, fcntl).
class WriteBack {
 public:
  explicit WriteBack(const std::filesystem::path& file);

  /// From here on counts what the file grows by.
  void begin() noexcept;
  /// Sends what has been added, once it is worth it. Does not wait for the disk, unless it is too busy to
  /// take more.
  void advance() noexcept;
  /// Bytes sent so far.
  [[nodiscard]] std::uint64_t sentBytes() const noexcept { return sentBytes_; }

 private:
  [[nodiscard]] std::uint64_t size() const noexcept;

  Descriptor file_;
  std::uint64_t end_ = 0;  // Of what has been sent, in the file.
  std::uint64_t sentBytes_ = 0;
};

}  // namespace tidewrack
