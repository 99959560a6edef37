#include "library/library_catalog.h"

#include <chrono>
#include <csignal>
#include <fstream>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/resource.h>
#include <sys/stat.h>

#include "platform/failure.h"
#include "support/temporary_folder.h"
#include "support/trash.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

constexpr Date noon = Date(1'800'000'000s);

class LibraryCatalogTest : public ::testing::Test {
 protected:
  std::filesystem::path archive(const std::string& name, const std::string& bytes = "From x\n") {
    const auto path = folder_ / name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  [[nodiscard]] LibraryCatalog catalog() {
    // Each question for the time finds it a second later.
    return LibraryCatalog(folder_ / "Tidewrack", [this] { return now_ += 1s; });
  }
  [[nodiscard]] std::string file() { return readFile(catalog().catalogFile()); }
  std::vector<std::string> copies() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(catalog().librariesFolder())) {
      names.push_back(entry.path().filename());
    }
    return names;
  }
  static std::vector<std::string> names(const std::vector<MBOXLibrary>& libraries) {
    std::vector<std::string> result;
    for (const auto& library : libraries) {
      result.push_back(library.displayName.string());
    }
    return result;
  }
  MBOXLibrary adopted(const char* id = "remote") {
    DiscoveredLibrary discovered;
    discovered.id = id;
    discovered.displayName = "Remote";
    discovered.latestDate = noon;
    return catalog().adoptLibrary(discovered);
  }

  TemporaryFolder folder_;
  Date now_ = noon;
};

TEST_F(LibraryCatalogTest, AFirstImportOnACleanSystemCreatesBothFoldersAndACatalogOfOneEntry) {
  const auto imported = catalog().importLibraries({archive("Takeout.mbox", "From a\n\nb")});
  ASSERT_THAT(imported, SizeIs(1));
  EXPECT_THAT(imported[0].id.string(),
              MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
  EXPECT_EQ(imported[0].displayName, "Takeout");
  EXPECT_THAT(
      imported[0].fileName.string(),
      MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}-Takeout\\.mbox"));
  EXPECT_EQ(imported[0].importedAt, noon + 1s);
  EXPECT_FALSE(imported[0].isCloudDerived);
  EXPECT_EQ(readFile(catalog().fileLocation(imported[0])), "From a\n\nb");
  EXPECT_EQ(catalog().loadLibraries(), imported);
}

TEST_F(LibraryCatalogTest, FoldersAndFilesArePrivate) {
  (void)catalog().importLibraries({archive("a.mbox")});
  const auto modeOf = [](const std::filesystem::path& path) {
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 0777U;
  };
  EXPECT_EQ(modeOf(folder_ / "Tidewrack"), 0700U);
  EXPECT_EQ(modeOf(catalog().librariesFolder()), 0700U);
  EXPECT_EQ(modeOf(catalog().catalogFile()), 0600U);
  EXPECT_EQ(modeOf(catalog().librariesFolder() / copies()[0]), 0600U);
}

TEST_F(LibraryCatalogTest, TheCatalogIsPrettyJSONWithSortedKeysAndISO8601Dates) {
  DiscoveredLibrary discovered;
  discovered.id = "remote";
  discovered.displayName = "Höhle";
  discovered.latestDate = noon;
  (void)catalog().adoptLibrary(discovered);
  EXPECT_EQ(file(), R"([
  {
    "displayName": "Höhle",
    "fileName": "",
    "id": "remote",
    "importedAt": "2027-01-15T08:00:00Z",
    "isCloudDerived": true
  }
]
)");
}

TEST_F(LibraryCatalogTest, AFileWithTwoDotsInItsNameLosesOnlyTheLastExtensionInItsDisplayName) {
  EXPECT_EQ(catalog().importLibraries({archive("All mail.2024.mbox")})[0].displayName, "All mail.2024");
}

TEST_F(LibraryCatalogTest, AFileWithoutAnExtensionGetsItsOwnNameAsDisplayName) {
  EXPECT_EQ(catalog().importLibraries({archive("Inbox")})[0].displayName, "Inbox");
  EXPECT_EQ(catalog().importLibraries({archive(".mbox")})[0].displayName, ".mbox");
  EXPECT_EQ(catalog().importLibraries({archive("Mail.")})[0].displayName, "Mail.");
}

