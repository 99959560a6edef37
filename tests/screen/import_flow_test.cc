#include "screen_world.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using enum ImportProgressStep;

class ImportFlow : public ScreenWorld {
 protected:
  std::vector<ImportProgressStep> steps() {
    std::vector<ImportProgressStep> found;
    for (const auto& status : statuses) {
      if (const auto* importing = status.as<ImportStatus::Importing>()) {
        found.push_back(importing->step);
      }
    }
    return found;
  }
};

TEST_F(ImportFlow, ChoosingThreeFilesGivesThreeLibrariesParsedInTurnWithASingleSaveAndIndexRebuild) {
  tokenStore = std::make_unique<FakeTokenStore>();
  screen();
  import({archive("a.mbox", {"a1", "a2"}), archive("b.mbox", {"b1"}), archive("c.mbox", {"c1"})});
  ASSERT_THAT(screen().libraries(), SizeIs(3));
  std::map<std::string, std::string> fileNames;
  for (const auto& library : screen().libraries()) {
    fileNames[library.displayName.string()] = library.fileName.string();
  }
  EXPECT_THAT(statuses, ElementsAre(importing(preparing, std::nullopt, 0, 3, 0, 0),
                                    importing(copyingFiles, "a.mbox", 0, 3, 0, 0),
                                    importing(copyingFiles, "b.mbox", 1, 3, 1, 0),
                                    importing(copyingFiles, "c.mbox", 2, 3, 2, 0),
                                    importing(parsingMessages, fileNames["a"], 0, 3, 3, 0),
                                    importing(parsingMessages, fileNames["b"], 1, 3, 3, 2),
                                    importing(parsingMessages, fileNames["c"], 2, 3, 3, 3),
                                    importing(savingMessages, std::nullopt, 3, 3, 3, 4),
                                    importing(rebuildingIndex, std::nullopt, 3, 3, 3, 4),
                                    ImportStatus(ImportStatus::Success{3, 4})));
  EXPECT_EQ(tokenStore->rewrites, 1);
  EXPECT_THAT(storedIDs(), UnorderedElementsAre("a1", "a2", "b1", "c1"));
}

TEST_F(ImportFlow, AStatusStandsOnTheScreenBeforeItsWorkIsDone) {
  const auto file = archive("a.mbox", {"a1"});
  const auto run = screen().performImport({file});
  EXPECT_EQ(importStep(), copyingFiles);
  EXPECT_TRUE(screen().showImportStatusSheet());
  EXPECT_TRUE(screen().isImporting());
  EXPECT_THAT(screen().libraries(), IsEmpty());
  runUntil([&] { return importStep() == parsingMessages; });
  EXPECT_THAT(screen().libraries(), SizeIs(1));
  EXPECT_THAT(loadedIDs(), IsEmpty());
  runUntil([&] { return importStep() == savingMessages; });
  EXPECT_THAT(storedIDs(), IsEmpty());
  executor.runUntilIdle();
  EXPECT_TRUE(run.done());
}

TEST_F(ImportFlow, TheMessagesOfAnImportArriveNewestFirstWithTheirLibrary) {
  import({archive("Work mail.mbox", {"new", "old"})});
  ASSERT_EQ(loadedIDs(), (std::vector<std::string>{"new", "old"}));
  const auto& message = *screen().messages()[0];
  EXPECT_EQ(message.sourceLibraryName, "Work mail");
  EXPECT_EQ(message.sourceLibraryID, screen().libraries()[0].id);
  EXPECT_EQ(message.plainBody->bytes(), "Text of new.");
  EXPECT_EQ(screen().messageCount(screen().libraries()[0].id), 2);
}

