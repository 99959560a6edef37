#include "library/search_token_rows.h"

#include <csignal>
#include <map>
#include <random>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "library/message_store.h"
#include "library/sample_messages.h"
#include "library/store_operations.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Words = std::map<std::string, std::vector<std::uint32_t>>;

class SearchTokenRows : public ::testing::Test {
 protected:
  SearchTokenRows() { openAgain(); }

  void openAgain() {
    context_.reset();
    container_.reset();
    container_ = ModelContainer::open(file());
    context_.emplace(container_->newContext());
  }
  [[nodiscard]] std::filesystem::path file() const { return folder_ / "default.store"; }

  void save(const std::vector<std::string>& ids, const std::string& library = "L1") {
    MessageList messages;
    for (const auto& id : ids) {
      messages.push_back(shared(sampleMessage(id, library)));
    }
    saveMessages(std::move(messages), *context_);
  }
  static void write(const Words& words, const std::vector<std::string>& ids, ModelContext& context,
                    int rules = 1) {
    const std::vector<Text> messageIDs(ids.begin(), ids.end());
    writeSearchTokens(
        rules, messageIDs,
        [&words](const SearchTokenVisitor& visit) {
          for (const auto& [word, numbers] : words) {
            visit(word, numbers);
          }
        },
        context);
  }
  void write(const Words& words, const std::vector<std::string>& ids, int rules = 1) {
    write(words, ids, *context_, rules);
  }

  /// What reading gives, with the numbers turned into ids.
  std::map<std::string, std::vector<std::string>> read(int rules = 1) {
    Words words;
    const auto ids = readSearchTokens(
        rules,
        [&words](std::string_view token, std::span<const std::uint32_t> numbers) {
          auto& all = words[std::string(token)];
          all.insert(all.end(), numbers.begin(), numbers.end());
        },
        *context_);
    std::map<std::string, std::vector<std::string>> result;
    for (const auto& [word, numbers] : words) {
      for (const auto number : numbers) {
        if (!ids[number].empty()) {
          result[word].push_back(ids[number].string());
        }
      }
    }
    return result;
  }

  /// What SQL sees, through a connection that knows nothing of this program.
  std::vector<std::string> pairs(const std::string& where = "1") {
    SQLiteConnection shell(file(), SQLiteConnection::Mode::readOnly);
    std::vector<std::string> rows;
    auto statement = shell.prepare("SELECT id, token, messageID FROM PersistedSearchToken WHERE " + where +
                                   " ORDER BY id");
    while (statement.step()) {
      EXPECT_EQ(statement.bytes(0), std::string(statement.bytes(1)) + ' ' + std::string(statement.bytes(2)));
      rows.emplace_back(statement.bytes(0));
    }
    return rows;
  }
  void execute(const std::string& sql) {
    MessageStore::Writing writing(context_->store());
    writing.with([&](SQLiteConnection& connection) { connection.execute(sql); });
  }

  TemporaryFolder folder_;
  std::shared_ptr<ModelContainer> container_;
  std::optional<ModelContext> context_;
};

TEST_F(SearchTokenRows, AnEmptyStoreHasNone) {
  EXPECT_THAT(read(), IsEmpty());
  EXPECT_THAT(pairs(), IsEmpty());
}

