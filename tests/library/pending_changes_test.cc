#include "library/pending_changes.h"

#include <atomic>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "library/message_store.h"
#include "library/sample_messages.h"
#include "library/store_operations.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// A store that can run full.
class PendingChanges : public ::testing::Test {
 protected:
  PendingChanges()
      : container_(ModelContainer::open(folder_ / "default.store")), context_(container_->newContext()) {
    saveMessages({shared(sampleMessage("old"))}, context_);
  }
  void fillDisk() {
    MessageStore::Writing writing(context_.store());
    const auto pages = writing.with(
        [](SQLiteConnection& connection) { return connection.queryInteger("PRAGMA page_count"); });
    context_.store().limitPagesForTesting(pages);
  }
  void emptyDisk() { context_.store().limitPagesForTesting(1'000'000); }

  static EmailMessage big(const std::string& id, const std::string& library = "L1") {
    EmailMessage message = sampleMessage(id, library);
    message.plainBody = Content::ofBytes(std::string(500'000, 'b'));
    return message;
  }
  std::vector<std::string> ids(ModelContext& context) {
    std::vector<std::string> result;
    for (const auto& message : fetchAllMessages(context)) {
      result.push_back(message->id.string());
    }
    return result;
  }

  TemporaryFolder folder_;
  std::shared_ptr<ModelContainer> container_;
  ModelContext context_;
};

TEST_F(PendingChanges, AFullDiskDuringASaveSaysSoAndLosesNothingOlder) {
  fillDisk();
  try {
    saveMessages({shared(big("new"))}, context_);
    FAIL() << "the save went through";
  } catch (const StoreFailure& failure) {
    EXPECT_STREQ(failure.what(), "The disk is full. The change to the mail store was not made.");
  }
  ModelContext fresh = container_->newContext();
  EXPECT_THAT(ids(fresh), ElementsAre("old"));
  EXPECT_EQ(fetchAllMessages(fresh)[0]->attachments[1].data.bytes(), std::string(70'000, 'p'));
}

TEST_F(PendingChanges, ALaterSaveOnTheSameContextCommitsWhatAFailedOneLeft) {
  fillDisk();
  EXPECT_THROW(saveMessages({shared(big("new"))}, context_), StoreFailure);
  EXPECT_TRUE(context_.hasPendingChanges());
  emptyDisk();
  updateCategory("old", Text("Travel"), context_);
  EXPECT_FALSE(context_.hasPendingChanges());
  ModelContext fresh = container_->newContext();
  EXPECT_THAT(ids(fresh), ElementsAre("old", "new"));
  EXPECT_EQ(*fetchAllMessages(fresh)[1]->plainBody, *big("new").plainBody);
}

TEST_F(PendingChanges, AFailedSaveOfMoreThanFitsIntoMemoryEndsTheWorkBesideItToo) {
  fillDisk();
  MessageList messages;
  const auto body = Content::ofBytes(std::string(8'000'000, 'b'));
  for (int i = 0; i < 12; ++i) {
    EmailMessage message = sampleMessage(std::to_string(i));
    message.plainBody = body;
    messages.push_back(shared(message));
  }
  std::atomic<bool> isUnderWay = false;
  EXPECT_THROW(saveMessages(messages, context_, {},
                            [&](auto written) {
                              isUnderWay = true;
                              EXPECT_THAT(written, SizeIs(12));
                              isUnderWay = false;
                            }),
               StoreFailure);
  EXPECT_FALSE(isUnderWay);
  emptyDisk();
  updateCategory("old", Text("Travel"), context_);
  EXPECT_THAT(ids(context_), SizeIs(13));
}

TEST_F(PendingChanges, ASaveOnAnotherContextDoesNotCommitThem) {
  fillDisk();
  EXPECT_THROW(saveMessages({shared(big("new"))}, context_), StoreFailure);
  emptyDisk();
  ModelContext other = container_->newContext();
  saveMessages({shared(sampleMessage("other"))}, other);
  EXPECT_THAT(ids(other), ElementsAre("old", "other"));
}

TEST_F(PendingChanges, AnUnknownIDOrAnEmptyListDoesNotCommitThem) {
  fillDisk();
  EXPECT_THROW(saveMessages({shared(big("new"))}, context_), StoreFailure);
  emptyDisk();
  updateCategory("unknown", Text("Travel"), context_);
  saveMessages({}, context_);
  EXPECT_TRUE(context_.hasPendingChanges());
}

TEST_F(PendingChanges, FetchesOfTheSameContextSeeThem) {
  ModelContext fresh = container_->newContext();
  updateCategory("old", Text("Travel"), fresh);
  fillDisk();
  EmailMessage changed = sampleMessage("old", "L2");
  EXPECT_THROW(saveMessages({shared(big("new")), shared(changed)}, context_), StoreFailure);
  EXPECT_THAT(ids(context_), ElementsAre("old", "new"));
  ASSERT_THAT(fetchMessages("L2", context_), SizeIs(1));
  EXPECT_EQ(fetchMessages("L2", context_)[0]->category, Text("Travel"));
  EXPECT_THAT(fetchMessages("L1", context_), SizeIs(1));
  ASSERT_TRUE(fetchMessage("new", context_).has_value());
  EXPECT_EQ(fetchMessage("old", context_)->sourceLibraryID, "L2");
  EXPECT_THAT(ids(fresh), ElementsAre("old"));
}

TEST_F(PendingChanges, DeletingALibraryTakesItsPendingMessagesToo) {
  fillDisk();
  EXPECT_THROW(saveMessages({shared(big("new", "L2"))}, context_), StoreFailure);
  emptyDisk();
  deleteMessages("L2", context_);
  EXPECT_FALSE(context_.hasPendingChanges());
  EXPECT_THAT(ids(context_), ElementsAre("old"));
}

TEST_F(PendingChanges, ARenamePendingBehindASaveRenamesItsMessages) {
  fillDisk();
  EXPECT_THROW(saveMessages({shared(big("new", "L2"))}, context_), StoreFailure);
  EXPECT_THROW(renameMessages("L2", "Renamed", context_), StoreFailure);
  EXPECT_EQ(fetchMessages("L2", context_)[0]->sourceLibraryName, "Renamed");
  emptyDisk();
  updateCategory("new", Text("Travel"), context_);
  ModelContext fresh = container_->newContext();
  EXPECT_EQ(fetchMessages("L2", fresh)[0]->sourceLibraryName, "Renamed");
  EXPECT_EQ(fetchMessages("L2", fresh)[0]->category, Text("Travel"));
}

TEST_F(PendingChanges, TwoFailedSavesAreCommittedInTheirOrder) {
  fillDisk();
  EmailMessage first = big("new");
  first.subject = "First";
  EmailMessage second = big("new");
  second.subject = "Second";
  EXPECT_THROW(saveMessages({shared(first)}, context_), StoreFailure);
  EXPECT_THROW(saveMessages({shared(second)}, context_), StoreFailure);
  emptyDisk();
  const MessageList stored = saveMessages({shared(sampleMessage("third"))}, context_);
  EXPECT_THAT(stored, SizeIs(1));
  EXPECT_EQ(stored[0]->id, "third");
  EXPECT_EQ(fetchMessage("new", context_)->subject, "Second");
}

}  // namespace
}  // namespace tidewrack