TEST_F(ImportFlow, ImportingTheSameFileTwiceGivesTwoLibrariesAndMovesTheMessagesToTheLater) {
  const auto file = archive("a.mbox", {"a1", ""});
  import({file});
  executor.advance(1s);
  import({file});
  ASSERT_THAT(screen().libraries(), SizeIs(2));
  const Text later = screen().libraries()[0].id;
  const Text earlier = screen().libraries()[1].id;
  EXPECT_NE(later, earlier);
  EXPECT_THAT(storedFiles(), SizeIs(2));
  // The message with an id keeps one record, the one without is stored again.
  EXPECT_THAT(screen().messages().get(), SizeIs(3));
  EXPECT_EQ(screen().messageCount(later), 2);
  EXPECT_EQ(screen().messageCount(earlier), 1);
  for (const auto& message : screen().messages()) {
    if (message->id == "a1") {
      EXPECT_EQ(message->sourceLibraryID, later);
    }
  }
  EXPECT_THAT(storedIDs(), SizeIs(3));
}

TEST_F(ImportFlow, AnEmptyListFromThePickerStillRunsAllStepsAndEndsInSuccess) {
  screen().handleImportResult(std::vector<std::filesystem::path>());
  executor.runUntilIdle();
  EXPECT_THAT(statuses, ElementsAre(importing(preparing, std::nullopt, 0, 0, 0, 0),
                                    importing(savingMessages, std::nullopt, 0, 0, 0, 0),
                                    importing(rebuildingIndex, std::nullopt, 0, 0, 0, 0),
                                    ImportStatus(ImportStatus::Success{0, 0})));
  EXPECT_FALSE(screen().isImporting());
}

TEST_F(ImportFlow, WithSpotlightIndexingOffItsStepIsNotReportedAndNoToastIsShown) {
  spotlight = std::make_unique<FakeIndexer>();
  settings.set(SettingKey::spotlightIndexingEnabled, false);
  import({archive("a.mbox", {"a1"})});
  EXPECT_THAT(steps(),
              ElementsAre(preparing, copyingFiles, parsingMessages, savingMessages, rebuildingIndex));
  EXPECT_FALSE(screen().currentToast());
  EXPECT_THAT(spotlight->indexed, IsEmpty());
}

TEST_F(ImportFlow, WithSpotlightIndexingOnAllMessagesAreHandedOverInBatchesOfFifty) {
  spotlight = std::make_unique<FakeIndexer>();
  import({archive("a.mbox", {"a1", "a2"}), archive("b.mbox", {"b1"})});
  EXPECT_EQ(steps().back(), indexingSpotlight);
  EXPECT_THAT(spotlight->indexed, UnorderedElementsAre("a1", "a2", "b1"));
  EXPECT_THAT(spotlight->batchSizes, ElementsAre(50));
  EXPECT_EQ(screen().currentToast(), Toast::success("3 messages indexed in Spotlight"));
}

TEST_F(ImportFlow, AFailureOfThePickerShowsItsTextAndStartsNothing) {
  screen().handleImportResult(Failure("The folder cannot be shown."));
  executor.runUntilIdle();
  EXPECT_EQ(screen().importErrorMessage(), "The folder cannot be shown.");
  EXPECT_THAT(statuses, IsEmpty());
  EXPECT_FALSE(screen().currentToast());
}

TEST_F(ImportFlow, AChoiceInThePickerShowsAToastAndImports) {
  screen().handleImportResult(std::vector{archive("a.mbox", {"a1"})});
  EXPECT_EQ(screen().currentToast(), Toast::success("Starting import…"));
  executor.runUntilIdle();
  EXPECT_THAT(loadedIDs(), ElementsAre("a1"));
}

TEST_F(ImportFlow, AFailedCopyLeavesEarlierFilesInTheCatalogButNotOnTheScreen) {
  const auto good = archive("good.mbox", {"g1"});
  import({good, folder / "archives" / "missing.mbox", archive("never.mbox", {"n1"})});
  ASSERT_TRUE(statusAs<ImportStatus::Error>());
  const std::string told = statusAs<ImportStatus::Error>()->message;
  EXPECT_THAT(told, testing::HasSubstr("missing.mbox"));
  EXPECT_EQ(screen().importErrorMessage(), told);
  EXPECT_FALSE(screen().isImporting());
  EXPECT_TRUE(screen().showImportStatusSheet()) << "the panel stays until the user closes it";
  EXPECT_THAT(screen().libraries(), IsEmpty());
  EXPECT_THAT(screen().messages().get(), IsEmpty());
  EXPECT_THAT(storedFiles(), SizeIs(1));
  ASSERT_THAT(catalog().loadLibraries(), SizeIs(1));
  EXPECT_EQ(catalog().loadLibraries()[0].displayName, "good");
  EXPECT_THAT(restart().libraries(), SizeIs(1));
}