TEST_F(LibraryCatalogTest, TwoLibrariesImportedWithinOneRunSortWithTheLaterImportedAtFirst) {
  const auto imported = catalog().importLibraries({archive("a.mbox"), archive("b.mbox")});
  EXPECT_THAT(names(imported), ElementsAre("b", "a"));
  EXPECT_THAT(names(catalog().loadLibraries()), ElementsAre("b", "a"));
}

TEST_F(LibraryCatalogTest, WithEqualTimesTheSortKeepsTheOrderOfTheList) {
  const LibraryCatalog stopped(folder_ / "Tidewrack", [] { return noon; });
  EXPECT_THAT(names(stopped.importLibraries({archive("a.mbox"), archive("b.mbox"), archive("c.mbox")})),
              ElementsAre("a", "b", "c"));
  EXPECT_THAT(names(stopped.loadLibraries()), ElementsAre("a", "b", "c"));
}

TEST_F(LibraryCatalogTest, AnEmptyListOfFilesTouchesNothing) {
  EXPECT_THAT(catalog().importLibraries({}), IsEmpty());
  EXPECT_FALSE(fileExists(folder_ / "Tidewrack"));
}

TEST_F(LibraryCatalogTest, TheSameFileImportedTwiceMakesTwoLibrariesAndTwoCopies) {
  const auto url = archive("a.mbox");
  const auto first = catalog().importLibraries({url});
  const auto second = catalog().importLibraries({url});
  EXPECT_NE(first[0].id, second[0].id);
  EXPECT_THAT(copies(), SizeIs(2));
  EXPECT_THAT(catalog().loadLibraries(), SizeIs(2));
}

TEST_F(LibraryCatalogTest, AFailedCopyKeepsTheCopiesBeforeItAndDoesNotWriteTheCatalog) {
  (void)catalog().importLibraries({archive("old.mbox")});
  const std::string before = file();
  EXPECT_THROW(
      (void)catalog().importLibraries({archive("a.mbox"), folder_ / "missing.mbox", archive("b.mbox")}),
      FileFailure);
  EXPECT_EQ(file(), before);
  EXPECT_THAT(copies(), ::testing::UnorderedElementsAre(EndsWith("-old.mbox"), EndsWith("-a.mbox")));
}

