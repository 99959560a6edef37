#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>

namespace tidewrack {

/// A file mapped into memory for reading. The bytes stay readable when the file is renamed or removed. What
/// another program cuts off the file meanwhile reads as zeros instead of ending the process: the first
/// mapping installs a handler for SIGBUS, which passes every fault elsewhere on to the handler before it.
/// Reading is safe from any thread.
class MappedFile {
 public:
  /// No file: no bytes.
  MappedFile() = default;
  /// Throws FileFailure when the file cannot be read or is no regular file.
  explicit MappedFile(const std::filesystem::path& path);
  /// The same for a file that is still being written and will have `size` bytes. A byte must not be looked at
  /// before it is there: its page would stay zeros.
  MappedFile(const std::filesystem::path& path, std::size_t size);
  MappedFile(MappedFile&& other) noexcept;
  MappedFile& operator=(MappedFile&& other) noexcept;
  ~MappedFile();

  [[nodiscard]] std::string_view bytes() const noexcept {
    return {static_cast<const char*>(address_), size_};
  }
  /// Whether something was looked at that the file did not hold, and zeros stand in its place.
  [[nodiscard]] bool hasLostPages() const noexcept;

 private:
  MappedFile(const std::filesystem::path& path, std::optional<std::size_t> expectedSize);

  void* address_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace tidewrack
