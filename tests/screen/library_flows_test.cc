#include "screen/confirmation.h"
#include "screen_world.h"
#include "support/trash.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class LibraryFlows : public ScreenWorld {
 protected:
  MBOXLibrary libraryNamed(const std::string& name) {
    for (const auto& library : screen().libraries()) {
      if (library.displayName == name) {
        return library;
      }
    }
    ADD_FAILURE() << "no library " << name;
    return {};
  }
  void importTwo() {
    import({archive("work.mbox", {"w1", "w2"}, "Inbox")});
    executor.advance(1s);
    import({archive("home.mbox", {"h1"}, "Garden")});
    executor.advance(10s);
    statuses.clear();
  }
  void rename(const std::string& from, const std::string& to) {
    screen().requestRename(libraryNamed(from));
    EXPECT_EQ(screen().renameDraft(), from);
    screen().renameDraft.set(to);
    executor.finish(screen().commitRename());
    executor.runUntilIdle();
  }
  void remove(const MBOXLibrary& library) {
    executor.finish(screen().deleteLibrary(library));
    executor.runUntilIdle();
  }
};

TEST_F(LibraryFlows, ARenameReachesCatalogStoreAndScreen) {
  importTwo();
  rename("work", "  Office \n");
  EXPECT_FALSE(screen().libraryPendingRename());
  EXPECT_EQ(screen().currentToast(), Toast::success("Library renamed to \"Office\""));
  EXPECT_EQ(libraryNamed("Office").id, screen().messages()[0]->sourceLibraryID);
  for (const auto& message : screen().messages()) {
    EXPECT_EQ(message->sourceLibraryName, message->id == "h1" ? "home" : "Office");
  }
  EXPECT_EQ(loadedIDs(), (std::vector<std::string>{"w1", "h1", "w2"}));
  ContentView& screen = restart();
  EXPECT_EQ(libraryNamed("Office").displayName, "Office");
  EXPECT_EQ(screen.messages()[0]->sourceLibraryName, "Office");
}

TEST_F(LibraryFlows, ARenameToTheSameNameOrToBlanksChangesNothingAndShowsNoToast) {
  importTwo();
  const std::string before = textOf(catalogFile());
  const auto messages = screen().messages();
  for (const std::string name : {"work", "  work ", "", " \n\t "}) {
    rename("work", name);
    EXPECT_FALSE(screen().currentToast());
    EXPECT_FALSE(screen().libraryPendingRename());
    EXPECT_TRUE(screen().messages().isSame(messages));
  }
  EXPECT_EQ(textOf(catalogFile()), before);
}

TEST_F(LibraryFlows, CancellingARenameClosesTheDialog) {
  importTwo();
  screen().requestRename(libraryNamed("work"));
  screen().cancelRename();
  EXPECT_FALSE(screen().libraryPendingRename());
  executor.finish(screen().commitRename());
  EXPECT_FALSE(screen().currentToast());
}

TEST_F(LibraryFlows, AFailedRenameChangesNothingInMemory) {
  importTwo();
  const auto libraries = screen().libraries();
  const auto messages = screen().messages();
  write(catalogFile(), "[broken");
  rename("work", "Office");
  EXPECT_TRUE(screen().importErrorMessage());
  EXPECT_EQ(screen().currentToast(), Toast::error("Failed to rename library"));
  EXPECT_EQ(screen().libraries(), libraries);
  EXPECT_TRUE(screen().messages().isSame(messages));
}

TEST_F(LibraryFlows, ADeleteRequestOpensTheConfirmationWhateverTheSetting) {
  importTwo();
  settings.set(SettingKey::confirmBeforeDelete, false);
  screen().requestDelete(libraryNamed("work"));
  EXPECT_TRUE(screen().showDeleteConfirmation());
  EXPECT_EQ(screen().libraryPendingDeletion(), libraryNamed("work"));
  screen().cancelDelete();
  EXPECT_FALSE(screen().showDeleteConfirmation());
  EXPECT_FALSE(screen().libraryPendingDeletion());
  EXPECT_THAT(screen().libraries(), SizeIs(2));
}

