#include "platform/sqlite.h"

#include <fstream>
#include <functional>
#include <limits>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using Mode = SQLiteConnection::Mode;

std::string failureOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const StoreFailure& failure) {
    return failure.what();
  }
  return "no failure";
}

TEST(SQLite, ValuesComeBackAsTheyWereBound) {
  SQLiteConnection connection({}, Mode::inMemory);
  connection.execute("CREATE TABLE t (a, b, c, d, e)");
  const std::string blob("\0\xff\x80", 3);
  auto insert = connection.prepare("INSERT INTO t VALUES (?, ?, ?, ?, ?)");
  insert.bindText(1, "text");
  insert.bindBlob(2, blob);
  insert.bindInteger(3, std::numeric_limits<std::int64_t>::min());
  insert.bindReal(4, 0.25);
  insert.bindNull(5);
  insert.run();
  auto row = connection.prepare("SELECT * FROM t");
  ASSERT_TRUE(row.step());
  EXPECT_EQ(row.bytes(0), "text");
  EXPECT_EQ(row.bytes(1), blob);
  EXPECT_EQ(row.integer(2), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(row.real(3), 0.25);
  EXPECT_TRUE(row.isNull(4));
  EXPECT_FALSE(row.step());
}

TEST(SQLite, EmptyTextAndBytesAreNotNull) {
  SQLiteConnection connection({}, Mode::inMemory);
  auto row = connection.prepare("SELECT ?1, ?2, typeof(?1), typeof(?2)");
  row.bindText(1, {});
  row.bindBlob(2, {});
  ASSERT_TRUE(row.step());
  EXPECT_EQ(row.bytes(2), "text");
  EXPECT_EQ(row.bytes(3), "blob");
}

TEST(SQLite, ATransactionThatIsNotCommittedIsUndone) {
  SQLiteConnection connection({}, Mode::inMemory);
  connection.execute("CREATE TABLE t (a)");
  {
    SQLiteTransaction transaction(connection);
    connection.execute("INSERT INTO t VALUES (1)");
  }
  {
    SQLiteTransaction transaction(connection);
    connection.execute("INSERT INTO t VALUES (2)");
    transaction.commit();
  }
  EXPECT_EQ(connection.queryInteger("SELECT sum(a) FROM t"), 2);
}

TEST(SQLite, ANewFileIsPrivateWhateverTheUmask) {
  const TemporaryFolder folder;
  const mode_t umask = ::umask(0);
  SQLiteConnection connection(folder / "new.store", Mode::readWriteCreate);
  connection.execute("PRAGMA journal_mode = WAL; CREATE TABLE t (a)");
  ::umask(umask);
  for (const char* name : {"new.store", "new.store-wal", "new.store-shm"}) {
    struct stat status = {};
    ASSERT_EQ(::stat((folder / name).c_str(), &status), 0) << name;
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << name;
  }
}

TEST(SQLite, FailuresAreDescribedForPeople) {
  const TemporaryFolder folder;
  EXPECT_EQ(failureOf([&] { SQLiteConnection(folder / "missing/new.store", Mode::readWriteCreate); }),
            "The mail store could not be read or written: No such file or directory.");
  std::ofstream(folder / "text.store") << std::string(5000, 'x');
  EXPECT_EQ(failureOf([&] {
              SQLiteConnection connection(folder / "text.store", Mode::readWriteCreate);
              connection.execute("SELECT * FROM sqlite_master");
            }),
            "The mail store is damaged.");
  SQLiteConnection connection(folder / "full.store", Mode::readWriteCreate);
  connection.execute("CREATE TABLE t (a)");
  connection.limitPages(2);
  EXPECT_EQ(failureOf([&] { connection.execute("INSERT INTO t VALUES (zeroblob(100000))"); }),
            "The disk is full. The change to the mail store was not made.");
  SQLiteConnection reader(folder / "full.store", Mode::readOnly);
  EXPECT_EQ(failureOf([&] { reader.execute("DELETE FROM t"); }), "The mail store cannot be written to.");
  EXPECT_EQ(failureOf([&] { connection.execute("SELECT * FROM missing"); }),
            "The mail store reported a failure: no such table: missing.");
}

TEST(SQLite, AStatementCanRunAgainAfterAFailure) {
  SQLiteConnection connection({}, Mode::inMemory);
  connection.execute("CREATE TABLE t (a UNIQUE)");
  auto insert = connection.prepare("INSERT INTO t VALUES (?)");
  insert.bindInteger(1, 1);
  insert.run();
  EXPECT_THROW(insert.run(), StoreFailure);
  insert.bindInteger(1, 2);
  insert.run();
  EXPECT_EQ(connection.queryInteger("SELECT count(*) FROM t"), 2);
}

}  // namespace
}  // namespace tidewrack