TEST_F(ImportFlow, AFolderThatCannotBeMadeFailsTheCopy) {
  auto world = services();
  write(folder / "occupied", "a file where the folder should be");
  world.applicationFolder = folder / "occupied";
  open(world);
  import({archive("a.mbox", {"a1"})});
  EXPECT_TRUE(statusAs<ImportStatus::Error>());
  EXPECT_TRUE(screen().importErrorMessage());
  EXPECT_THAT(screen().libraries(), IsEmpty());
}

TEST_F(ImportFlow, ACorruptCatalogFailsTheCopyAndIsNotReplaced) {
  screen();
  write(catalogFile(), "[{\"id\":");
  import({archive("a.mbox", {"a1"})});
  EXPECT_TRUE(statusAs<ImportStatus::Error>());
  EXPECT_EQ(textOf(catalogFile()), "[{\"id\":");
  EXPECT_THAT(storedIDs(), IsEmpty());
}

TEST_F(ImportFlow, ACopiedFileThatCannotBeReadLeavesALibraryWithoutMessages) {
  const auto a = archive("a.mbox", {"a1"});
  const auto b = archive("b.mbox", {"b1"});
  const auto run = screen().performImport({a, b});
  runUntil([&] { return importStep() == parsingMessages; });
  for (const auto& library : screen().libraries()) {
    if (library.displayName == "a") {
      std::filesystem::remove(catalog().fileLocation(library));
    }
  }
  testing::internal::CaptureStdout();
  executor.runUntilIdle();
  EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::StartsWith("[MBOXImporter] Failed to parse "));
  EXPECT_EQ(screen().importStatus(), ImportStatus(ImportStatus::Success{2, 1}));
  EXPECT_FALSE(screen().importErrorMessage());
  EXPECT_THAT(screen().libraries(), SizeIs(2));
  EXPECT_THAT(loadedIDs(), ElementsAre("b1"));
}

TEST_F(ImportFlow, ACopyIsReadWhileItIsMadeAndAgainOnlyWhenItHasChanged) {
  const auto run = screen().performImport({archive("a.mbox", {"a1"}), archive("b.mbox", {"b1"})});
  runUntil([&] { return importStep() == parsingMessages; });
  for (const auto& library : screen().libraries()) {
    const auto file = catalog().fileLocation(library);
    std::string text = textOf(file);
    const auto id = text.find(library.displayName == "a" ? "a1" : "b1");
    ASSERT_NE(id, std::string::npos);
    text.replace(id, 2, library.displayName == "a" ? "a2" : "b2");
    write(file, library.displayName == "a" ? text : text + "one more line\n");
  }
  executor.runUntilIdle();
  EXPECT_THAT(loadedIDs(), UnorderedElementsAre("a1", "b2"));
}

TEST_F(ImportFlow, ASecondFileThatCannotBeCopiedThrowsAwayWhatWasReadOfTheFirst) {
  import({archive("earlier.mbox", {"e1"})});
  executor.advance(1s);
  import({archive("good.mbox", {"g1"}), folder / "archives"});
  EXPECT_TRUE(statusAs<ImportStatus::Error>());
  EXPECT_FALSE(screen().isImporting());
  EXPECT_THAT(loadedIDs(), ElementsAre("e1"));
  EXPECT_THAT(storedIDs(), ElementsAre("e1"));
  executor.advance(1s);
  import({archive("next.mbox", {"n1"})});
  EXPECT_TRUE(statusAs<ImportStatus::Success>());
  EXPECT_THAT(loadedIDs(), UnorderedElementsAre("e1", "n1"));
}

