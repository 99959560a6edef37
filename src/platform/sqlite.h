#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "platform/failure.h"

struct sqlite3;
struct sqlite3_stmt;

/// The one place that calls SQLite. Every failure becomes a StoreFailure with a description for people.
namespace tidewrack {

class SQLiteStatement;

/// One connection to a database. Belongs to one thread at a time.
class SQLiteConnection {
 public:
  enum class Mode {
    readWriteCreate,  ///< Makes a missing file, readable by its user alone.
    readOnly,         ///< Never writes and never checkpoints.
    inMemory,         ///< Private to this connection; the path is not used.
  };

  SQLiteConnection(const std::filesystem::path& file, Mode mode);
  ~SQLiteConnection();
  SQLiteConnection(const SQLiteConnection&) = delete;
  SQLiteConnection& operator=(const SQLiteConnection&) = delete;

  /// Runs one or more statements; rows are thrown away.
  void execute(const std::string& sql);
  /// Compiles one statement. The statement must go before the connection.
  [[nodiscard]] SQLiteStatement prepare(std::string_view sql);
  /// The first column of the first row as text, or nothing at all when there is no row or it is null.
  [[nodiscard]] std::string queryText(std::string_view sql);
  /// The same as an integer; 0 when there is no row or it is null.
  [[nodiscard]] std::int64_t queryInteger(std::string_view sql);

  /// Memory for pages of the file, in bytes. What has been changed beyond that goes to the disk early.
  void setCacheSize(std::int64_t bytes);

  [[nodiscard]] std::int64_t lastInsertRow() const noexcept;
  /// Rows changed by the last statement, those of its triggers left out.
  [[nodiscard]] std::int64_t changes() const noexcept;
  [[nodiscard]] bool inTransaction() const noexcept;
  /// Greatest number of bytes of a value or a row.
  [[nodiscard]] std::int64_t maximumLength() const noexcept;
  /// Lets every statement from now on fail once the file has this many pages (for tests of a full disk).
  void limitPages(std::int64_t pages);

  /// The failure that the last call on this connection met.
  [[nodiscard]] StoreFailure failure() const;

 private:
  friend class SQLiteStatement;
  [[noreturn]] void fail() const;

  sqlite3* database_ = nullptr;
};

/// A compiled statement. Parameters count from 1, columns from 0. Bound bytes are not copied: they must stay
/// until the next reset() or run().
class SQLiteStatement {
 public:
  SQLiteStatement(SQLiteStatement&&) noexcept = default;
  SQLiteStatement& operator=(SQLiteStatement&&) noexcept = default;

  void bindText(int parameter, std::string_view text);
  void bindBlob(int parameter, std::string_view bytes);
  void bindInteger(int parameter, std::int64_t value);
  void bindReal(int parameter, double value);
  void bindNull(int parameter);

  /// Goes to the next row; false behind the last one. After a failure the statement is reset.
  bool step();
  /// Runs to the end and resets.
  void run();
  /// Makes the statement ready to run again; the parameters stay bound.
  void reset() noexcept;

  [[nodiscard]] bool isNull(int column) const noexcept;
  /// The bytes of a column, valid until the next step or reset. Empty for null.
  [[nodiscard]] std::string_view bytes(int column) const noexcept;
  [[nodiscard]] std::int64_t integer(int column) const noexcept;
  [[nodiscard]] double real(int column) const noexcept;

 private:
  friend class SQLiteConnection;
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const noexcept;
  };
  SQLiteStatement(SQLiteConnection& connection, std::string_view sql);

  SQLiteConnection* connection_;
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

/// A write transaction: begun at once, undone unless committed.
class SQLiteTransaction {
 public:
  enum class Kind { immediate, exclusive };

  explicit SQLiteTransaction(SQLiteConnection& connection, Kind kind = Kind::immediate);
  ~SQLiteTransaction();
  SQLiteTransaction(const SQLiteTransaction&) = delete;
  SQLiteTransaction& operator=(const SQLiteTransaction&) = delete;

  void commit();
  /// Undoes everything; harmless when SQLite has done so by itself already.
  void rollBack() noexcept;

 private:
  SQLiteConnection& connection_;
  bool open_ = true;
};

}  // namespace tidewrack
