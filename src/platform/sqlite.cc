#include "platform/sqlite.h"

#include <cerrno>

#include <fcntl.h>
#include <glib.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/localized.h"

namespace tidewrack {
namespace {

// A reader of another program (the SQLite shell, say) may hold the file for a moment.
constexpr int busyTimeoutMilliseconds = 5000;

std::string describe(int code, int systemError, const std::string& detail) {
  switch (code & 0xff) {
    case SQLITE_FULL:
      return localized("store_error_full", "The disk is full. The change to the mail store was not made.",
                       "Store failure: no space left");
    case SQLITE_READONLY:
      return localized("store_error_read_only", "The mail store cannot be written to.",
                       "Store failure: file or folder is read-only");
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return localized("store_error_busy", "The mail store is in use by another program.",
                       "Store failure: locked by another program");
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return localized("store_error_damaged", "The mail store is damaged.", "Store failure: damaged file");
    case SQLITE_NOMEM:
      return localized("store_error_memory", "There is not enough memory to use the mail store.",
                       "Store failure: out of memory");
    case SQLITE_TOOBIG:
      return localized("store_error_too_big", "A message is too large for the mail store.",
                       "Store failure: value beyond the limit of the database");
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
    case SQLITE_PERM:
    case SQLITE_AUTH: {
      if (systemError == ENOSPC || systemError == EDQUOT) {
        return describe(SQLITE_FULL, 0, detail);
      }
      return formatText(localized("store_error_io", "The mail store could not be read or written: %@.",
                                  "Store failure: the system's reason follows"),
                        {systemError != 0 ? std::string(g_strerror(systemError)) : detail});
    }
    default:
      return formatText(localized("store_error_other", "The mail store reported a failure: %@.",
                                  "Store failure: the database's own text follows"),
                        {detail});
  }
}

}  // namespace

SQLiteConnection::SQLiteConnection(const std::filesystem::path& file, Mode mode) {
  if (mode == Mode::readWriteCreate) {
    // SQLite makes a new file under the umask; its companions then take the mode of the file.
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor >= 0) {
      ::fchmod(descriptor, 0600);
      ::close(descriptor);
    }
  }
  int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  flags |= mode == Mode::readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  const std::string name = mode == Mode::inMemory ? ":memory:" : file.string();
  if (sqlite3_open_v2(name.c_str(), &database_, flags, nullptr) != SQLITE_OK) {
    const StoreFailure reason = failure();
    sqlite3_close_v2(database_);
    throw reason;
  }
  sqlite3_busy_timeout(database_, busyTimeoutMilliseconds);
  sqlite3_db_config(database_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(database_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

SQLiteConnection::~SQLiteConnection() {
  sqlite3_close_v2(database_);
}

void SQLiteConnection::execute(const std::string& sql) {
  if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    fail();
  }
}

SQLiteStatement SQLiteConnection::prepare(std::string_view sql) {
  return {*this, sql};
}

std::string SQLiteConnection::queryText(std::string_view sql) {
  SQLiteStatement statement = prepare(sql);
  return statement.step() ? std::string(statement.bytes(0)) : std::string();
}

std::int64_t SQLiteConnection::queryInteger(std::string_view sql) {
  SQLiteStatement statement = prepare(sql);
  return statement.step() ? statement.integer(0) : 0;
}

std::int64_t SQLiteConnection::lastInsertRow() const noexcept {
  return sqlite3_last_insert_rowid(database_);
}

std::int64_t SQLiteConnection::changes() const noexcept {
  return sqlite3_changes64(database_);
}

bool SQLiteConnection::inTransaction() const noexcept {
  return sqlite3_get_autocommit(database_) == 0;
}

std::int64_t SQLiteConnection::maximumLength() const noexcept {
  return sqlite3_limit(database_, SQLITE_LIMIT_LENGTH, -1);
}

void SQLiteConnection::setCacheSize(std::int64_t bytes) {
  execute("PRAGMA cache_size = -" + std::to_string(bytes / 1024));
}

void SQLiteConnection::limitPages(std::int64_t pages) {
  execute("PRAGMA max_page_count = " + std::to_string(pages));
}

StoreFailure SQLiteConnection::failure() const {
  if (database_ == nullptr) {
    return StoreFailure(describe(SQLITE_NOMEM, 0, {}));
  }
  return StoreFailure(describe(sqlite3_extended_errcode(database_), sqlite3_system_errno(database_),
                               sqlite3_errmsg(database_)));
}

void SQLiteConnection::fail() const {
  throw failure();
}

void SQLiteStatement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept {
  sqlite3_finalize(statement);
}

SQLiteStatement::SQLiteStatement(SQLiteConnection& connection, std::string_view sql)
    : connection_(&connection) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v3(connection.database_, sql.data(), static_cast<int>(sql.size()),
                         SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK) {
    connection.fail();
  }
  statement_.reset(statement);
}

void SQLiteStatement::bindText(int parameter, std::string_view text) {
  // A null pointer would bind null in place of an empty text.
  const char* bytes = text.data() == nullptr ? "" : text.data();
  if (sqlite3_bind_text64(statement_.get(), parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8) !=
      SQLITE_OK) {
    connection_->fail();
  }
}

void SQLiteStatement::bindBlob(int parameter, std::string_view bytes) {
  const char* start = bytes.data() == nullptr ? "" : bytes.data();
  if (sqlite3_bind_blob64(statement_.get(), parameter, start, bytes.size(), SQLITE_STATIC) != SQLITE_OK) {
    connection_->fail();
  }
}

void SQLiteStatement::bindInteger(int parameter, std::int64_t value) {
  if (sqlite3_bind_int64(statement_.get(), parameter, value) != SQLITE_OK) {
    connection_->fail();
  }
}

void SQLiteStatement::bindReal(int parameter, double value) {
  if (sqlite3_bind_double(statement_.get(), parameter, value) != SQLITE_OK) {
    connection_->fail();
  }
}

void SQLiteStatement::bindNull(int parameter) {
  if (sqlite3_bind_null(statement_.get(), parameter) != SQLITE_OK) {
    connection_->fail();
  }
}

bool SQLiteStatement::step() {
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) {
    return true;
  }
  if (code == SQLITE_DONE) {
    return false;
  }
  const StoreFailure reason = connection_->failure();
  reset();
  throw reason;
}

