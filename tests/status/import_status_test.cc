#include "status/import_status.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum StatusDetailState;

std::vector<ImportStatus> oneOfEachCase() {
  return {ImportStatus::Importing{}, ImportStatus::LoadingDatabase{}, ImportStatus::RestoringFromiCloud{},
          ImportStatus::Success{},   ImportStatus::RestoreSuccess{},  ImportStatus::Indexed{},
          ImportStatus::Deleting{},  ImportStatus::DeleteSuccess{},   ImportStatus::Error{"No."}};
}

template <typename Property>
auto collect(Property property) {
  std::vector<std::invoke_result_t<Property, const ImportStatus&>> found;
  for (const auto& status : oneOfEachCase()) {
    found.push_back(property(status));
  }
  return found;
}

std::vector<std::string> rowTexts(const ImportStatus& status) {
  std::vector<std::string> texts;
  for (const auto& row : status.detailItems()) {
    texts.push_back(row.text);
  }
  return texts;
}

std::vector<std::string> rowIDs(const ImportStatus& status) {
  std::vector<std::string> ids;
  for (const auto& row : status.detailItems()) {
    ids.push_back(row.id);
  }
  return ids;
}

std::vector<StatusDetailState> rowStates(const ImportStatus& status) {
  std::vector<StatusDetailState> states;
  for (const auto& row : status.detailItems()) {
    states.push_back(row.state);
  }
  return states;
}

const std::vector<std::string> importStepTitles = {
    "Prepare import", "Copy files",           "Parse messages and attachments",
    "Save messages",  "Rebuild search index", "Index in Spotlight"};

TEST(ImportStatus, HasATitleForEachCase) {
  EXPECT_THAT(collect([](const ImportStatus& status) { return status.title(); }),
              ElementsAre("Importing Messages…", "Loading Library…", "Restoring from iCloud…",
                          "Import Successful", "Restore Complete", "Indexed Successfully",
                          "Deleting Library…", "Library Deleted", "Import Error"));
}

TEST(ImportStatus, HasAnIconAndAColourForEachCase) {
  EXPECT_THAT(collect([](const ImportStatus& status) { return status.icon(); }),
              ElementsAre("arrow.down.doc", "tray.full", "icloud.and.arrow.down", "checkmark.circle.fill",
                          "checkmark.icloud.fill", "magnifyingglass.circle.fill", "trash",
                          "checkmark.circle.fill", "exclamationmark.triangle.fill"));
  EXPECT_THAT(collect([](const ImportStatus& status) { return status.color(); }),
              ElementsAre("blue", "blue", "blue", "green", "green", "purple", "red", "green", "red"));
}

TEST(ImportStatus, DeleteSuccessAndSuccessShareIconAndColourAndDeletingAndErrorAColour) {
  const ImportStatus success = ImportStatus::Success{};
  const ImportStatus deleteSuccess = ImportStatus::DeleteSuccess{};
  EXPECT_EQ(success.icon(), deleteSuccess.icon());
  EXPECT_EQ(success.color(), deleteSuccess.color());
  EXPECT_EQ(ImportStatus(ImportStatus::Deleting{}).color(), ImportStatus(ImportStatus::Error{}).color());
}

TEST(ImportStatus, HasEitherABarOrAButton) {
  EXPECT_THAT(collect([](const ImportStatus& status) { return status.showsBar(); }),
              ElementsAre(true, true, true, false, false, false, true, false, false));
  EXPECT_THAT(collect([](const ImportStatus& status) { return status.showsDismissButton(); }),
              ElementsAre(false, false, false, true, true, true, false, true, true));
}

TEST(ImportStatus, HasAMessageAndADetailForEachImportStep) {
  std::vector<std::string> messages;
  std::vector<std::string> details;
  for (const auto step : allImportProgressSteps) {
    messages.push_back(message(step));
    details.push_back(detailTitle(step));
  }
  EXPECT_THAT(messages, ElementsAre("Preparing selected files…", "Copying MBOX files into the app library…",
                                    "Reading headers, bodies, labels, and attachments…",
                                    "Saving imported messages locally…", "Updating the in-app search index…",
                                    "Updating Spotlight, if enabled…"));
  EXPECT_EQ(details, importStepTitles);
}

