#pragma once

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "library/store_lock.h"
#include "platform/fair_mutex.h"
#include "platform/sqlite.h"
#include "platform/write_back.h"

namespace tidewrack {

/// A connection of the store with the statements that fetch bytes.
class StoreConnection {
 public:
  StoreConnection(const std::filesystem::path& file, SQLiteConnection::Mode mode);

  [[nodiscard]] SQLiteConnection& database() { return database_; }
  /// Appends the bytes of a row of "content"; nothing when there is no such row.
  void content(std::int64_t number, std::uint64_t size, std::string& text);

 private:
  SQLiteConnection database_;
  std::optional<SQLiteStatement> first_;
  std::optional<SQLiteStatement> rest_;
};

/// The connections of one open store, and who may use them when. Internal to this folder. From any thread.
///
/// The store is in WAL mode: readers read beside the writer. A large save leaves WAL mode for its time, since
/// the WAL writes every byte twice, once to itself and once to the file; with a rollback journal new pages go
/// straight to the end of the file (measured: 1 GB in 1.5 seconds against 5 to 10). The file then belongs to
/// the writing connection alone: single contents are read through it between two messages, and fetches
/// of lists wait for the save to end. A crash leaves a journal that the next opening rolls back.
class MessageStore : public std::enable_shared_from_this<MessageStore> {
 public:
  static std::shared_ptr<MessageStore> open(const std::filesystem::path& file);
  static std::shared_ptr<MessageStore> inMemory();

  MessageStore(std::optional<std::filesystem::path> file, std::unique_ptr<StoreLock> lock);
  ~MessageStore();
  MessageStore(const MessageStore&) = delete;
  MessageStore& operator=(const MessageStore&) = delete;

  /// Appends the bytes of a row of "content". Throws StoreFailure when the row is gone.
  void readContent(std::int64_t number, std::uint64_t size, std::string& text);

  /// The connection of the ContentReading of this thread.
  class SharedReader {
   public:
    ~SharedReader();
    /// Appends the bytes of a row; nothing when there is no such row. False when the writing connection has
    /// to serve, or the connection belongs to another store.
    bool read(MessageStore& store, std::int64_t number, std::uint64_t size, std::string& text);

   private:
    std::shared_ptr<MessageStore> store_;
    std::unique_ptr<StoreConnection> reader_;
  };

  /// One or two connections that see the same state of the store, for as long as the object lives.
  class Reading {
   public:
    explicit Reading(MessageStore& store);
    ~Reading();
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    [[nodiscard]] std::size_t count() const { return connections_.size(); }
    [[nodiscard]] SQLiteConnection& connection(std::size_t index) { return connections_[index]->database(); }

   private:
    MessageStore& store_;
    std::vector<StoreConnection*> connections_;
    std::vector<std::unique_ptr<StoreConnection>> leased_;
    std::unique_lock<std::mutex> noTransaction_;  // Where the writing connection has to serve.
    std::unique_lock<FairMutex> writerTurn_;
  };

  /// The right to write: one transaction, undone unless committed. Waits for other writers.
  class Writing {
   public:
    explicit Writing(MessageStore& store);
    ~Writing();
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

    enum class Size { small, large };
    void begin(Size size);
    void commit();
    /// Runs a function over the writing connection. Between two calls other threads may read through it.
    template <typename Function>
    auto with(Function function) {
      const std::lock_guard turn(store_.writerTurn_);
      return function(store_.writer_.database());
    }
    /// Memory of the writing connection for pages of the file, in bytes, and how much is usual.
    void setCacheSize(std::int64_t bytes) {
      with([bytes](SQLiteConnection& connection) { connection.setCacheSize(bytes); });
    }
    static constexpr std::int64_t usualCacheSize = std::int64_t{32} << 20U;
    /// Sends what a large save has written so far to the disk, so that the commit waits less.
    void sendAhead() {
      if (store_.writeBack_) {
        store_.writeBack_->advance();
      }
    }
    [[nodiscard]] std::int64_t pieceSize() const { return store_.pieceSize_; }

   private:
    MessageStore& store_;
    std::unique_lock<std::mutex> oneWriter_;
    std::optional<SQLiteTransaction> transaction_;
  };

  /// For tests: the disk is full once the store has this many pages.
  void limitPagesForTesting(std::int64_t pages);
  /// For tests: how much of the large saves went to the disk ahead of their commits.
  [[nodiscard]] std::uint64_t bytesSentAheadForTesting() const {
    return writeBack_ ? writeBack_->sentBytes() : 0;
  }
  /// For tests: contents are cut into pieces of this many bytes.
  void setPieceSizeForTesting(std::int64_t size) { pieceSize_ = size; }

 private:
  std::unique_ptr<StoreConnection> tryLease(bool waitForOne);
  void giveBack(std::unique_ptr<StoreConnection> connection);
  void enterExclusive();
  void leaveExclusive();

  const std::optional<std::filesystem::path> file_;  // Absent: in memory.
  std::unique_ptr<StoreLock> lock_;                  // Goes last of the four.
  std::optional<WriteBack> writeBack_;  // Since the first large save. Goes after the connections.
  StoreConnection writer_;
  std::int64_t pieceSize_;

  std::mutex oneWriter_;    // Held by a whole write operation.
  FairMutex writerTurn_;    // Held by whoever uses the writing connection at this moment.
  std::mutex commitMutex_;  // No commit while the snapshots of one Reading begin.

  std::mutex readersMutex_;
  std::condition_variable readersChanged_;
  std::vector<std::unique_ptr<StoreConnection>> idleReaders_;
  std::size_t leasedReaders_ = 0;
  bool exclusive_ = false;  // Readers have to go through the writing connection.
  bool switching_ = false;  // Nobody may begin to read.
};

}  // namespace tidewrack