TEST_F(LibraryFlows, ADeleteRemovesFileEntryMessagesAndTokensInItsOrderOfSteps) {
  tokenStore = std::make_unique<FakeTokenStore>();
  importTwo();
  const auto work = libraryNamed("work");
  const auto rewritesBefore = tokenStore->rewrites;
  remove(work);
  const auto step = [](DeleteProgressStep at) { return ImportStatus(ImportStatus::Deleting{at, "work", 2}); };
  EXPECT_THAT(
      statuses,
      ElementsAre(step(DeleteProgressStep::preparing), step(DeleteProgressStep::deletingFile),
                  step(DeleteProgressStep::deletingMessages), step(DeleteProgressStep::rebuildingIndex),
                  ImportStatus(ImportStatus::DeleteSuccess{"work", 2})));
  EXPECT_THAT(screen().libraries(), ElementsAre(libraryNamed("home")));
  EXPECT_THAT(loadedIDs(), ElementsAre("h1"));
  EXPECT_THAT(storedIDs(), ElementsAre("h1"));
  EXPECT_FALSE(std::filesystem::exists(catalog().fileLocation(work)));
  EXPECT_THAT(catalog().loadLibraries(), SizeIs(1));
  EXPECT_EQ(tokenStore->rewrites, rewritesBefore + 1);
  EXPECT_FALSE(screen().isDeletingLibrary());
  EXPECT_TRUE(screen().showImportStatusSheet()) << "the sheet stays until the user closes it";
  EXPECT_EQ(screen().currentToast(), Toast::success("Library \"work\" deleted"));
}

TEST_F(LibraryFlows, DeletingTheSelectedLibraryFallsBackToAllLibrariesAndTheFirstRemainingMessage) {
  importTwo();
  screen().sidebarSelection.set(SidebarSelection::library(libraryNamed("work").id));
  remove(libraryNamed("work"));
  EXPECT_EQ(screen().sidebarSelection(), SidebarSelection::allLibraries());
  EXPECT_EQ(screen().selectedMessageID(), Text("h1"));
  screen().sidebarSelection.set(SidebarSelection::library(libraryNamed("home").id));
  remove(libraryNamed("home"));
  EXPECT_EQ(screen().sidebarSelection(), SidebarSelection::allLibraries());
  EXPECT_FALSE(screen().selectedMessageID());
}

TEST_F(LibraryFlows, DeletingALibraryWhileALabelIsSelectedKeepsTheLabel) {
  importTwo();
  screen().sidebarSelection.set(SidebarSelection::label("Garden"));
  EXPECT_THAT(shownIDs(), ElementsAre("h1"));
  remove(libraryNamed("home"));
  EXPECT_EQ(screen().sidebarSelection(), SidebarSelection::label("Garden"));
  EXPECT_THAT(shownIDs(), IsEmpty());
  EXPECT_FALSE(screen().selectedMessageID());
}

TEST_F(LibraryFlows, DeletingACloudDerivedLibraryRemovesTheWholeFolderAndGoesOn) {
  if (!hasTrash(folder.path())) {
    GTEST_SKIP() << "no trash for the temporary folder";
  }
  importTwo();
  DiscoveredLibrary discovered;
  discovered.id = "far";
  discovered.displayName = "Far";
  const auto far = catalog().adoptLibrary(discovered);
  screen().libraries.set(catalog().loadLibraries());
  remove(far);
  EXPECT_EQ(screen().importStatus(), ImportStatus(ImportStatus::DeleteSuccess{"Far", 0}));
  EXPECT_THAT(storedFiles(), IsEmpty());
  EXPECT_THAT(screen().libraries(), SizeIs(2));
  EXPECT_THAT(storedIDs(), UnorderedElementsAre("w1", "w2", "h1"));
}

TEST_F(LibraryFlows, AfterADeleteASearchNoLongerFindsItsMessages) {
  importTwo();
  screen().sidebarSelection.set(std::nullopt);
  screen().searchText.set("w1");
  EXPECT_THAT(shownIDs(), ElementsAre("w1"));
  remove(libraryNamed("work"));
  EXPECT_THAT(shownIDs(), IsEmpty());
  EXPECT_THAT(screen().searchIndex().matchingMessageIDs("w1"), IsEmpty());
}

