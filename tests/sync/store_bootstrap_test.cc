#include "sync/store_bootstrap.h"

#include <filesystem>
#include <fstream>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "library/store_operations.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const StoreConfiguration inMemory{.isStoredInMemoryOnly = true};
const StoreConfiguration withCloud{.cloudKitDatabase = "iCloud.io.marloon.Tidewrack"};
const StoreConfiguration withoutCloud{};

class StoreBootstrapTest : public testing::Test {
 protected:
  StoreBootstrapTest() : settings(world / "settings.ini") { fs::create_directory(folder()); }

  [[nodiscard]] fs::path folder() const { return world / "Tidewrack"; }
  [[nodiscard]] fs::path store() const { return folder() / "default.store"; }

  /// Starts over the real files; the attempts whose numbers are in `failing` fail with `description`.
  std::shared_ptr<ModelContainer> start(const std::set<std::size_t>& failing = {},
                                        const std::string& description = "The disk is tired.") {
    StoreBootstrap bootstrap{.arguments = arguments, .settings = settings, .folder = folder(), .now = [] {
                               return *parseISO8601("2026-11-21T14:30:59Z");
                             }};
    bootstrap.open = [&](const StoreConfiguration& configuration) {
      attempts.push_back(configuration);
      if (failing.contains(attempts.size())) {
        throw StoreFailure(attempts.size() == 1 ? description : "A later failure.");
      }
      return configuration.isStoredInMemoryOnly ? ModelContainer::inMemory() : ModelContainer::open(store());
    };
    return makeSharedModelContainer(bootstrap);
  }
  std::shared_ptr<ModelContainer> startForReal() {
    return makeSharedModelContainer({.arguments = arguments, .settings = settings, .folder = folder()});
  }

  static void save(ModelContainer& container, const std::string& id) {
    EmailMessage message;
    message.id = id;
    message.sourceLibraryID = "L";
    message.plainBody = Content::ofBytes("Body");
    auto context = container.newContext();
    saveMessages({std::make_shared<EmailMessage>(message)}, context);
  }
  static std::vector<std::string> ids(ModelContainer& container) {
    auto context = container.newContext();
    std::vector<std::string> result;
    for (const auto& message : fetchAllMessages(context)) {
      result.push_back(message->id.string());
    }
    return result;
  }
  static void write(const fs::path& file, const std::string& text) { std::ofstream(file) << text; }
  static std::string textOf(const fs::path& file) { return readFile(file); }
  /// Names in the application's folder, without the lock.
  [[nodiscard]] std::set<std::string> files(const std::string& below = "") const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder() / below)) {
      if (entry.path().filename() != "default.store.lock") {
        names.insert(entry.path().filename());
      }
    }
    return names;
  }

  TemporaryFolder world;
  Settings settings;
  std::vector<std::string> arguments = {"tidewrack"};
  std::vector<StoreConfiguration> attempts;
  const std::string givenUp = "default.store.20261121-143059";
};

TEST_F(StoreBootstrapTest, WithoutAFailureTheStoreIsAsTheKeyAsks) {
  settings.set(SettingKey::iCloudSyncEnabled, true);
  EXPECT_NE(start(), nullptr);
  settings.set(SettingKey::iCloudSyncEnabled, false);
  EXPECT_NE(start(), nullptr);
  EXPECT_THAT(attempts, ElementsAre(withCloud, withoutCloud));
}

TEST_F(StoreBootstrapTest, ScreenshotsWorkInMemoryAndLeaveTheKeyAndTheStoreFilesAlone) {
  arguments.emplace_back("--screenshots");
  write(store(), "no database");
  EXPECT_NE(start(), nullptr);
  EXPECT_NE(startForReal(), nullptr);
  EXPECT_THAT(attempts, ElementsAre(inMemory));
  EXPECT_FALSE(settings.isPresent(SettingKey::iCloudSyncEnabled));
  EXPECT_EQ(textOf(store()), "no database");
}

TEST_F(StoreBootstrapTest, ScreenshotsWithoutMemoryGoOnAsIfNotAskedFor) {
  arguments.emplace_back("--screenshots");
  settings.set(SettingKey::iCloudSyncEnabled, false);
  EXPECT_NE(start({1}), nullptr);
  EXPECT_THAT(attempts, ElementsAre(inMemory, withoutCloud));
}

TEST_F(StoreBootstrapTest, ACloudFailureKeepsTheStoreAndSwitchesSyncOffForGood) {
  save(*start(), "kept");
  attempts.clear();
  settings.set(SettingKey::iCloudSyncEnabled, true);
  const auto container = start({1}, "The account has no CloudKit container.");
  EXPECT_THAT(attempts, ElementsAre(withCloud, withoutCloud));
  EXPECT_FALSE(settings.boolean(SettingKey::iCloudSyncEnabled));
  EXPECT_THAT(ids(*container), ElementsAre("kept"));
  EXPECT_FALSE(files().contains(givenUp));
}

TEST_F(StoreBootstrapTest, WithTheKeyFalseAFailureThatNamesCloudKitRetriesAndWritesTheKeyFalse) {
  settings.set(SettingKey::iCloudSyncEnabled, false);
  EXPECT_NE(start({1}, "CloudKit"), nullptr);
  EXPECT_THAT(attempts, ElementsAre(withoutCloud, withoutCloud));
  EXPECT_TRUE(settings.isPresent(SettingKey::iCloudSyncEnabled));
  EXPECT_FALSE(settings.boolean(SettingKey::iCloudSyncEnabled));
}