TEST(ImportStatus, HasAMessageAndADetailForEachLoadStep) {
  std::vector<std::string> messages;
  for (const auto step : allDatabaseLoadSteps) {
    const ImportStatus status = ImportStatus::LoadingDatabase{step};
    EXPECT_EQ(status.message(), message(step));
    messages.push_back(message(step));
  }
  EXPECT_THAT(messages, ElementsAre("Opening local database…", "Loading imported libraries…",
                                    "Loading stored messages…", "Restoring search index…"));
  const ImportStatus status = ImportStatus::LoadingDatabase{DatabaseLoadStep::loadingMessages};
  EXPECT_THAT(rowTexts(status),
              ElementsAre("Open database", "Read libraries", "Read messages", "Rebuild search index"));
  EXPECT_EQ(rowIDs(status), rowTexts(status));
  EXPECT_THAT(rowStates(status), ElementsAre(completed, completed, active, pending));
}

TEST(ImportStatus, HasAMessageAndADetailForEachDeleteStep) {
  std::vector<std::string> messages;
  for (const auto step : allDeleteProgressSteps) {
    messages.push_back(message(step));
  }
  EXPECT_THAT(messages, ElementsAre("Preparing deletion…", "Removing the stored MBOX file…",
                                    "Removing imported messages…", "Rebuilding the search index…"));
  const ImportStatus status = ImportStatus::Deleting{DeleteProgressStep::preparing, "Work", 2};
  EXPECT_THAT(rowTexts(status), ElementsAre("Prepare deletion", "Remove library file",
                                            "Remove stored messages", "Rebuild search index"));
  EXPECT_EQ(rowIDs(status), rowTexts(status));
  EXPECT_THAT(rowStates(status), ElementsAre(active, pending, pending, pending));
}

TEST(ImportStatus, ImportingWithNoFileNameGivesTwoMessageLinesAndWithAFileNameThree) {
  ImportStatus::Importing importing{ImportProgressStep::copyingFiles, std::nullopt, 1, 3, 0, 0};
  EXPECT_EQ(ImportStatus(importing).message(), "Copying MBOX files into the app library…\n1 of 3 file(s)");
  importing.fileName = "work.mbox";
  EXPECT_EQ(ImportStatus(importing).message(),
            "Copying MBOX files into the app library…\nCurrent file: work.mbox\n1 of 3 file(s)");
}

TEST(ImportStatus, ImportingAtTheLastStepWithAllFilesIsCappedBelowFull) {
  const ImportStatus status =
      ImportStatus::Importing{ImportProgressStep::indexingSpotlight, std::nullopt, 10, 10, 1, 1};
  EXPECT_DOUBLE_EQ(*status.progressFraction(), 0.98);
}

TEST(ImportStatus, ImportingWithNoFilesDividesByNothing) {
  for (const auto step : allImportProgressSteps) {
    const ImportStatus status = ImportStatus::Importing{step, std::nullopt, 0, 0, 0, 0};
    EXPECT_DOUBLE_EQ(*status.progressFraction(), static_cast<double>(step) / 6.0);
    EXPECT_TRUE(status.message().ends_with("\n0 of 0 file(s)"));
  }
}

TEST(ImportStatus, ImportingAddsTheShareOfItsFiles) {
  const ImportStatus status =
      ImportStatus::Importing{ImportProgressStep::parsingMessages, std::nullopt, 1, 4, 4, 0};
  EXPECT_DOUBLE_EQ(*status.progressFraction(), 2.0 / 6.0 + 0.25 / 6.0);
}