TEST_F(LibraryCatalogTest, ACopyThatRunsOutOfRoomLeavesNothingOfTheFile) {
  (void)catalog().importLibraries({archive("old.mbox")});
  const auto big = archive("big.mbox", std::string(100'000, 'x'));
  const std::string before = file();
  rlimit old = {};
  ::getrlimit(RLIMIT_FSIZE, &old);
  rlimit limit = old;
  limit.rlim_cur = 50'000;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_THROW((void)catalog().importLibraries({big}), FileFailure);
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(file(), before);
  EXPECT_THAT(copies(), ElementsAre(EndsWith("-old.mbox")));
}

TEST_F(LibraryCatalogTest, AnObserverLearnsOfEachCopyWithItsLibraryAsItWillBe) {
  std::vector<MBOXLibrary> seen;
  const auto observe = [&](const CopyUnderWay& copy) {
    EXPECT_EQ(std::filesystem::file_size(copy.file), copy.there);
    EXPECT_EQ(copy.expected, 7U);
    EXPECT_EQ(copy.file, catalog().fileLocation(copy.added));
    seen.push_back(copy.added);
  };
  const auto imported =
      catalog().importLibraries({archive("a.mbox"), archive("empty.mbox", ""), archive(".mbox")}, observe);
  ASSERT_THAT(names(imported), ElementsAre(".mbox", "empty", "a"));
  ASSERT_THAT(names(seen), ElementsAre("a", ".mbox"));
  EXPECT_EQ(seen[0].id, imported[2].id);
  EXPECT_EQ(seen[1].fileName, imported[0].fileName);
}

TEST_F(LibraryCatalogTest, ANameTooLongForTheStoredCopyIsShortenedBeforeItsExtension) {
  std::string name;
  for (int index = 0; index < 120; ++index) {
    name += "é";
  }
  const auto imported = catalog().importLibraries({archive(name + ".mbox")});
  EXPECT_EQ(imported[0].displayName, name);
  EXPECT_LE(imported[0].fileName.size(), 255U);
  EXPECT_THAT(imported[0].fileName.string(), EndsWith("é.mbox"));
  EXPECT_EQ(readFile(catalog().fileLocation(imported[0])), "From x\n");
}

TEST_F(LibraryCatalogTest, ANameThatIsNoTextIsRepaired) {
  const auto imported = catalog().importLibraries({archive("caf\xe9.mbox")});
  EXPECT_EQ(imported[0].displayName, "caf\xef\xbf\xbd");
  EXPECT_EQ(catalog().loadLibraries(), imported);
  EXPECT_TRUE(fileExists(catalog().fileLocation(imported[0])));
}

TEST_F(LibraryCatalogTest, ARenameTrimsTheNameAndTakesTheCloudMark) {
  (void)adopted();
  const auto libraries = catalog().renameLibrary("remote", " \n\tNew name\xc2\xa0\n");
  ASSERT_THAT(libraries, SizeIs(1));
  EXPECT_EQ(libraries[0].displayName, "New name");
  EXPECT_FALSE(libraries[0].isCloudDerived);
  EXPECT_EQ(libraries[0].fileName, "");
  EXPECT_EQ(catalog().loadLibraries(), libraries);
}

TEST_F(LibraryCatalogTest, ARenameToBlanksChangesNothing) {
  const auto libraries = std::vector{adopted()};
  const std::string before = file();
  EXPECT_EQ(catalog().renameLibrary("remote", " \n "), libraries);
  EXPECT_EQ(file(), before);
}

TEST_F(LibraryCatalogTest, ARenameOfAnUnknownIDChangesNothing) {
  const auto libraries = std::vector{adopted()};
  const std::string before = file();
  EXPECT_EQ(catalog().renameLibrary("unknown", "New"), libraries);
  EXPECT_EQ(file(), before);
}

TEST_F(LibraryCatalogTest, AdoptingTheSameDiscoveredLibraryTwiceGivesOneEntry) {
  const auto first = adopted();
  EXPECT_TRUE(first.isCloudDerived);
  EXPECT_EQ(first.importedAt, noon);
  DiscoveredLibrary again;
  again.id = "remote";
  again.displayName = "Another name";
  EXPECT_EQ(catalog().adoptLibrary(again), first);
  EXPECT_THAT(catalog().loadLibraries(), ElementsAre(first));
}

TEST_F(LibraryCatalogTest, ADiscoveredLibraryWithoutADateIsAdoptedWithThePresentTime) {
  DiscoveredLibrary discovered;
  discovered.id = "remote";
  EXPECT_EQ(catalog().adoptLibrary(discovered).importedAt, noon + 1s);
}

TEST_F(LibraryCatalogTest, ADateThatTheCatalogCouldNotReadBackIsNotWritten) {
  DiscoveredLibrary discovered;
  discovered.id = "remote";
  discovered.latestDate = Date(400'000'000'000s);  // The year 14645.
  const auto library = catalog().adoptLibrary(discovered);
  EXPECT_THAT(catalog().loadLibraries(), ElementsAre(library));
}

TEST_F(LibraryCatalogTest, DeletingALibraryRemovesItsCopyAndItsEntry) {
  const auto imported = catalog().importLibraries({archive("a.mbox"), archive("b.mbox")});
  const auto left = catalog().deleteLibrary(imported[0].id);
  EXPECT_THAT(names(left), ElementsAre("a"));
  EXPECT_EQ(catalog().loadLibraries(), left);
  EXPECT_THAT(copies(), ElementsAre(EndsWith("-a.mbox")));
}

TEST_F(LibraryCatalogTest, DeletingALibraryWhoseCopyIsGoneRemovesItsEntry) {
  const auto imported = catalog().importLibraries({archive("a.mbox")});
  removeItem(catalog().fileLocation(imported[0]));
  EXPECT_THAT(catalog().deleteLibrary(imported[0].id), IsEmpty());
  EXPECT_THAT(catalog().loadLibraries(), IsEmpty());
}

TEST_F(LibraryCatalogTest, DeletingAnUnknownIDRemovesNothing) {
  const auto imported = catalog().importLibraries({archive("a.mbox")});
  const std::string before = file();
  EXPECT_EQ(catalog().deleteLibrary("unknown"), imported);
  EXPECT_EQ(file(), before);
  EXPECT_THAT(copies(), SizeIs(1));
}

// Everything in the trash of this user that has this name somewhere below.
bool isInTrash(const std::string& name) {
  const std::filesystem::path trash = std::filesystem::path(g_get_user_data_dir()) / "Trash/files";
  std::error_code none;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(trash, none)) {
    if (entry.path().filename() == name) {
      return true;
    }
  }
  return false;
}

TEST_F(LibraryCatalogTest, DeletingAnAdoptedLibraryEmptiesTheLibrariesFolder) {
  if (!hasTrash(folder_.path())) {
    GTEST_SKIP() << "no trash for the temporary folder";
  }
  const auto imported = catalog().importLibraries({archive("a.mbox")});
  (void)adopted();
  EXPECT_EQ(catalog().deleteLibrary("remote"), imported);
  EXPECT_FALSE(fileExists(catalog().fileLocation(imported[0])));
  EXPECT_EQ(catalog().loadLibraries(), imported);
  EXPECT_THAT(copies(), IsEmpty());
  EXPECT_TRUE(isInTrash(imported[0].fileName.string())) << "the copies can be taken back";
}

TEST_F(LibraryCatalogTest, DeletingAnAdoptedLibraryWithAnEmptyFolderThrowsNothingAway) {
  (void)adopted();
  EXPECT_THAT(catalog().deleteLibrary("remote"), IsEmpty());
  EXPECT_TRUE(fileExists(catalog().librariesFolder()));
}

TEST_F(LibraryCatalogTest, ACorruptCatalogFileMakesEveryOperationFailAndIsNotReplaced) {
  const auto url = archive("a.mbox");
  for (
      const char* text :
      {"", "{}", "[", "[1]", "null", R"([{"id":"x"}])",
       R"([{"displayName":"x","fileName":"","id":"x","importedAt":"yesterday","isCloudDerived":false}])",
       R"([{"displayName":"x","fileName":"","id":"x","importedAt":5,"isCloudDerived":false}])",
       R"([{"displayName":"x","fileName":"","id":"x","importedAt":"2027-01-15T08:00:00Z","isCloudDerived":1}])",
       R"([{"displayName":"x","fileName":"../f","id":"x","importedAt":"2027-01-15T08:00:00Z","isCloudDerived":true}])",
       "[\"\xff\"]"}) {
    SCOPED_TRACE(text);
    catalog().ensureDirectories();
    std::ofstream(catalog().catalogFile(), std::ios::binary) << text;
    EXPECT_THROW((void)catalog().loadLibraries(), CodingFailure);
    EXPECT_THROW((void)catalog().importLibraries({url}), CodingFailure);
    EXPECT_THROW((void)adopted(), CodingFailure);
    EXPECT_THROW((void)catalog().renameLibrary("x", "y"), CodingFailure);
    EXPECT_THROW((void)catalog().renameLibrary("x", ""), CodingFailure);
    EXPECT_THROW((void)catalog().deleteLibrary("x"), CodingFailure);
    EXPECT_EQ(file(), text);
    EXPECT_THAT(copies(), IsEmpty());
  }
}

TEST_F(LibraryCatalogTest, KeysThatAreNotKnownDoNotDisturb) {
  catalog().ensureDirectories();
  std::ofstream(catalog().catalogFile())
      << R"([{"displayName":"x","fileName":"","id":"x","isCloudDerived":true,)"
         R"("importedAt":"2027-01-15T08:00:00Z","color":"red"}])";
  EXPECT_THAT(catalog().loadLibraries(), ElementsAre(MBOXLibrary{"x", "x", "", noon, true}));
}

TEST_F(LibraryCatalogTest, AFolderInThePlaceOfTheCatalogFails) {
  createPrivateFolders(catalog().catalogFile());
  EXPECT_THROW((void)catalog().loadLibraries(), FileFailure);
}

}  // namespace
}  // namespace tidewrack