TEST_F(ImportFlow, AFailedSaveKeepsTheLibrariesAndCommitsNothing) {
  import({archive("earlier.mbox", {"e1"})});
  makeSavingFail();
  executor.advance(1s);
  import({archive("a.mbox", {"a1"})});
  ASSERT_TRUE(statusAs<ImportStatus::Error>());
  EXPECT_THAT(*screen().importErrorMessage(), testing::HasSubstr("the disk is tired"));
  EXPECT_FALSE(screen().isImporting());
  EXPECT_THAT(screen().libraries(), SizeIs(2));
  EXPECT_THAT(catalog().loadLibraries(), SizeIs(2));
  EXPECT_THAT(loadedIDs(), ElementsAre("e1"));
  EXPECT_THAT(storedIDs(), ElementsAre("e1"));
}

TEST_F(ImportFlow, WhatAFailedSaveLeftPendingIsCommittedByTheNextSave) {
  screen();
  makeSavingFail();
  import({archive("a.mbox", {"a1"})});
  letSavingWork();
  screen().importErrorMessage.set(std::nullopt);
  executor.advance(1s);
  import({archive("b.mbox", {"b1"})});
  EXPECT_TRUE(statusAs<ImportStatus::Success>());
  EXPECT_THAT(storedIDs(), UnorderedElementsAre("a1", "b1"));
  EXPECT_THAT(loadedIDs(), ElementsAre("b1"));
}

TEST_F(ImportFlow, AFailureOfTheIndexKeepsTheMessagesSavedAndOnTheScreen) {
  tokenStore = std::make_unique<FakeTokenStore>();
  tokenStore->fails = true;
  import({archive("a.mbox", {"a1"})});
  EXPECT_EQ(screen().importStatus(), ImportStatus(ImportStatus::Error{"The tokens cannot be written."}));
  EXPECT_EQ(screen().importErrorMessage(), "The tokens cannot be written.");
  EXPECT_THAT(loadedIDs(), ElementsAre("a1"));
  EXPECT_THAT(storedIDs(), ElementsAre("a1"));
}

TEST_F(ImportFlow, AFailureOfTheSystemIndexSkipsSelectionAndCategorisation) {
  spotlight = std::make_unique<FakeIndexer>();
  spotlight->fails = true;
  categorizer = std::make_unique<FakeCategorizer>();
  import({archive("a.mbox", {"a1"})});
  EXPECT_EQ(screen().importStatus(), ImportStatus(ImportStatus::Error{"The system index is full."}));
  EXPECT_FALSE(screen().sidebarSelection());
  EXPECT_FALSE(screen().selectedMessageID());
  EXPECT_EQ(categorizer->runs, 0);
  EXPECT_FALSE(screen().currentToast());
  EXPECT_THAT(storedIDs(), ElementsAre("a1"));
}

TEST_F(ImportFlow, ALibraryWithoutMessagesIsNoFailure) {
  write(folder / "archives" / "empty.mbox", "");
  import({folder / "archives" / "empty.mbox"});
  EXPECT_THAT(steps(),
              ElementsAre(preparing, copyingFiles, parsingMessages, savingMessages, rebuildingIndex));
  EXPECT_EQ(screen().importStatus(), ImportStatus(ImportStatus::Success{1, 0}));
  EXPECT_THAT(screen().libraries(), SizeIs(1));
  EXPECT_THAT(catalog().loadLibraries(), SizeIs(1));
}

TEST_F(ImportFlow, TheFirstNewLibraryAndItsFirstMessageAreSelected) {
  import({archive("a.mbox", {"a1", "a2"}), archive("b.mbox", {"b1"})});
  const auto& selection = screen().sidebarSelection();
  ASSERT_TRUE(selection && selection->as<SidebarSelection::Library>());
  EXPECT_EQ(screen().activeTitle(), "a");
  EXPECT_THAT(shownIDs(), ElementsAre("a1", "a2"));
  EXPECT_EQ(screen().selectedMessageID(), Text("a1"));
}

TEST_F(ImportFlow, ASelectionOtherThanAllLibrariesStays) {
  import({archive("a.mbox", {"a1"})});
  const auto selected = screen().sidebarSelection();
  executor.advance(1s);
  import({archive("b.mbox", {"b1"})});
  EXPECT_EQ(screen().sidebarSelection(), selected);
  EXPECT_EQ(screen().selectedMessageID(), Text("a1"));
  screen().sidebarSelection.set(SidebarSelection::allLibraries());
  executor.advance(1s);
  import({archive("c.mbox", {"c1"})});
  EXPECT_EQ(screen().activeTitle(), "c");
}

