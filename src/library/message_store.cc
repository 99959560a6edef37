#include "library/message_store.h"

#include <algorithm>
#include <utility>

#include "library/content_reading.h"
#include "library/model_container.h"
#include "library/store_schema.h"
#include "platform/files.h"
#include "platform/localized.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;

// Enough for one list, one body and one export at the same time.
constexpr std::size_t maximumReaders = 4;

// Measured on bodies of 1 to 20 KB and attachments of 100 to 300 KB: 16 KB pages write small mail twice as
// fast as 4 KB pages and large mail as fast as any; where rows go to any place of their index a cache of 2 MB
// halves the speed, and one over 32 MB gains nothing.
constexpr const char* newFilePragmas = "PRAGMA page_size = 16384; PRAGMA auto_vacuum = NONE;";
constexpr const char* commonPragmas = "PRAGMA cell_size_check = ON; PRAGMA temp_store = MEMORY;";
// Deleted mail is wiped where that costs no extra page; whole freed pages stay until they are used again.
// A finished save survives a power failure (synchronous = FULL).
constexpr const char* writerPragmas =
    "PRAGMA synchronous = FULL; PRAGMA secure_delete = FAST;"
    "PRAGMA journal_size_limit = 67108864; PRAGMA wal_autocheckpoint = 1000;";
// Only the writing connection checkpoints: two connections that do so can lose a commit in this version of
// SQLite (the WAL-reset bug, mended in 3.51.3).
constexpr const char* readerPragmas =
    "PRAGMA cache_size = -2048; PRAGMA query_only = ON; PRAGMA wal_autocheckpoint = 0;";

// What a row holds besides the bytes: its header and the key.
constexpr std::int64_t rowOverhead = 1024;

StoreFailure contentGone() {
  return StoreFailure(localized("store_error_content_gone",
                                "This part of the message is no longer in the mail store.",
                                "Store failure: a body or attachment was deleted or replaced meanwhile"));
}

// Of the ContentReading that is alive on this thread.
thread_local std::optional<MessageStore::SharedReader> sharedReader;

StoreFailure cannotMakeFolder(const FileFailure& failure) {
  return StoreFailure(failure.what());
}

}  // namespace

StoreConnection::StoreConnection(const fs::path& file, SQLiteConnection::Mode mode) : database_(file, mode) {
  database_.execute(commonPragmas);
  if (mode == SQLiteConnection::Mode::readOnly) {
    database_.execute(readerPragmas);
    return;
  }
  database_.execute(newFilePragmas);
  database_.execute(writerPragmas);
  database_.setCacheSize(MessageStore::Writing::usualCacheSize);
}

void StoreConnection::content(std::int64_t number, std::uint64_t size, std::string& text) {
  if (!first_) {
    first_ = database_.prepare("SELECT bytes FROM content WHERE number = ?");
    rest_ = database_.prepare("SELECT bytes FROM contentRest WHERE content = ? ORDER BY piece");
  }
  first_->bindInteger(1, number);
  std::uint64_t read = 0;
  if (first_->step()) {
    const auto bytes = first_->bytes(0);
    text += bytes;
    read = bytes.size();
  }
  first_->reset();
  if (read == 0 || read >= size) {
    return;
  }
  text.reserve(text.size() + size - read);
  rest_->bindInteger(1, number);
  while (rest_->step()) {
    text += rest_->bytes(0);
  }
  rest_->reset();
}

std::shared_ptr<MessageStore> MessageStore::open(const fs::path& file) {
  try {
    createPrivateFolders(file.parent_path());
  } catch (const FileFailure& failure) {
    throw cannotMakeFolder(failure);
  }
  auto lock = std::make_unique<StoreLock>(file.string() + ".lock");
  return std::make_shared<MessageStore>(file, std::move(lock));
}

std::shared_ptr<MessageStore> MessageStore::inMemory() {
  return std::make_shared<MessageStore>(std::nullopt, nullptr);
}

MessageStore::MessageStore(std::optional<fs::path> file, std::unique_ptr<StoreLock> lock)
    : file_(std::move(file)),
      lock_(std::move(lock)),
      writer_(file_.value_or(fs::path()),
              file_ ? SQLiteConnection::Mode::readWriteCreate : SQLiteConnection::Mode::inMemory),
      pieceSize_(writer_.database().maximumLength() - rowOverhead) {
  // A foreign or newer file is refused before anything in it is changed.
  migrateStore(writer_.database());
  exclusive_ = true;
  leaveExclusive();
}

MessageStore::~MessageStore() {
  // The last connection to go folds the WAL into the file, and that must be the writing one.
  idleReaders_.clear();
}

ContentReading::ContentReading() {
  sharedReader.emplace();
}

ContentReading::~ContentReading() {
  sharedReader.reset();
}

MessageStore::SharedReader::~SharedReader() {
  if (!reader_) {
    return;
  }
  try {
    reader_->database().execute("ROLLBACK");
  } catch (const StoreFailure&) {
    reader_.reset();
  }
  store_->giveBack(std::move(reader_));
}

bool MessageStore::SharedReader::read(MessageStore& store, std::int64_t number, std::uint64_t size,
                                      std::string& text) {
  if (!reader_) {
    auto reader = store.tryLease(true);
    if (!reader) {
      return false;
    }
    store_ = store.shared_from_this();
    reader_ = std::move(reader);
    reader_->database().execute("BEGIN");
  }
  if (store_.get() != &store) {
    return false;
  }
  reader_->content(number, size, text);
  return true;
}