TEST_F(SearchTokenRows, WhatWasWrittenIsReadAgainAndSeenBySQL) {
  save({"a", "b", "c"});
  write({{"beta", {1}}, {"common", {0, 1, 2}}, {"два", {0, 2}}}, {"a", "b", "c"});
  openAgain();
  EXPECT_EQ(read()["common"], (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(read()["два"], (std::vector<std::string>{"a", "c"}));
  EXPECT_THAT(read(), SizeIs(3));
  EXPECT_THAT(pairs(), ElementsAre("beta b", "common a", "common b", "common c", "два a", "два c"));
  EXPECT_THAT(pairs("token = 'common' AND messageID <> 'b'"), ElementsAre("common a", "common c"));
}

TEST_F(SearchTokenRows, AnotherWritingReplacesEverything) {
  save({"a", "b"});
  write({{"old", {0, 1}}}, {"a", "b"});
  write({{"new", {0}}}, {"b"});
  EXPECT_THAT(pairs(), ElementsAre("new b"));
  EXPECT_THAT(read(), ElementsAre(std::pair("new", std::vector<std::string>{"b"})));
}

TEST_F(SearchTokenRows, AMessageThatTheStoreDoesNotHoldIsLeftOut) {
  save({"a", "b"});
  write({{"word", {0, 1, 2, 3}}}, {"a", "unknown", "b", "a"});
  EXPECT_THAT(pairs(), ElementsAre("word a", "word b"));
}

TEST_F(SearchTokenRows, DeletedMessagesLeaveNoPairBehind) {
  save({"a", "b"}, "L1");
  save({"c"}, "L2");
  write({{"word", {0, 1, 2}}}, {"a", "b", "c"});
  deleteMessages("L1", *context_);
  EXPECT_THAT(pairs(), ElementsAre("word c"));
  // Not even when new messages take the places of the old ones.
  save({"d", "e"}, "L3");
  EXPECT_THAT(pairs(), ElementsAre("word c"));
  execute("DELETE FROM PersistedEmailMessage");
  EXPECT_THAT(pairs(), IsEmpty());
  EXPECT_THAT(read(), IsEmpty());
}

TEST_F(SearchTokenRows, AMessageWhoseTextChangesLosesItsPairsAndAnotherKeepsThem) {
  save({"a", "b", "c"});
  write({{"word", {0, 1, 2}}}, {"a", "b", "c"});
  save({"a"}, "L2");  // Imported again.
  EXPECT_THAT(pairs(), ElementsAre("word b", "word c"));
  execute("UPDATE PersistedEmailMessage SET htmlBody = 'other' WHERE id = 'b'");
  EXPECT_THAT(pairs(), ElementsAre("word c"));
}

TEST_F(SearchTokenRows, WordsBehindThoseOfADeletedMessageStay) {
  save({"a"}, "L1");
  save({"z"}, "L2");
  write({{"common", {0, 1}}, {"last", {1}}, {"word", {0, 1}}}, {"a", "z"});
  deleteMessages("L2", *context_);
  EXPECT_THAT(read(), ElementsAre(std::pair("common", std::vector<std::string>{"a"}),
                                  std::pair("word", std::vector<std::string>{"a"})));
  EXPECT_THAT(pairs(), ElementsAre("common a", "word a"));
}

TEST_F(SearchTokenRows, ACategoryOrALibraryNameIsNoText) {
  save({"a"});
  write({{"word", {0}}}, {"a"});
  updateCategory("a", Text("Work"), *context_);
  renameMessages("L1", "Renamed", *context_);
  EXPECT_THAT(pairs(), ElementsAre("word a"));
}

TEST_F(SearchTokenRows, WordsOfOtherRulesAreAsGoodAsNone) {
  save({"a"});
  write({{"word", {0}}}, {"a"}, 1);
  EXPECT_THAT(read(2), IsEmpty());
  EXPECT_THAT(read(1), SizeIs(1));
}

TEST_F(SearchTokenRows, LongListsAndLongWordsSurvive) {
  constexpr std::uint32_t count = 4000;
  std::vector<std::string> ids;
  std::vector<std::uint32_t> all;
  std::vector<std::uint32_t> some;
  MessageList messages;
  std::mt19937 random(3);
  for (std::uint32_t i = 0; i < count; ++i) {
    auto message = std::make_shared<EmailMessage>();
    message->id = std::to_string(i);
    messages.push_back(message);
    ids.push_back(std::to_string(i));
    all.push_back(i);
    if (random() % 17 == 0) {
      some.push_back(i);
    }
  }
  saveMessages(std::move(messages), *context_);
  const std::string longWord(20'000, 'w');
  const Words words = {{"all", all}, {"some", some}, {longWord, {7, count - 1}}};
  write(words, ids);
  const auto stored = read();
  EXPECT_THAT(stored.at("all"), SizeIs(count));
  EXPECT_THAT(stored.at("some"), SizeIs(some.size()));
  EXPECT_EQ(stored.at("some").back(), std::to_string(some.back()));
  EXPECT_THAT(stored.at(longWord), ElementsAre("7", "3999"));
  EXPECT_THAT(pairs("token = 'all'"), SizeIs(count));
  EXPECT_THAT(pairs("token = 'some'"), SizeIs(some.size()));
}

TEST_F(SearchTokenRows, ADamagedRowGivesTheWordsBeforeTheDamage) {
  save({"a", "b", "c"});
  write({{"word", {0, 1, 2}}}, {"a", "b", "c"});
  write({{"alpha", {0, 1}}, {"word", {0, 1, 2}}}, {"a", "b", "c"});
  for (const auto* rest : {"99999999999999999999]}", "1,x]}", "1,", "1,0]}", "1,-1]}", "\",", "1", ""}) {
    execute("UPDATE searchWords SET words = '{\"alpha\":[0,1],\"word\":[" + std::string(rest) + "'");
    EXPECT_THAT(read(), ElementsAre(std::pair("alpha", std::vector<std::string>{"a", "b"}))) << rest;
  }
  for (const auto* row : {"", "{}", "[]", "{\"alpha", "{\"alpha\":1}", "{\"alpha\":[-1]}"}) {
    execute("UPDATE searchWords SET words = '" + std::string(row) + "'");
    EXPECT_THAT(read(), IsEmpty()) << row;
  }
}

TEST_F(SearchTokenRows, AProcessKilledInTheMiddleOfAWritingLeavesTheOldTokensWhole) {
  save({"a", "b"});
  write({{"old", {0, 1}}}, {"a", "b"});
  context_.reset();
  container_.reset();
  const pid_t process = ::fork();
  if (process == 0) {
    const auto container = ModelContainer::open(file());
    ModelContext context = container->newContext();
    const std::vector<Text> ids = {"a", "b"};
    writeSearchTokens(
        1, ids,
        [](const SearchTokenVisitor& visit) {
          for (int i = 100'000; i < 200'000; ++i) {
            const std::vector<std::uint32_t> numbers = {0, 1};
            visit("new" + std::to_string(i), numbers);
          }
          ::kill(::getpid(), SIGKILL);
        },
        context);
    ::_exit(0);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(process, &status, 0), process);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  openAgain();
  EXPECT_THAT(pairs(), ElementsAre("old a", "old b"));
  EXPECT_THAT(read()["old"], ElementsAre("a", "b"));
}

TEST_F(SearchTokenRows, AFullDiskLeavesTheOldTokensWhole) {
  save({"a"});
  write({{"old", {0}}}, {"a"});
  context_->store().limitPagesForTesting(1);
  Words words;
  for (int i = 0; i < 50'000; ++i) {
    words["new" + std::to_string(i)] = {0};
  }
  EXPECT_THROW(write(words, {"a"}), StoreFailure);
  EXPECT_THAT(pairs(), ElementsAre("old a"));
}

}  // namespace
}  // namespace tidewrack
