#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/world.h"

namespace tidewrack {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr const char* welcome = "welcome.sample@example.org";

/// One world with the sample archive, for commands that only read.
class SelectorsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    world_ = new World;
    library_ = columns(world_->run("import", sampleArchive()).output)[0];
  }
  static void TearDownTestSuite() {
    delete world_;
    world_ = nullptr;
  }

  template <typename... Arguments>
  static ProgramResult messages(const Arguments&... arguments) {
    return world_->run("messages", arguments...);
  }
  template <typename... Arguments>
  static std::vector<std::string> ids(const Arguments&... arguments) {
    const auto result = messages(arguments...);
    EXPECT_EQ(result.status, 0) << result.errors;
    std::vector<std::string> found;
    for (const auto& line : lines(result.output)) {
      found.push_back(columns(line)[0]);
    }
    return found;
  }
  template <typename... Arguments>
  static std::string count(const Arguments&... arguments) {
    return messages("--count", arguments...).output;
  }

  static World* world_;
  static std::string library_;
};
World* SelectorsTest::world_ = nullptr;
std::string SelectorsTest::library_;

TEST_F(SelectorsTest, countPrintsOnlyTheNumber) {
  EXPECT_EQ(count(), "14\n");
  EXPECT_EQ(count("--mailbox", "trash"), "0\n");
}

TEST_F(SelectorsTest, aMailboxHoldsTheLabelsOfEveryLanguage) {
  EXPECT_EQ(count("--mailbox", "inbox"), "10\n");
  EXPECT_EQ(ids("--mailbox", "starred").size(), 2U);
  EXPECT_THAT(ids("--mailbox", "important"), ::testing::SizeIs(3));  // Important, Importante.
  EXPECT_EQ(ids("--mailbox", "[Gmail]/Importante"), ids("--mailbox", "important"));
  EXPECT_THAT(ids("--mailbox", "drafts"), ElementsAre("draft.berth@example.org"));
}

TEST_F(SelectorsTest, aGmailCategoryHoldsTheLabelsOfEveryLanguage) {
  EXPECT_THAT(ids("--gmail-category", "updates"),
              ElementsAre("informe.2025@example.com", "sky.0107@example.net"));
  EXPECT_EQ(count("--gmail-category", "promotions"), "1\n");
}

TEST_F(SelectorsTest, aLabelIncludesWhatLiesBelowIt) {
  EXPECT_EQ(count("--label", "Travel"), "4\n");
  EXPECT_EQ(count("--label", "Travel/Lisbon"), "3\n");
  EXPECT_EQ(count("--label", "Trav"), "0\n");
  EXPECT_EQ(count("--label", "Proyectos/Año nuevo"), "1\n");
}

TEST_F(SelectorsTest, aCategoryNobodyGaveHasNoMessages) {
  EXPECT_EQ(count("--category", "Finance"), "0\n");
}

TEST_F(SelectorsTest, aSearchNeedsEveryWholeWord) {
  EXPECT_THAT(ids("--search", "lisbon april"), ::testing::SizeIs(3));
  EXPECT_EQ(ids("--search", "LISBON-APRIL"), ids("--search", "lisbon april"));
  EXPECT_EQ(count("--search", "lisb"), "0\n");
  EXPECT_EQ(count("--search", "proxima TEMPORADA"), "1\n");
}

TEST_F(SelectorsTest, aSearchOfOneLetterFindsNothingAndABlankOneEverything) {
  EXPECT_EQ(count("--search", "x"), "0\n");
  EXPECT_EQ(count("--search", "  "), "14\n");
}

TEST_F(SelectorsTest, textFiltersIgnoreCase) {
  EXPECT_EQ(count("--subject", "LISBON"), "3\n");
  EXPECT_EQ(count("--from", "mei tanaka <MEI"), "2\n");
  EXPECT_EQ(count("--body", "HOLA, nora"), "1\n");
  // HTML is searched as it is written.
  EXPECT_GE(ids("--body", "<html").size(), 1U);
}

TEST_F(SelectorsTest, aMessageWithNoDatePassesEveryDateRange) {
  EXPECT_THAT(ids("--since", "2026-01-18T09:00:01Z"), ::testing::SizeIs(1));
  EXPECT_EQ(columns(lines(messages("--since", "2030-01-01").output)[0])[1], "");
}

TEST_F(SelectorsTest, datesAreInclusiveInstantsOrWholeDays) {
  EXPECT_THAT(ids("--until", "2026-01-05"), ElementsAre(welcome, ::testing::_));
  EXPECT_THAT(ids("--until", "2026-01-05T08:00:00Z"), ElementsAre(welcome, ::testing::_));
  EXPECT_EQ(count("--until", "2026-01-05T07:59:59Z"), "1\n");
  EXPECT_EQ(count("--since=2026-01-09", "--until=2026-01-09"), "4\n");
  EXPECT_EQ(count("--until", "+292278994-08-17"), "14\n");  // The last day there is, which is no whole one.
}

