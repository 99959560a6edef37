#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

namespace tidewrack {

/// A file that comes into being as one step, however long it takes to write: until `commit` the path holds
/// what it held before, and after a crash, a kill or a full disk at any moment the old file or the new one is
/// there, whole and on the disk. What has been written lies in a file without a name beside it (a hidden one
/// with a name where the file system cannot do that) and goes with the object unless it is committed.
///
/// A new file is readable by its user alone; one that takes the place of another has its permissions. A link
/// stays, and the file that it leads to is replaced. What is no regular file (a terminal, a pipe) cannot be
/// replaced and is written to as it is. Failures throw FileFailure. One thread at a time.
class AtomicFile {
 public:
  explicit AtomicFile(const std::filesystem::path& path);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  /// Adds bytes at the end, through a buffer.
  void write(std::string_view bytes);
  /// Gives everything to the disk and the file its name. Once; nothing may be written afterwards.
  void commit();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tidewrack
