#pragma once

#include <filesystem>

namespace tidewrack {

/// Holds the lock file beside the store for as long as it lives, so that no second process (and no second
/// container of this one) opens the same store. The file stays behind; the lock goes with the process,
/// however that ends. SQLite's own locks would let two writers take turns, each with its own picture of the
/// catalog and of the messages.
class StoreLock {
 public:
  /// Throws StoreInUseFailure when the lock is taken, StoreFailure when the file cannot be made.
  explicit StoreLock(const std::filesystem::path& file);
  ~StoreLock();
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

 private:
  int descriptor_;
};

}  // namespace tidewrack