void SQLiteStatement::run() {
  while (step()) {
  }
  reset();
}

void SQLiteStatement::reset() noexcept {
  sqlite3_reset(statement_.get());
}

bool SQLiteStatement::isNull(int column) const noexcept {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::string_view SQLiteStatement::bytes(int column) const noexcept {
  // For a text value this gives its UTF-8 bytes as they stand, without a conversion.
  const void* start = sqlite3_column_blob(statement_.get(), column);
  const int size = sqlite3_column_bytes(statement_.get(), column);
  return {static_cast<const char*>(start), start == nullptr ? 0 : static_cast<std::size_t>(size)};
}

std::int64_t SQLiteStatement::integer(int column) const noexcept {
  return sqlite3_column_int64(statement_.get(), column);
}

double SQLiteStatement::real(int column) const noexcept {
  return sqlite3_column_double(statement_.get(), column);
}

SQLiteTransaction::SQLiteTransaction(SQLiteConnection& connection, Kind kind) : connection_(connection) {
  connection_.execute(kind == Kind::exclusive ? "BEGIN EXCLUSIVE" : "BEGIN IMMEDIATE");
}

SQLiteTransaction::~SQLiteTransaction() {
  rollBack();
}

void SQLiteTransaction::commit() {
  connection_.execute("COMMIT");
  open_ = false;
}

void SQLiteTransaction::rollBack() noexcept {
  if (open_ && connection_.inTransaction()) {
    try {
      connection_.execute("ROLLBACK");
    } catch (const StoreFailure&) {
      // The journal undoes it at the next opening.
    }
  }
  open_ = false;
}

}  // namespace tidewrack
