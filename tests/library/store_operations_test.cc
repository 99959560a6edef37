#include "library/store_operations.h"

#include <algorithm>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "library/message_store.h"
#include "library/sample_messages.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Every operation on a store in a file and on one in memory.
class StoreOperations : public ::testing::TestWithParam<bool> {
 protected:
  StoreOperations()
      : container_(GetParam() ? ModelContainer::inMemory() : ModelContainer::open(folder_ / "default.store")),
        context_(container_->newContext()) {}

  std::vector<std::string> ids() {
    std::vector<std::string> result;
    for (const auto& message : fetchAllMessages(context_)) {
      result.push_back(message->id.string());
    }
    return result;
  }
  std::int64_t count(const std::string& table) {
    MessageStore::Writing writing(context_.store());
    return writing.with([&](SQLiteConnection& connection) {
      return connection.queryInteger("SELECT count(*) FROM " + table);
    });
  }
  void execute(const std::string& sql) {
    MessageStore::Writing writing(context_.store());
    writing.with([&](SQLiteConnection& connection) { connection.execute(sql); });
  }

  TemporaryFolder folder_;
  std::shared_ptr<ModelContainer> container_;
  ModelContext context_;
};

INSTANTIATE_TEST_SUITE_P(, StoreOperations, ::testing::Bool(),
                         [](const auto& test) { return test.param ? "InMemory" : "OnDisk"; });

TEST_P(StoreOperations, ARecordWrittenAndReadBackEqualsTheRecordGiven) {
  EmailMessage message = sampleMessage("a@example.org");
  message.category = "Travel";
  saveMessages({shared(message)}, context_);
  const auto stored = fetchAllMessages(context_);
  ASSERT_THAT(stored, SizeIs(1));
  EXPECT_EQ(*stored[0], message);
}

TEST_P(StoreOperations, ARecordOfWhichEverythingOptionalIsAbsentEqualsTheRecordGiven) {
  EmailMessage message;
  message.id = "bare";
  message.sourceLibraryID = "L1";
  message.conversationID = "bare";
  saveMessages({shared(message)}, context_);
  const auto stored = fetchAllMessages(context_);
  ASSERT_THAT(stored, SizeIs(1));
  EXPECT_EQ(*stored[0], message);
}

TEST_P(StoreOperations, EmptyTextsAndBodiesAreNotAbsentOnes) {
  EmailMessage message = sampleMessage("a");
  message.from.name = Text();
  message.inReplyTo = Text();
  message.category = Text();
  message.plainBody = Content();
  message.htmlBody = std::nullopt;
  saveMessages({shared(message)}, context_);
  const auto stored = fetchAllMessages(context_);
  EXPECT_EQ(*stored[0], message);
  EXPECT_TRUE(stored[0]->plainBody.has_value());
  EXPECT_FALSE(stored[0]->htmlBody.has_value());
}

TEST_P(StoreOperations, SavingAnEmptyListLeavesTheStoreUntouched) {
  EXPECT_THAT(saveMessages({}, context_), IsEmpty());
  EXPECT_EQ(count("message"), 0);
}