void MessageStore::readContent(std::int64_t number, std::uint64_t size, std::string& text) {
  const std::size_t before = text.size();
  if (sharedReader && sharedReader->read(*this, number, size, text)) {
    // That was all.
  } else if (auto reader = tryLease(true)) {
    try {
      reader->content(number, size, text);
    } catch (...) {
      giveBack(std::move(reader));
      throw;
    }
    giveBack(std::move(reader));
  } else {
    const std::lock_guard turn(writerTurn_);
    writer_.content(number, size, text);
  }
  if (text.size() - before != size) {
    throw contentGone();
  }
}

// A reading connection, or nothing while the writing one has to serve (or, when not waiting, while all are
// in use).
std::unique_ptr<StoreConnection> MessageStore::tryLease(bool waitForOne) {
  {
    std::unique_lock guard(readersMutex_);
    const auto settled = [&] { return !switching_ && (exclusive_ || leasedReaders_ < maximumReaders); };
    if (waitForOne) {
      readersChanged_.wait(guard, settled);
    } else if (!settled()) {
      return nullptr;
    }
    if (exclusive_) {
      return nullptr;
    }
    ++leasedReaders_;
    if (!idleReaders_.empty()) {
      auto reader = std::move(idleReaders_.back());
      idleReaders_.pop_back();
      return reader;
    }
  }
  try {
    return std::make_unique<StoreConnection>(*file_, SQLiteConnection::Mode::readOnly);
  } catch (...) {
    giveBack(nullptr);
    throw;
  }
}

void MessageStore::giveBack(std::unique_ptr<StoreConnection> connection) {
  {
    const std::lock_guard guard(readersMutex_);
    --leasedReaders_;
    if (connection) {
      idleReaders_.push_back(std::move(connection));
    }
  }
  readersChanged_.notify_all();
}

// Leaves WAL mode, which asks for every other connection to be closed. When another program has the file open
// the store stays in WAL mode, which is slower but as good. The caller holds oneWriter_.
void MessageStore::enterExclusive() {
  {
    std::unique_lock guard(readersMutex_);
    if (exclusive_) {
      return;
    }
    switching_ = true;
    readersChanged_.wait(guard, [&] { return leasedReaders_ == 0; });
    idleReaders_.clear();
  }
  bool left = false;
  try {
    left = writer_.database().queryText("PRAGMA journal_mode = DELETE") == "delete";
  } catch (const StoreFailure&) {
    left = false;
  }
  {
    const std::lock_guard guard(readersMutex_);
    exclusive_ = left;
    switching_ = false;
  }
  readersChanged_.notify_all();
}

// Back to WAL mode. When that fails (on a full disk, say) the store goes on without it until the next write.
// The caller holds oneWriter_.
void MessageStore::leaveExclusive() {
  if (!file_) {
    return;
  }
  bool returned = false;
  try {
    const std::lock_guard turn(writerTurn_);
    writer_.database().execute("PRAGMA shrink_memory");  // A large save has filled the cache.
    returned = writer_.database().queryText("PRAGMA journal_mode = WAL") == "wal";
  } catch (const StoreFailure&) {
    returned = false;
  }
  {
    const std::lock_guard guard(readersMutex_);
    exclusive_ = !returned;
  }
  readersChanged_.notify_all();
}

MessageStore::Reading::Reading(MessageStore& store) : store_(store) {
  if (auto first = store.tryLease(true)) {
    leased_.push_back(std::move(first));
    try {
      if (auto second = store.tryLease(false)) {
        leased_.push_back(std::move(second));
      }
      const std::lock_guard noCommit(store.commitMutex_);
      for (const auto& connection : leased_) {
        connection->database().execute("BEGIN");
        // A snapshot begins with the first read.
        (void)connection->database().queryInteger("SELECT 1 FROM message LIMIT 1");
        connections_.push_back(connection.get());
      }
    } catch (...) {
      for (auto& connection : leased_) {
        connection.reset();
        store.giveBack(nullptr);
      }
      throw;
    }
    return;
  }
  noTransaction_ = std::unique_lock(store.oneWriter_);
  writerTurn_ = std::unique_lock(store.writerTurn_);
  connections_.push_back(&store.writer_);
}

MessageStore::Reading::~Reading() {
  for (auto& connection : leased_) {
    try {
      connection->database().execute("ROLLBACK");
      connection->database().execute("PRAGMA shrink_memory");  // A list has filled the cache.
      store_.giveBack(std::move(connection));
    } catch (const StoreFailure&) {
      connection.reset();
      store_.giveBack(nullptr);
    }
  }
}

MessageStore::Writing::Writing(MessageStore& store) : store_(store), oneWriter_(store.oneWriter_) {}

MessageStore::Writing::~Writing() {
  {
    const std::lock_guard turn(store_.writerTurn_);
    transaction_.reset();
  }
  if (store_.exclusive_) {
    store_.leaveExclusive();
  }
}

void MessageStore::Writing::begin(Size size) {
  if (size == Size::large && store_.file_) {
    store_.enterExclusive();
    if (!store_.writeBack_) {
      store_.writeBack_.emplace(*store_.file_);
    }
    store_.writeBack_->begin();
  }
  const std::lock_guard turn(store_.writerTurn_);
  transaction_.emplace(store_.writer_.database());
}

void MessageStore::Writing::commit() {
  const std::lock_guard noSnapshot(store_.commitMutex_);
  const std::lock_guard turn(store_.writerTurn_);
  transaction_->commit();
}

void MessageStore::limitPagesForTesting(std::int64_t pages) {
  const std::lock_guard turn(writerTurn_);
  writer_.database().limitPages(pages);
}

}  // namespace tidewrack