TEST_F(SelectorsTest, attachmentsAndTheirTypes) {
  const auto with = ids("--attachments", "with");
  EXPECT_THAT(with, ::testing::Contains("informe.2025@example.com"));
  EXPECT_EQ(with.size() + ids("--attachments", "without").size(), 14U);
  EXPECT_THAT(ids("--attachments", "with", "--attachment-type", "PDF"),
              ElementsAre("informe.2025@example.com"));
  EXPECT_EQ(count("--attachments", "any", "--attachment-type", "pdf"), "14\n");
}

TEST_F(SelectorsTest, sizesConversationsAndHTML) {
  EXPECT_EQ(ids("--size", "small").size() + ids("--size", "medium").size() + ids("--size", "large").size(),
            14U);
  EXPECT_EQ(count("--size", "any"), "14\n");
  EXPECT_EQ(count("--in-conversations"), "14\n");
  const auto html = ids("--html-only");
  EXPECT_THAT(html, ::testing::Contains("sky.0107@example.net"));
  EXPECT_LT(html.size(), 14U);
}

TEST_F(SelectorsTest, allThatAreGivenMustHold) {
  EXPECT_EQ(count("--library", library_, "--mailbox", "inbox", "--label", "Travel"), "3\n");
  EXPECT_EQ(count("--label", "Travel", "--mailbox", "inbox", "--from", "oskar"), "1\n");
  EXPECT_EQ(count("--mailbox", "sent", "--search", "lisbon", "--subject", "re:"), "1\n");
  EXPECT_EQ(messages("--library", "unknown", "--mailbox", "inbox").status, 1);
}

TEST_F(SelectorsTest, aChoiceIsPrintedInEveryForm) {
  const auto result = messages("--digest", "--subject", "berth");
  EXPECT_EQ(json::parse(result.output)["id"], "draft.berth@example.org");
}

TEST_F(SelectorsTest, classifyCountsTheStoreAsItCountsTheArchive) {
  const auto stored = world_->run("classify");
  EXPECT_EQ(stored.status, 0) << stored.errors;
  EXPECT_EQ(stored.output, world_->run("classify", sampleArchive()).output);
}

json named(const json& list, const char* key, const std::string& name) {
  for (const auto& entry : list) {
    if (entry[key] == name) {
      return entry;
    }
  }
  return nullptr;
}

TEST(ClassifyTest, printsMailboxesTabsAndTheLabelTree) {
  const World world;
  const auto result = world.run("classify", sampleArchive());
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_FALSE(std::filesystem::exists(world.folder() / "data"));
  ASSERT_EQ(lines(result.output).size(), 1U);
  const auto classification = json::parse(result.output);
  const auto& mailboxes = classification["systemMailboxes"];
  EXPECT_EQ(mailboxes[0], (json{{"mailbox", "inbox"}, {"count", 10}}));
  EXPECT_EQ(mailboxes[1]["mailbox"], "starred");
  EXPECT_TRUE(named(mailboxes, "mailbox", "trash").is_null());
  EXPECT_EQ(named(classification["gmailCategories"], "category", "updates")["count"], 2);
  const auto travel = named(classification["userLabelTree"], "path", "Travel");
  EXPECT_EQ(travel["count"], 4);
  EXPECT_EQ(travel["directCount"], 3);
  EXPECT_EQ(travel["name"], "Travel");
  EXPECT_EQ(travel["children"][0], (json{{"path", "Travel/Lisbon"},
                                         {"name", "Lisbon"},
                                         {"count", 3},
                                         {"directCount", 3},
                                         {"children", json::array()}}));
}

TEST(ClassifyTest, addsUpSeveralFilesAndTellsThoseThatCannotBeRead) {
  const World world;
  const auto one = world.file("one.mbox", "From x\nMessage-ID: <1@x>\nX-Gmail-Labels: Inbox,Work\n\nText\n");
  const auto two = world.file("two.mbox", "From x\nMessage-ID: <1@x>\nX-Gmail-Labels: Inbox,Work\n\nText\n");
  const auto missing = (world.folder() / "missing.mbox").string();
  const auto result = world.run("classify", one, missing, two);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, ::testing::HasSubstr("missing.mbox"));
  const auto classification = json::parse(result.output);
  // Two messages with one id: counted twice in a mailbox, once under a label.
  EXPECT_EQ(classification["systemMailboxes"][0]["count"], 2);
  EXPECT_EQ(classification["userLabelTree"][0]["count"], 1);
}

TEST(ClassifyTest, anEmptyStoreGivesThreeEmptyLists) {
  const World world;
  EXPECT_EQ(json::parse(world.run("classify").output), (json{{"systemMailboxes", json::array()},
                                                             {"gmailCategories", json::array()},
                                                             {"userLabelTree", json::array()}}));
}

TEST(TokenizeTest, printsTheWordsOfATextOneALine) {
  const World world;
  EXPECT_THAT(lines(world.run("tokenize", "José-María, J. Mail mail").output),
              ElementsAre("jose", "maria", "mail", "mail"));
  EXPECT_THAT(world.run("tokenize", "a . 1").output, IsEmpty());
}

}  // namespace
}  // namespace tidewrack