TEST_P(StoreOperations, SavingGivesTheSameRecordsOverTheStoredRows) {
  const MessageList messages = {shared(sampleMessage("b")), shared(sampleMessage("a"))};
  const MessageList stored = saveMessages(messages, context_);
  ASSERT_TRUE(sameMessages(stored, messages));
  EXPECT_NE(stored[0]->plainBody->source(), messages[0]->plainBody->source());
  EXPECT_NE(stored[0]->attachments[1].data.source(), messages[0]->attachments[1].data.source());
  EXPECT_EQ(stored[0]->attachments[1].data.size(), 70'000U);
}

TEST_P(StoreOperations, TheWorkBesideASaveSeesEachWrittenMessageOnceAndAsItWasGiven) {
  const EmailMessage earlier = sampleMessage("a");
  EmailMessage later = sampleMessage("a", "L2");
  later.subject = "Later";
  const MessageList messages = {shared(earlier), shared(sampleMessage("b")), shared(later)};
  MessageList seen;
  const auto thread = std::this_thread::get_id();
  const MessageList stored = saveMessages(messages, context_, {}, [&](auto written) {
    EXPECT_NE(std::this_thread::get_id(), thread);
    seen.assign(written.begin(), written.end());
  });
  EXPECT_THAT(seen, ElementsAre(messages[1], messages[2]));
  EXPECT_THAT(stored, SizeIs(3));
}

TEST_P(StoreOperations, TheWorkBesideASaveOfDistinctMessagesSeesTheListItself) {
  const MessageList messages = {shared(sampleMessage("b")), shared(sampleMessage("a"))};
  MessageList seen;
  saveMessages(messages, context_, {}, [&](auto written) { seen.assign(written.begin(), written.end()); });
  EXPECT_EQ(seen, messages);
}

TEST_P(StoreOperations, SavingTheSameListTwiceLeavesTheSameNumberOfRowsAndAttachmentsAreReplaced) {
  const MessageList messages = {shared(sampleMessage("a")), shared(sampleMessage("b"))};
  saveMessages(messages, context_);
  const std::int64_t contents = count("content");
  EmailMessage again = sampleMessage("a");
  again.attachments.erase(again.attachments.begin());
  saveMessages({shared(again), messages[1]}, context_);
  EXPECT_EQ(count("message"), 2);
  EXPECT_EQ(count("attachment"), 5);
  EXPECT_EQ(count("content"), contents - 1);
  EXPECT_EQ(fetchAllMessages(context_)[0]->attachments, again.attachments);
}

TEST_P(StoreOperations, ARecordWithACategoryUpdatesTheStoredOneAndOneWithoutLeavesIt) {
  EmailMessage message = sampleMessage("a");
  message.category = "Travel";
  saveMessages({shared(message)}, context_);
  message.category = std::nullopt;
  message.subject = "New subject";
  saveMessages({shared(message)}, context_);
  EXPECT_EQ(fetchAllMessages(context_)[0]->category, Text("Travel"));
  EXPECT_EQ(fetchAllMessages(context_)[0]->subject, "New subject");
  message.category = "Work";
  saveMessages({shared(message)}, context_);
  EXPECT_EQ(fetchAllMessages(context_)[0]->category, Text("Work"));
}

TEST_P(StoreOperations, TwoRecordsWithTheSameIDInOneListGiveOneRowHoldingTheLaterRecord) {
  EmailMessage earlier = sampleMessage("a");
  EmailMessage later = sampleMessage("a", "L2");
  earlier.category = "Travel";
  later.attachments.pop_back();
  const MessageList stored =
      saveMessages({shared(earlier), shared(sampleMessage("b")), shared(later)}, context_);
  EXPECT_EQ(count("message"), 2);
  EXPECT_EQ(*stored[0], later);
  EXPECT_EQ(stored[0], stored[2]);
  const auto fetched = fetchMessages("L2", context_);
  ASSERT_THAT(fetched, SizeIs(1));
  later.category = "Travel";  // The later record knows none, so that of the earlier one stays.
  EXPECT_EQ(*fetched[0], later);
}

TEST_P(StoreOperations, AMessageOfAnotherLibraryMovesToTheOneImportedLast) {
  saveMessages({shared(sampleMessage("a", "L1")), shared(sampleMessage("b", "L1"))}, context_);
  saveMessages({shared(sampleMessage("a", "L2"))}, context_);
  EXPECT_THAT(ids(), ElementsAre("a", "b"));
  EXPECT_THAT(fetchMessages("L1", context_), SizeIs(1));
  EXPECT_EQ(fetchMessages("L2", context_)[0]->sourceLibraryName, "Library L2");
}

TEST_P(StoreOperations, MessagesComeNewestFirstAndUndatedOnesLast) {
  MessageList messages;
  const std::pair<const char*, std::optional<int>> dates[] = {
      {"undated", std::nullopt}, {"old", -5}, {"new", 20}, {"middle", 10}, {"undated too", std::nullopt}};
  for (const auto& [id, seconds] : dates) {
    EmailMessage message = sampleMessage(id);
    message.date = seconds ? std::optional<Date>(Date(std::chrono::seconds(*seconds))) : std::nullopt;
    messages.push_back(shared(message));
  }
  saveMessages(messages, context_);
  EXPECT_THAT(ids(), ElementsAre("new", "middle", "old", "undated", "undated too"));
}

TEST_P(StoreOperations, FetchingALibraryGivesItsMessagesAlone) {
  saveMessages(
      {shared(sampleMessage("a", "L1")), shared(sampleMessage("b", "L2")), shared(sampleMessage("c", "L1"))},
      context_);
  const auto fetched = fetchMessages("L1", context_);
  ASSERT_THAT(fetched, SizeIs(2));
  EXPECT_EQ(*fetched[1], [&] {
    EmailMessage expected = sampleMessage("c", "L1");
    expected.attachments = fetched[1]->attachments;
    return expected;
  }());
  EXPECT_EQ(fetched[1]->attachments[1].data.bytes(), std::string(70'000, 'p'));
  EXPECT_THAT(fetchMessages("unknown", context_), IsEmpty());
}

TEST_P(StoreOperations, DeletingALibraryLeavesNothingOfItBehind) {
  saveMessages({shared(sampleMessage("a", "L1")), shared(sampleMessage("b", "L2"))}, context_);
  deleteMessages("L1", context_);
  EXPECT_THAT(ids(), ElementsAre("b"));
  EXPECT_EQ(count("attachment"), 3);
  EXPECT_EQ(count("content"), 4);
  deleteMessages("L2", context_);
  EXPECT_EQ(count("attachment") + count("content") + count("contentRest") + count("source"), 0);
}

TEST_P(StoreOperations, DeletingAnUnknownLibraryIDSavesNothingNewAndDoesNotFail) {
  saveMessages({shared(sampleMessage("a"))}, context_);
  deleteMessages("unknown", context_);
  EXPECT_THAT(ids(), ElementsAre("a"));
}

TEST_P(StoreOperations, RenamingALibraryRenamesItInItsMessages) {
  saveMessages({shared(sampleMessage("a", "L1")), shared(sampleMessage("b", "L2"))}, context_);
  renameMessages("L1", "Renamed", context_);
  renameMessages("unknown", "Nothing", context_);
  EXPECT_EQ(fetchMessages("L1", context_)[0]->sourceLibraryName, "Renamed");
  EXPECT_EQ(fetchMessages("L2", context_)[0]->sourceLibraryName, "Library L2");
  // A message that comes later still brings its own name.
  saveMessages({shared(sampleMessage("c", "L1"))}, context_);
  EXPECT_EQ(fetchMessages("L1", context_)[0]->sourceLibraryName, "Renamed");
  EXPECT_EQ(fetchMessages("L1", context_)[1]->sourceLibraryName, "Library L1");
}

TEST_P(StoreOperations, AMessageIsFoundByItsIDAsItIsStored) {
  const EmailMessage message = sampleMessage("a");
  saveMessages({shared(message), shared(sampleMessage("b"))}, context_);
  const auto entity = fetchMessage("a", context_);
  ASSERT_TRUE(entity.has_value());
  EXPECT_EQ(entity->toData,
            R"([{"address":"bob@example.org","name":"Bob"},{"address":"carol@example.org"}])");
  EXPECT_EQ(makeEmailMessage(*entity), message);
  EXPECT_FALSE(fetchMessage("unknown", context_).has_value());
}

TEST_P(StoreOperations, ACategoryIsSetOnTheMessageOfTheIDOnly) {
  saveMessages({shared(sampleMessage("a")), shared(sampleMessage("b"))}, context_);
  updateCategory("a", Text("Travel"), context_);
  updateCategory("unknown", Text("Work"), context_);
  EXPECT_EQ(fetchMessage("a", context_)->category, Text("Travel"));
  EXPECT_EQ(fetchMessage("b", context_)->category, std::nullopt);
}

TEST_P(StoreOperations, AnEntityWhoseToDataIsEmptyBytesFailsToRead) {
  saveMessages({shared(sampleMessage("a")), shared(sampleMessage("b"))}, context_);
  execute("UPDATE PersistedEmailMessage SET toData = x'' WHERE id = 'b'");
  EXPECT_THROW((void)fetchAllMessages(context_), CodingFailure);
  EXPECT_THROW((void)fetchMessages("L1", context_), CodingFailure);
  EXPECT_THROW((void)makeEmailMessage(*fetchMessage("b", context_)), CodingFailure);
  EXPECT_NO_THROW((void)makeEmailMessage(*fetchMessage("a", context_)));
}

TEST_P(StoreOperations, EveryEntityHoldsAJSONArrayEvenForAnEmptyList) {
  EmailMessage message = sampleMessage("a");
  message.to.clear();
  message.cc.clear();
  message.labels.clear();
  message.references.clear();
  saveMessages({shared(message)}, context_);
  const auto entity = fetchMessage("a", context_);
  EXPECT_EQ(entity->toData, "[]");
  EXPECT_EQ(entity->ccData, "[]");
  EXPECT_EQ(entity->labelsData, "[]");
  EXPECT_EQ(entity->referencesData, "[]");
}

TEST_P(StoreOperations, ContentsOfDeletedRowsAreGoneAndNeverSomebodyElses) {
  const auto stored = saveMessages({shared(sampleMessage("a"))}, context_);
  const Content body = *stored[0]->plainBody;
  EXPECT_EQ(body.bytes(), "Plain body of a\n");
  deleteMessages("L1", context_);
  EmailMessage other = sampleMessage("b");
  other.plainBody = Content::ofBytes("Plain body of b\n");
  saveMessages({shared(other)}, context_);
  EXPECT_THROW((void)body.bytes(), StoreFailure);
}

TEST_P(StoreOperations, RecordsOfTheStoreCanBeSavedAgainUnderOtherIDs) {
  saveMessages({shared(sampleMessage("a")), shared(sampleMessage("b"))}, context_);
  auto stored = fetchAllMessages(context_);
  // Each new record refers to rows that the saving of the other one replaces.
  EmailMessage a = *stored[1];
  EmailMessage b = *stored[0];
  a.id = "a";
  b.id = "b";
  const MessageList saved = saveMessages({shared(a), shared(b)}, context_);
  EXPECT_EQ(saved[0]->plainBody->bytes(), "Plain body of b\n");
  EXPECT_EQ(saved[1]->plainBody->bytes(), "Plain body of a\n");
  EXPECT_EQ(count("content"), 8);
}

TEST_P(StoreOperations, AContentBeyondTheLimitOfTheDatabaseIsCutIntoPiecesAndReadWhole) {
  context_.store().setPieceSizeForTesting(1000);
  EmailMessage message = sampleMessage("a");
  std::string data(12'345, 'x');
  for (std::size_t index = 0; index < data.size(); ++index) {
    data[index] = static_cast<char>(index * 7);
  }
  message.attachments[0].data = Content::ofBytes(data);
  message.plainBody = Content::ofBytes(data.substr(0, 1000));
  message.htmlBody = Content::ofBytes(data.substr(0, 1001));
  const auto stored = saveMessages({shared(message)}, context_);
  EXPECT_EQ(*stored[0], message);
  EXPECT_EQ(*fetchAllMessages(context_)[0], message);
  EXPECT_GT(count("contentRest"), 12);
  deleteMessages("L1", context_);
  EXPECT_EQ(count("contentRest"), 0);
}

TEST_P(StoreOperations, ProgressCountsUpToTheWholeList) {
  MessageList messages;
  for (int index = 0; index < 300; ++index) {
    messages.push_back(shared(sampleMessage(std::to_string(index))));
  }
  std::vector<std::size_t> counts;
  saveMessages(messages, context_, [&](std::size_t saved) { counts.push_back(saved); });
  EXPECT_GT(counts.size(), 2U);
  EXPECT_TRUE(std::is_sorted(counts.begin(), counts.end()));
  EXPECT_EQ(counts.back(), 300U);
}

TEST_P(StoreOperations, AContentThatCannotBeReadFailsTheSaveAndLeavesItPending) {
  class Broken final : public ContentSource {
   public:
    [[nodiscard]] std::string bytes() const override { throw StoreFailure("broken"); }
    [[nodiscard]] std::uint64_t size() const override { return 5; }
  };
  EmailMessage broken = sampleMessage("b");
  broken.plainBody = Content(std::make_shared<Broken>());
  EXPECT_THROW(saveMessages({shared(sampleMessage("a")), shared(broken)}, context_), StoreFailure);
  EXPECT_EQ(count("message") + count("content"), 0);
  EXPECT_TRUE(context_.hasPendingChanges());
}

using StoreOperationsDeathTest = StoreOperations;
INSTANTIATE_TEST_SUITE_P(, StoreOperationsDeathTest, ::testing::Values(true),
                         [](const auto&) { return "InMemory"; });

TEST_P(StoreOperationsDeathTest, TwoStoredRowsWithTheSameIDStopTheProcess) {
  saveMessages({shared(sampleMessage("a")), shared(sampleMessage("b"))}, context_);
  execute("UPDATE PersistedEmailMessage SET id = 'a'");
  EXPECT_DEATH(saveMessages({shared(sampleMessage("a"))}, context_), "Duplicate values for key: 'a'");
}

}  // namespace
}  // namespace tidewrack
