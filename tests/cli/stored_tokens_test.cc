#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/world.h"

namespace tidewrack {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What the SQLite shell, which knows nothing of this program, prints for a query over the store.
std::vector<std::string> shell(const World& world, const std::string& query) {
  const Program sqlite("/usr/bin/sqlite3");
  const auto result =
      sqlite.run({"-readonly", (world.applicationFolder() / "default.store").string(), query});
  EXPECT_EQ(result.status, 0) << result.errors;
  return lines(result.output);
}

TEST(StoredTokensTest, AnImportStoresThemAndTheSQLiteShellReadsThem) {
  const World world;
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  EXPECT_THAT(shell(world, "SELECT messageID FROM PersistedSearchToken WHERE token = 'lisbon'"),
              ::testing::SizeIs(3));
  EXPECT_THAT(shell(world,
                    "SELECT token FROM PersistedSearchToken WHERE messageID = "
                    "'draft.berth@example.org' AND token IN ('berth', 'drafts', 'nora')"),
              ::testing::UnorderedElementsAre("berth", "drafts", "nora"));
  EXPECT_THAT(shell(world, "SELECT count(*) = count(DISTINCT id) FROM PersistedSearchToken"),
              ElementsAre("1"));
}

TEST(StoredTokensTest, ADeletedLibraryTakesThemAlong) {
  const World world;
  const auto library = columns(world.run("import", sampleArchive()).output)[0];
  const auto other =
      world.file("other.mbox", "From x\nMessage-ID: <one@example.org>\nSubject: Lisbon\n\nText\n");
  ASSERT_EQ(world.run("import", other).status, 0);
  ASSERT_EQ(world.run("delete", library).status, 0);
  EXPECT_THAT(shell(world, "SELECT messageID FROM PersistedSearchToken WHERE token = 'lisbon'"),
              ElementsAre("one@example.org"));
  EXPECT_EQ(world.run("messages", "--count", "--search", "lisbon").output, "1\n");
}

TEST(StoredTokensTest, AStoreWithoutThemGetsThemWithTheNextSearch) {
  const World world;
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  const Program sqlite("/usr/bin/sqlite3");
  ASSERT_EQ(sqlite
                .run({(world.applicationFolder() / "default.store").string(),
                      "DELETE FROM searchDocument; DELETE FROM searchWords"})
                .status,
            0);
  EXPECT_THAT(shell(world, "SELECT * FROM PersistedSearchToken"), IsEmpty());
  EXPECT_EQ(world.run("messages", "--count", "--search", "lisbon").output, "3\n");
  EXPECT_THAT(shell(world, "SELECT DISTINCT token FROM PersistedSearchToken"), Contains("lisbon"));
}

}  // namespace
}  // namespace tidewrack
