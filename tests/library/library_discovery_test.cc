#include "library/library_discovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "library/message_store.h"
#include "library/sample_messages.h"
#include "library/store_operations.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class LibraryDiscovery : public ::testing::Test {
 protected:
  LibraryDiscovery() : context_(ModelContainer::inMemory()->newContext()) {}

  /// A message of library "L1" of which only the identity is given.
  static EmailMessage message(const std::string& id) {
    EmailMessage result = sampleMessage(id);
    result.attachments.clear();
    return result;
  }
  void save(std::vector<EmailMessage> messages) {
    MessageList list;
    for (auto& each : messages) {
      list.push_back(shared(each));
    }
    saveMessages(list, context_);
  }

  ModelContext context_;
};

TEST_F(LibraryDiscovery, AnEmptyStoreGivesAnEmptyList) {
  EXPECT_THAT(discoverLibraries({}, context_), IsEmpty());
}

TEST_F(LibraryDiscovery, AStoreWhereEveryIDIsKnownGivesAnEmptyList) {
  save({message("a"), message("b")});
  EXPECT_THAT(discoverLibraries({"L1"}, context_), IsEmpty());
}

TEST_F(LibraryDiscovery, ALibraryIsSummedUpFromItsMessages) {
  EmailMessage a = sampleMessage("a");
  EmailMessage b = sampleMessage("b");
  a.date = Date(100s);
  b.date = Date(50s);
  b.conversationID = a.conversationID;
  b.from.address = "zoe@example.org";
  b.category = "Travel";
  EmailMessage c = message("c");
  c.date = std::nullopt;
  c.from.address = "";
  c.conversationID = "";
  c.category = "";
  save({a, b, c, sampleMessage("other", "known")});
  const auto found = discoverLibraries({"known"}, context_);
  ASSERT_THAT(found, SizeIs(1));
  DiscoveredLibrary expected;
  expected.id = "L1";
  expected.displayName = "Library L1";
  expected.messageCount = 3;
  expected.earliestDate = Date(50s);
  expected.latestDate = Date(100s);
  expected.uniqueSendersCount = 2;
  expected.uniqueConversationsCount = 1;
  expected.attachmentCount = 6;
  expected.labels = {"Añejo/2024", "Inbox", "a \"quoted\" \\label"};
  std::sort(expected.labels.begin(), expected.labels.end());
  expected.categories = {"Travel"};
  EXPECT_EQ(found[0], expected);
}

TEST_F(LibraryDiscovery, MessagesWithAnEmptySourceLibraryIDAreIgnored) {
  EmailMessage a = message("a");
  a.sourceLibraryID = "";
  save({a});
  EXPECT_THAT(discoverLibraries({}, context_), IsEmpty());
}

TEST_F(LibraryDiscovery, ALibraryWhoseMessagesAllLackADateHasNeitherDateAndSortsLast) {
  EmailMessage undated = message("a");
  undated.sourceLibraryID = "undated";
  undated.date = std::nullopt;
  EmailMessage old = message("b");
  old.sourceLibraryID = "old";
  old.date = Date(-100s);
  EmailMessage recent = message("c");
  recent.sourceLibraryID = "recent";
  save({undated, old, recent});
  const auto found = discoverLibraries({}, context_);
  ASSERT_THAT(found, SizeIs(3));
  EXPECT_EQ(found[0].id, "recent");
  EXPECT_EQ(found[1].id, "old");
  EXPECT_EQ(found[2].id, "undated");
  EXPECT_FALSE(found[2].earliestDate || found[2].latestDate);
}

TEST_F(LibraryDiscovery, TheSameLabelOnManyMessagesCountsOnceAndTheLabelListIsSorted) {
  EmailMessage a = message("a");
  a.labels = {"b", "a"};
  EmailMessage b = message("b");
  b.labels = {"c", "b", "B"};
  save({a, b});
  EXPECT_THAT(discoverLibraries({}, context_)[0].labels, ElementsAre("B", "a", "b", "c"));
}

TEST_F(LibraryDiscovery, AddressesDifferingOnlyInCaseCountAsTwoSenders) {
  EmailMessage a = message("a");
  a.from.address = "x@example.org";
  EmailMessage b = message("b");
  b.from.address = "X@example.org";
  save({a, b});
  EXPECT_EQ(discoverLibraries({}, context_)[0].uniqueSendersCount, 2);
}

TEST_F(LibraryDiscovery, ARowWithDamagedLabelsDataStillCountsInMessageCount) {
  EmailMessage a = message("a");
  a.labels = {"kept"};
  save({a, message("b")});
  {
    MessageStore::Writing writing(context_.store());
    writing.with([](SQLiteConnection& connection) {
      connection.execute("UPDATE PersistedEmailMessage SET labelsData = x'' WHERE id = 'b'");
    });
  }
  const auto found = discoverLibraries({}, context_);
  EXPECT_EQ(found[0].messageCount, 2);
  EXPECT_THAT(found[0].labels, ElementsAre("kept"));
}

TEST_F(LibraryDiscovery, TheNameIsThatOfTheFirstMessageOrTheIDWhenThatIsEmpty) {
  EmailMessage a = message("a");
  a.sourceLibraryName = "First name";
  EmailMessage b = message("b");
  b.sourceLibraryName = "Second name";
  EmailMessage c = message("c");
  c.sourceLibraryID = "L2";
  c.sourceLibraryName = "";
  c.date = Date(0s);
  save({a, b, c});
  const auto found = discoverLibraries({}, context_);
  EXPECT_EQ(found[0].displayName, "First name");
  EXPECT_EQ(found[1].displayName, "L2");
}

}  // namespace
}  // namespace tidewrack