TEST(ImportStatus, DeletingEndsFullWhileImportingNeverDoes) {
  std::vector<double> fractions;
  for (const auto step : allDeleteProgressSteps) {
    fractions.push_back(*ImportStatus(ImportStatus::Deleting{step, "Work", 0}).progressFraction());
  }
  EXPECT_THAT(fractions, ElementsAre(0.25, 0.5, 0.75, 1.0));
  for (const auto step : allImportProgressSteps) {
    const ImportStatus status = ImportStatus::Importing{step, std::nullopt, 9, 3, 0, 0};
    EXPECT_LE(*status.progressFraction(), 0.98);
  }
}

TEST(ImportStatus, LoadingGoesInQuartersToFull) {
  std::vector<double> fractions;
  for (const auto step : allDatabaseLoadSteps) {
    fractions.push_back(*ImportStatus(ImportStatus::LoadingDatabase{step}).progressFraction());
  }
  EXPECT_THAT(fractions, ElementsAre(0.25, 0.5, 0.75, 1.0));
}

TEST(ImportStatus, NoOtherCaseHasAFraction) {
  EXPECT_FALSE(ImportStatus(ImportStatus::RestoringFromiCloud{5}).progressFraction());
  EXPECT_FALSE(ImportStatus(ImportStatus::Success{}).progressFraction());
  EXPECT_FALSE(ImportStatus(ImportStatus::RestoreSuccess{}).progressFraction());
  EXPECT_FALSE(ImportStatus(ImportStatus::Indexed{}).progressFraction());
  EXPECT_FALSE(ImportStatus(ImportStatus::DeleteSuccess{}).progressFraction());
  EXPECT_FALSE(ImportStatus(ImportStatus::Error{}).progressFraction());
}

TEST(ImportStatus, RestoringWaitsAtNoMessageAndCountsFromOne) {
  EXPECT_EQ(ImportStatus(ImportStatus::RestoringFromiCloud{0}).message(),
            "Waiting for iCloud to send your existing messages to this device. This can take a moment the "
            "first time.");
  EXPECT_EQ(ImportStatus(ImportStatus::RestoringFromiCloud{1}).message(),
            "Waiting for iCloud to finish syncing your data… 1 message(s) so far.");
}

TEST(ImportStatus, SaysWhatWasDone) {
  EXPECT_EQ(ImportStatus(ImportStatus::Success{2, 40}).message(),
            "Imported 40 message(s) from 2 library(ies)");
  EXPECT_EQ(ImportStatus(ImportStatus::RestoreSuccess{7}).message(), "Restored 7 message(s) from iCloud.");
  EXPECT_EQ(ImportStatus(ImportStatus::Indexed{7}).message(),
            "7 message(s) have been indexed for Spotlight search");
  EXPECT_EQ(ImportStatus(ImportStatus::DeleteSuccess{"Work", 3}).message(),
            "Deleted \"Work\" and removed 3 message(s).");
  EXPECT_EQ(ImportStatus(ImportStatus::Deleting{DeleteProgressStep::deletingFile, "Work", 3}).message(),
            "Work\n3 message(s) affected\nRemoving the stored MBOX file…");
}

TEST(ImportStatus, AnErrorShowsItsTextAsItStands) {
  EXPECT_EQ(ImportStatus(ImportStatus::Error{"100%@ of %d"}).message(), "100%@ of %d");
}

TEST(ImportStatus, AnErrorRaisedWhileDeletingStillReadsImportError) {
  EXPECT_EQ(ImportStatus(ImportStatus::Error{"The library could not be deleted."}).title(), "Import Error");
}

TEST(ImportStatus, ImportRowsAreCompletedBelowTheStepAndPendingAboveIt) {
  const ImportStatus status =
      ImportStatus::Importing{ImportProgressStep::savingMessages, std::nullopt, 1, 1, 0, 0};
  EXPECT_EQ(rowTexts(status), importStepTitles);
  EXPECT_THAT(rowStates(status), ElementsAre(completed, completed, completed, active, pending, pending));
}