TEST_F(StoreBootstrapTest, TheWordICloudCountsAndItsLowerCaseDoesNot) {
  settings.set(SettingKey::iCloudSyncEnabled, false);
  EXPECT_NE(start({1}, "Not signed in to iCloud."), nullptr);
  EXPECT_FALSE(files().contains(givenUp));
  attempts.clear();
  EXPECT_NE(start({1}, "Not signed in to icloud, or cloudkit is off."), nullptr);
  EXPECT_THAT(attempts, ElementsAre(withoutCloud, withoutCloud));
  EXPECT_TRUE(files().contains(givenUp)) << "the store is given up";
}

TEST_F(StoreBootstrapTest, ADamagedStoreIsMovedIntoADatedFolderAndAFreshOneTakesItsPlace) {
  write(store(), "this is no database, and longer than the header of one would be: " + std::string(200, 'x'));
  write(folder() / "libraries.json", "[]");
  bool isMoved = false;
  {
    const auto container = startForReal();
    EXPECT_THAT(ids(*container), IsEmpty());
    save(*container, "new");
  }
  for (const auto& name : files()) {
    if (name.starts_with("default.store.2")) {
      isMoved = true;
      EXPECT_THAT(textOf(folder() / name / "default.store"), StartsWith("this is no database"));
    }
  }
  EXPECT_TRUE(isMoved);
  EXPECT_THAT(ids(*startForReal()), ElementsAre("new"));
  EXPECT_EQ(textOf(folder() / "libraries.json"), "[]") << "the catalog is not touched";
}

TEST_F(StoreBootstrapTest, AMissingCompanionDoesNotStopTheOthersAndNothingOldIsLeftBeside) {
  write(store(), "old");
  write(store().string() + "-shm", "shm");
  write(store().string() + "-journal", "journal");
  EXPECT_NE(start({1}), nullptr);
  EXPECT_THAT(files(givenUp), ElementsAre("default.store", "default.store-journal", "default.store-shm"));
  EXPECT_FALSE(files().contains("default.store-journal"));
}

TEST_F(StoreBootstrapTest, TwoStoresGivenUpInOneSecondBothStay) {
  write(store(), "first");
  EXPECT_NE(start({1}), nullptr);
  attempts.clear();
  EXPECT_NE(start({1}), nullptr);
  EXPECT_EQ(textOf(folder() / givenUp / "default.store"), "first");
  EXPECT_TRUE(files(givenUp + "-2").contains("default.store"));
}

TEST_F(StoreBootstrapTest, AStoreThatIsGivenUpCanBeOpenedWhereItLies) {
  save(*start(), "rescued");
  attempts.clear();
  EXPECT_THAT(ids(*start({1})), IsEmpty());
  EXPECT_THAT(ids(*ModelContainer::open(folder() / givenUp / "default.store")), ElementsAre("rescued"));
}

TEST_F(StoreBootstrapTest, ARecreationAfterTwoFailuresKeepsTheKeyTrueAndAsksForTheCloudAgain) {
  write(store(), "old");
  settings.set(SettingKey::iCloudSyncEnabled, true);
  EXPECT_NE(start({1, 2}, "CloudKit is down."), nullptr);
  EXPECT_THAT(attempts, ElementsAre(withCloud, withoutCloud, withCloud));
  EXPECT_TRUE(settings.boolean(SettingKey::iCloudSyncEnabled));
  EXPECT_EQ(textOf(folder() / givenUp / "default.store"), "old");
}

TEST_F(StoreBootstrapTest, WhenEveryAttemptFailsTheFatalMessageShowsTheFirstError) {
  settings.set(SettingKey::iCloudSyncEnabled, true);
  try {
    start({1, 2, 3}, "iCloud failed first.");
    FAIL();
  } catch (const StoreFailure& failure) {
    EXPECT_STREQ(failure.what(), "Could not create ModelContainer: iCloud failed first.");
  }
  EXPECT_THAT(attempts, ElementsAre(withCloud, withoutCloud, withCloud));
  EXPECT_TRUE(settings.boolean(SettingKey::iCloudSyncEnabled));
}

TEST_F(StoreBootstrapTest, WithNoPlaceForAStoreNothingIsClearedAndTheProcessEnds) {
  settings.set(SettingKey::iCloudSyncEnabled, false);
  StoreBootstrap bootstrap{.arguments = arguments, .settings = settings, .folder = {}};
  bootstrap.open = [&](const StoreConfiguration& configuration) -> std::shared_ptr<ModelContainer> {
    attempts.push_back(configuration);
    throw StoreFailure("No folder.");
  };
  EXPECT_THROW(makeSharedModelContainer(bootstrap), StoreFailure);
  EXPECT_THAT(attempts, ElementsAre(withoutCloud));
}

TEST_F(StoreBootstrapTest, AStoreThatAnotherProcessUsesIsLeftAlone) {
  const auto holder = ModelContainer::open(store());
  save(*holder, "theirs");
  EXPECT_THROW(startForReal(), StoreInUseFailure);
  EXPECT_THAT(ids(*holder), ElementsAre("theirs"));
  // Also when the attempt fails for another reason while somebody has the store open.
  EXPECT_THROW(start({1}), StoreInUseFailure);
  EXPECT_TRUE(fileExists(store()));
  EXPECT_FALSE(files().contains(givenUp));
}

TEST_F(StoreBootstrapTest, FilesThatCannotBeMovedStayAndTheProcessEnds) {
  if (::geteuid() == 0) {
    GTEST_SKIP() << "permissions do not bind this user";
  }
  write(store(), std::string(500, 'x'));
  fs::permissions(folder(), fs::perms(0500));
  EXPECT_THROW(startForReal(), StoreFailure);
  fs::permissions(folder(), fs::perms(0700));
  EXPECT_EQ(textOf(store()), std::string(500, 'x'));
}

}  // namespace
}  // namespace tidewrack
