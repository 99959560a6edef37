#pragma once

#include <filesystem>
#include <memory>

#include "platform/failure.h"

namespace tidewrack {

class MessageStore;

/// Another process has the store open. Nothing is wrong with the store itself.
class StoreInUseFailure : public StoreFailure {
 public:
  using StoreFailure::StoreFailure;
};

/// A scope of reading and writing over the store. What a failed save could not commit stays pending in its
/// context: fetches of the same context see it, and a later save of the same context commits it. Cheap to
/// make; not to be used by two threads at a time, but by any thread in turn. Keeps the store open.
class ModelContext {
 public:
  explicit ModelContext(std::shared_ptr<MessageStore> store);
  ModelContext(ModelContext&&) noexcept;
  ModelContext& operator=(ModelContext&&) noexcept;
  ModelContext(const ModelContext&) = delete;
  ModelContext& operator=(const ModelContext&) = delete;
  ~ModelContext();

  /// Whether a failed save has left changes behind.
  [[nodiscard]] bool hasPendingChanges() const;

  /// For the store operations of this folder.
  struct Pending;
  [[nodiscard]] MessageStore& store() const { return *store_; }
  [[nodiscard]] Pending& pending() const { return *pending_; }

 private:
  std::shared_ptr<MessageStore> store_;
  std::unique_ptr<Pending> pending_;
};

/// The message store, "default.store": one SQLite file in WAL mode with one writing connection and a few
/// reading ones. While it is open, a lock file beside it ("default.store.lock") keeps other processes away.
/// Safe from any thread. The store closes when the container, its contexts and all Contents fetched through
/// them are gone.
class ModelContainer {
 public:
  /// Opens the store at `file`, making it and its folder when missing and bringing an older schema up to
  /// date. Throws StoreInUseFailure when another process (or container) has it open, and StoreFailure when it
  /// cannot be opened, is damaged or was written by a newer version of the program.
  static std::shared_ptr<ModelContainer> open(const std::filesystem::path& file);
  /// A store in memory that goes with the container.
  static std::shared_ptr<ModelContainer> inMemory();

  explicit ModelContainer(std::shared_ptr<MessageStore> store) : store_(std::move(store)) {}

  [[nodiscard]] ModelContext newContext() const { return ModelContext(store_); }

 private:
  std::shared_ptr<MessageStore> store_;
};

}  // namespace tidewrack