TEST(ImportStatus, TheCopyRowShowsItsLibrariesOnLaterStepsTooAndIsBareAtNone) {
  for (const auto step : allImportProgressSteps) {
    EXPECT_EQ(rowTexts(ImportStatus::Importing{step, std::nullopt, 0, 3, 3, 0})[1],
              "Copy files - 3 library(ies)");
    EXPECT_EQ(rowTexts(ImportStatus::Importing{step, std::nullopt, 0, 3, 0, 0})[1], "Copy files");
  }
}

TEST(ImportStatus, TheSaveRowShowsItsMessages) {
  const auto rows =
      rowTexts(ImportStatus::Importing{ImportProgressStep::parsingMessages, std::nullopt, 0, 1, 1, 12});
  EXPECT_EQ(rows[3], "Save messages - 12 message(s)");
  EXPECT_EQ(rowTexts(ImportStatus::Importing{})[3], "Save messages");
}

TEST(ImportStatus, TheIdOfASuffixedRowIsTheBareWording) {
  const ImportStatus status =
      ImportStatus::Importing{ImportProgressStep::savingMessages, std::nullopt, 0, 1, 3, 12};
  EXPECT_EQ(rowIDs(status), importStepTitles);
}

TEST(ImportStatus, FinishedOperationsListWhatWasDone) {
  const ImportStatus success = ImportStatus::Success{};
  const ImportStatus indexed = ImportStatus::Indexed{};
  const ImportStatus deleted = ImportStatus::DeleteSuccess{};
  EXPECT_THAT(rowTexts(success), ElementsAre("Messages are now searchable", "Libraries have been saved",
                                             "Search index updated"));
  EXPECT_THAT(rowTexts(indexed),
              ElementsAre("Available in Spotlight (Command-Space)", "Search by subject, sender, or content"));
  EXPECT_THAT(rowTexts(deleted),
              ElementsAre("Library file removed", "Imported messages removed", "Search index rebuilt"));
  for (const auto& status : {success, indexed, deleted}) {
    EXPECT_EQ(rowIDs(status), rowTexts(status));
    EXPECT_THAT(rowStates(status), testing::Each(completed));
  }
}

TEST(ImportStatus, RestoresAndErrorsHaveNoRows) {
  EXPECT_THAT(ImportStatus(ImportStatus::RestoringFromiCloud{3}).detailItems(), IsEmpty());
  EXPECT_THAT(ImportStatus(ImportStatus::RestoreSuccess{3}).detailItems(), IsEmpty());
  EXPECT_THAT(ImportStatus(ImportStatus::Error{"No."}).detailItems(), IsEmpty());
}

TEST(ImportStatus, IsComparedByCaseAndPayload) {
  const ImportStatus::Importing importing{ImportProgressStep::copyingFiles, "a", 0, 1, 0, 0};
  auto other = importing;
  EXPECT_EQ(ImportStatus(importing), ImportStatus(other));
  other.fileName.reset();
  EXPECT_NE(ImportStatus(importing), ImportStatus(other));
  EXPECT_NE(ImportStatus(ImportStatus::Success{}), ImportStatus(ImportStatus::DeleteSuccess{}));
  EXPECT_EQ(ImportStatus(importing).as<ImportStatus::Importing>()->fileName, "a");
  EXPECT_EQ(ImportStatus(importing).as<ImportStatus::Error>(), nullptr);
}

TEST(ImportStatus, TheButtonAndTheMarksHaveTheirLook) {
  EXPECT_EQ(statusDismissTitle(), "OK");
  EXPECT_EQ(icon(pending), "circle");
  EXPECT_EQ(icon(active), "circle.dotted");
  EXPECT_EQ(icon(completed), "checkmark.circle.fill");
  EXPECT_EQ(color(pending), "secondary");
  EXPECT_EQ(color(active), "blue");
  EXPECT_EQ(color(completed), "green");
}

}  // namespace
}  // namespace tidewrack