TEST_F(LibraryFlows, AFailureToRemoveTheFileAbortsTheDelete) {
  importTwo();
  const auto work = libraryNamed("work");
  write(catalogFile(), "[broken");
  remove(work);
  EXPECT_TRUE(statusAs<ImportStatus::Error>());
  EXPECT_FALSE(screen().isDeletingLibrary());
  EXPECT_EQ(screen().currentToast(), Toast::error("Failed to delete library"));
  EXPECT_THAT(screen().libraries(), SizeIs(2));
  EXPECT_THAT(loadedIDs(), SizeIs(3));
  EXPECT_THAT(storedIDs(), SizeIs(3));
  EXPECT_TRUE(std::filesystem::exists(catalog().fileLocation(work)));
}

TEST_F(LibraryFlows, AFailureOfTheStoreWhileDeletingIsDiscarded) {
  importTwo();
  sql("CREATE TRIGGER fails BEFORE DELETE ON message BEGIN SELECT RAISE(ABORT, 'no'); END");
  remove(libraryNamed("work"));
  EXPECT_TRUE(statusAs<ImportStatus::DeleteSuccess>());
  EXPECT_THAT(loadedIDs(), ElementsAre("h1"));
  EXPECT_FALSE(screen().importErrorMessage());
}

TEST_F(LibraryFlows, TheSystemIndexForgetsTheDeletedMessagesAndItsFailureIsNotTold) {
  spotlight = std::make_unique<FakeIndexer>();
  importTwo();
  remove(libraryNamed("work"));
  EXPECT_THAT(spotlight->removed, UnorderedElementsAre("w1", "w2"));
  spotlight->fails = true;
  remove(libraryNamed("home"));
  EXPECT_TRUE(statusAs<ImportStatus::DeleteSuccess>());
  EXPECT_FALSE(screen().importErrorMessage());
}

TEST_F(LibraryFlows, ClosingTheDeleteSheetForgetsTheStatusAndTheLibrary) {
  importTwo();
  screen().requestDelete(libraryNamed("work"));
  remove(libraryNamed("work"));
  screen().dismissDeletionStatus();
  EXPECT_FALSE(screen().showDeleteConfirmation());
  EXPECT_FALSE(screen().importStatus());
  EXPECT_FALSE(screen().libraryPendingDeletion());
}

TEST(DeleteConfirmation, AsksForTheLibraryByName) {
  MBOXLibrary library;
  library.displayName = "Work";
  const auto confirmation = deleteConfirmation(library);
  EXPECT_EQ(confirmation.title, "Delete Library");
  EXPECT_EQ(confirmation.message, "Delete \"Work\" and remove its imported messages?");
  EXPECT_EQ(confirmation.icon, "trash.circle.fill");
  EXPECT_EQ(confirmation.confirmTitle, "Delete");
  EXPECT_EQ(confirmation.cancelTitle, "Cancel");
  EXPECT_TRUE(confirmation.isDestructive);
}

TEST_F(LibraryFlows, TheDeleteDialogShowsAStatusOnlyWhenItIsItsOwn) {
  screen().importStatus.set(ImportStatus::Success{1, 3});
  EXPECT_FALSE(screen().showsDeletionStatus());
  screen().isDeletingLibrary.set(true);
  EXPECT_TRUE(screen().showsDeletionStatus());
  screen().isDeletingLibrary.set(false);
  screen().importStatus.set(ImportStatus::DeleteSuccess{"Work", 3});
  EXPECT_TRUE(screen().showsDeletionStatus());
  screen().importStatus.set(ImportStatus::Error{"no"});
  EXPECT_TRUE(screen().showsDeletionStatus());
  screen().importStatus.set(std::nullopt);
  screen().isDeletingLibrary.set(true);
  EXPECT_FALSE(screen().showsDeletionStatus());
}

}  // namespace
}  // namespace tidewrack