TEST_F(ImportFlow, TheFirstShownMessageIsSelectedWhereNoneWas) {
  import({archive("a.mbox", {"a1", "a2"})});
  const auto selected = screen().sidebarSelection();
  screen().selectedMessageID.set(std::nullopt);
  executor.advance(1s);
  import({archive("b.mbox", {"b1"})});
  EXPECT_EQ(screen().sidebarSelection(), selected);
  EXPECT_EQ(screen().selectedMessageID(), Text("a1"));
}

TEST_F(ImportFlow, CategorisationStartsOverAllMessagesWhenBothSettingsAreOn) {
  categorizer = std::make_unique<FakeCategorizer>();
  import({archive("a.mbox", {"a1", "a2"})});
  EXPECT_EQ(categorizer->runs, 1);
  EXPECT_EQ(categorizer->given, 2U);
  settings.set(SettingKey::enableCategoryDetection, false);
  executor.advance(1s);
  import({archive("b.mbox", {"b1"})});
  EXPECT_EQ(categorizer->runs, 1);
}

TEST_F(ImportFlow, TwoRunsDoNotOverlap) {
  const auto first = screen().performImport({archive("a.mbox", {"a1"})});
  const auto second = screen().performImport({archive("b.mbox", {"b1"})});
  executor.runUntilIdle();
  EXPECT_TRUE(first.done() && second.done());
  EXPECT_THAT(steps(),
              ElementsAre(preparing, copyingFiles, parsingMessages, savingMessages, rebuildingIndex,
                          preparing, copyingFiles, parsingMessages, savingMessages, rebuildingIndex));
  EXPECT_THAT(loadedIDs(), UnorderedElementsAre("a1", "b1"));
  EXPECT_FALSE(screen().isImporting());
}

TEST_F(ImportFlow, FilesOpenedDuringTheStartupLoadWaitForItsEnd) {
  import({archive("old.mbox", {"o1"})});
  executor.runUntilIdle();
  container.reset();
  ContentView& screen = restart();
  EXPECT_THAT(loadedIDs(), ElementsAre("o1"));
  statuses.clear();
  const auto load = screen.loadPersistedLibraries();
  screen.openFiles({archive("new.mbox", {"n1"})});
  executor.runUntilIdle();
  EXPECT_TRUE(load.done());
  EXPECT_TRUE(statuses.front().as<ImportStatus::LoadingDatabase>());
  EXPECT_TRUE(statuses.back().as<ImportStatus::Success>());
  EXPECT_THAT(loadedIDs(), UnorderedElementsAre("o1", "n1"));
}

TEST_F(ImportFlow, OpeningNoFilesDoesNothing) {
  screen().openFiles({});
  executor.runUntilIdle();
  EXPECT_THAT(statuses, IsEmpty());
  EXPECT_FALSE(screen().currentToast());
}

TEST_F(ImportFlow, TheLargestNumberOfMessagesInTheSettingsHasNoEffect) {
  settings.set(SettingKey::maxMessagesPerImport, std::int64_t{1});
  import({archive("a.mbox", {"a1", "a2", "a3"})});
  EXPECT_THAT(loadedIDs(), SizeIs(3));
}

TEST_F(ImportFlow, ANameThatIsNoTextIsShownRepaired) {
  const auto file = archive("a.mbox", {"a1"});
  const auto odd = folder / "archives" / "odd\xff.mbox";
  std::filesystem::rename(file, odd);
  import({odd});
  ASSERT_TRUE(statusAs<ImportStatus::Success>());
  EXPECT_EQ(statuses[1].as<ImportStatus::Importing>()->fileName, "odd\uFFFD.mbox");
}

TEST_F(ImportFlow, SearchingFindsAnImportedMessageOnceTheIndexStands) {
  import({archive("a.mbox", {"zebra", "giraffe"})});
  screen().searchText.set("zebra");
  EXPECT_THAT(shownIDs(), ElementsAre("zebra"));
}

}  // namespace
}  // namespace tidewrack
