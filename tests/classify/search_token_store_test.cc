#include "classify/search_token_store.h"

#include <algorithm>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "library/store_operations.h"

namespace tidewrack {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::shared_ptr<const EmailMessage> message(const std::string& id, const std::string& body,
                                            const std::string& library = "L1") {
  auto message = std::make_shared<EmailMessage>();
  message->id = id;
  message->sourceLibraryID = library;
  message->plainBody = Content::ofBytes(body);
  message->from.address = "ana@example.org";
  return message;
}

std::vector<std::pair<std::string, std::string>> sortedEntries(const FullTextSearchIndex& index) {
  std::vector<std::pair<std::string, std::string>> pairs;
  for (const auto& entry : index.entries()) {
    pairs.emplace_back(entry.token.string(), entry.messageID.string());
  }
  std::ranges::sort(pairs);
  return pairs;
}

/// A body that must not be read.
class UnreadBody final : public ContentSource {
 public:
  [[nodiscard]] std::string bytes() const override {
    ADD_FAILURE() << "a body was read";
    return {};
  }
  [[nodiscard]] std::uint64_t size() const override { return 0; }
};

class SearchTokenStoreTest : public ::testing::Test {
 protected:
  std::shared_ptr<ModelContainer> container_ = ModelContainer::inMemory();
  ModelContext context_ = container_->newContext();
  PersistedSearchTokenStore tokens_;
};

TEST_F(SearchTokenStoreTest, AStoreWithoutTokensGivesAnEmptyIndex) {
  EXPECT_TRUE(tokens_.load(context_).empty());
}

TEST_F(SearchTokenStoreTest, AnEmptyIndexCanBeStored) {
  FullTextSearchIndex index;
  tokens_.rewrite(index, context_);
  EXPECT_TRUE(tokens_.load(context_).empty());
}

TEST_F(SearchTokenStoreTest, AStoredIndexAnswersAsBeforeAndReadsNoBody) {
  const auto list =
      saveMessages({message("1", "alpha beta"), message("2", "beta"), message("3", "gamma")}, context_);
  FullTextSearchIndex index;
  index.build(list);
  tokens_.rewrite(index, context_);
  auto loaded = tokens_.load(context_);
  EXPECT_EQ(sortedEntries(loaded), sortedEntries(index));
  MessageList unread;
  for (const auto& each : list) {
    auto copy = std::make_shared<EmailMessage>(*each);
    copy->plainBody = Content(std::make_shared<UnreadBody>());
    unread.push_back(copy);
  }
  loaded.align(unread);
  loaded.update(unread);
  EXPECT_THAT(loaded.positionsMatching("beta"), ElementsAre(0U, 1U));
  EXPECT_THAT(loaded.positionsMatching("ana example gamma"), ElementsAre(2U));
}

TEST_F(SearchTokenStoreTest, WhateverHasChangedSinceALoadedIndexUpdatesToAFullBuild) {
  std::mt19937 random(11);
  const auto body = [&random] {
    return "common word" + std::to_string(random() % 9) + " token" + std::to_string(random() % 40);
  };
  int nextID = 0;
  MessageList list = fetchAllMessages(context_);
  FullTextSearchIndex index;
  for (int round = 0; round < 40; ++round) {
    // Mail comes, is imported again with another text, gets a category, or goes with its library.
    MessageList changes;
    for (int change = 0; change < 8; ++change) {
      const auto kind = random() % 3;
      const auto library = "L" + std::to_string(random() % 3);
      if (kind == 0 || list.empty()) {
        changes.push_back(message(std::to_string(nextID++), body(), library));
      } else if (kind == 1) {
        changes.push_back(message(list[random() % list.size()]->id.string(), body(), library));
      } else {
        updateCategory(list[random() % list.size()]->id.view(), Text("Work"), context_);
      }
    }
    saveMessages(changes, context_);
    if (random() % 8 == 0) {
      deleteMessages("L" + std::to_string(random() % 3), context_);
    }
    // A start: the tokens may be older than the messages, and are sometimes rewritten.
    list = fetchAllMessages(context_);
    std::ranges::shuffle(list, random);
    index = tokens_.load(context_);
    index.align(list);
    index.update(list);
    FullTextSearchIndex built;
    built.build(list);
    ASSERT_EQ(sortedEntries(index), sortedEntries(built)) << "round " << round;
    for (const auto* query : {"common", "word3", "word3 common", "token7", "nothing"}) {
      ASSERT_EQ(index.positionsMatching(query), built.positionsMatching(query)) << query;
    }
    if (random() % 2 == 0) {
      tokens_.rewrite(index, context_);
      ASSERT_EQ(index.positionsMatching("common"), built.positionsMatching("common"));
      ASSERT_EQ(sortedEntries(tokens_.load(context_)), sortedEntries(built)) << "round " << round;
    }
  }
}

TEST_F(SearchTokenStoreTest, TokensOfDeletedMessagesFindNothing) {
  auto list = saveMessages({message("1", "alpha", "L1"), message("2", "alpha", "L2")}, context_);
  FullTextSearchIndex index;
  index.build(list);
  tokens_.rewrite(index, context_);
  deleteMessages("L1", context_);
  auto loaded = tokens_.load(context_);
  loaded.align({list[1]});
  EXPECT_THAT(loaded.positionsMatching("alpha"), ElementsAre(0U));
  deleteMessages("L2", context_);
  EXPECT_TRUE(tokens_.load(context_).empty());
}

}  // namespace
}  // namespace tidewrack
