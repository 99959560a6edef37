#include "classify/label_classification.h"

#include <map>
#include <random>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "platform/unicode.h"

namespace tidewrack {
namespace {

MessageList messages(const std::vector<std::pair<const char*, std::vector<Text>>>& labelsOfIDs) {
  MessageList list;
  for (const auto& [id, labels] : labelsOfIDs) {
    auto message = std::make_shared<EmailMessage>();
    message->id = id;
    message->labels = labels;
    list.push_back(message);
  }
  return list;
}

const LabelClassification::UserLabelNode* node(const std::vector<LabelClassification::UserLabelNode>& nodes,
                                               std::string_view path) {
  for (const auto& candidate : nodes) {
    if (candidate.path == path) {
      return &candidate;
    }
    if (const auto* below = node(candidate.children, path)) {
      return below;
    }
  }
  return nullptr;
}

TEST(LabelClassification, AnEmptyListGivesThreeEmptyLists) {
  EXPECT_EQ(LabelClassification::classify({}), LabelClassification());
}

TEST(LabelClassification, TwoSiblingLabelsOnOneMessageCountOnceInTheirParent) {
  const auto result = LabelClassification::classify(messages({{"1", {"Work/Done", "Work/Todo"}}}));
  ASSERT_EQ(result.userLabelTree.size(), 1U);
  const auto& work = result.userLabelTree[0];
  EXPECT_EQ(work.path, "Work");
  EXPECT_EQ(work.count, 1);
  EXPECT_EQ(work.directCount, 0);
  ASSERT_EQ(work.children.size(), 2U);
  EXPECT_EQ(work.children[0].path, "Work/Done");
  EXPECT_EQ(work.children[0].name, "Done");
  EXPECT_EQ(work.children[0].count, 1);
  EXPECT_EQ(work.children[1].count, 1);
}

TEST(LabelClassification, ALabelAndItsSubLabelOnOneMessageCountOnce) {
  const auto result = LabelClassification::classify(messages({{"1", {"Work", "Work/Done"}}}));
  EXPECT_EQ(result.userLabelTree.at(0).count, 1);
  EXPECT_EQ(result.userLabelTree.at(0).directCount, 1);
}

TEST(LabelClassification, ComponentsAreTrimmedAndEmptyOnesDropped) {
  const auto result = LabelClassification::classify(messages({{"1", {" Work / Done/ "}}}));
  ASSERT_NE(node(result.userLabelTree, "Work/Done"), nullptr);
}

TEST(LabelClassification, LabelsOfOnlySlashesAreSkipped) {
  EXPECT_EQ(LabelClassification::classify(messages({{"1", {"/", " / "}}})), LabelClassification());
}

TEST(LabelClassification, AMessageWithOnlyNoiseAddsNothing) {
  EXPECT_EQ(LabelClassification::classify(messages({{"1", {"Unread", "$NotJunk", ""}}})),
            LabelClassification());
}

TEST(LabelClassification, TwoMessagesOfOneIdCountTwiceInAMailboxAndOnceInALabel) {
  const auto result =
      LabelClassification::classify(messages({{"1", {"Inbox", "Work"}}, {"1", {"Inbox", "Work"}}}));
  EXPECT_EQ(result.systemMailboxes.at(0).count, 2);
  EXPECT_EQ(result.userLabelTree.at(0).count, 1);
}

TEST(LabelClassification, ASubLabelOfInboxIsAUserLabel) {
  const auto result = LabelClassification::classify(messages({{"1", {"Inbox/Sub"}}}));
  EXPECT_TRUE(result.systemMailboxes.empty());
  EXPECT_EQ(result.userLabelTree.at(0).path, "Inbox");
}

TEST(LabelClassification, TwoSpellingsOfAMailboxOnOneMessageCountOnce) {
  const auto result = LabelClassification::classify(messages({{"1", {"Inbox", "Recibidos"}}}));
  EXPECT_EQ(result.systemMailboxes.at(0).count, 1);
}

TEST(LabelClassification, AnUnknownLabelKeepsItsClientPrefixAsRoot) {
  const auto result = LabelClassification::classify(messages({{"1", {"[Gmail]/Foo"}}}));
  EXPECT_EQ(result.userLabelTree.at(0).path, "[Gmail]");
  EXPECT_EQ(result.userLabelTree.at(0).children.at(0).name, "Foo");
}

TEST(LabelClassification, BucketsComeInTheOrderOfTheSidebar) {
  const auto result = LabelClassification::classify(
      messages({{"1", {"Trash", "Sent", "Inbox", "Forums", "Updates", "Personal"}}}));
  ASSERT_EQ(result.systemMailboxes.size(), 3U);
  EXPECT_EQ(result.systemMailboxes[0].mailbox, GmailSystemMailbox::inbox);
  EXPECT_EQ(result.systemMailboxes[1].mailbox, GmailSystemMailbox::sent);
  EXPECT_EQ(result.systemMailboxes[2].mailbox, GmailSystemMailbox::trash);
  ASSERT_EQ(result.gmailCategories.size(), 3U);
  EXPECT_EQ(result.gmailCategories[0].category, GmailCategoryFolder::personal);
  EXPECT_EQ(result.gmailCategories[1].category, GmailCategoryFolder::updates);
}

TEST(LabelClassification, RootsAreSortedWithoutRegardToCase) {
  const auto result = LabelClassification::classify(messages({{"1", {"zebra", "Apple", "banana"}}}));
  ASSERT_EQ(result.userLabelTree.size(), 3U);
  EXPECT_EQ(result.userLabelTree[0].path, "Apple");
  EXPECT_EQ(result.userLabelTree[1].path, "banana");
  EXPECT_EQ(result.userLabelTree[2].path, "zebra");
}

TEST(LabelClassification, ALabelOfAMillionComponentsIsOneRoot) {
  std::string deep = "deep";
  while (deep.size() < 4'000'000) {
    deep += "/abc";
  }
  const auto result = LabelClassification::classify(messages({{"1", {Text(deep), "Work"}}}));
  ASSERT_EQ(result.userLabelTree.size(), 2U);
  EXPECT_EQ(result.userLabelTree[0].path, deep);
  EXPECT_EQ(result.userLabelTree[0].name, "abc");
  EXPECT_EQ(result.userLabelTree[0].count, 1);
  EXPECT_TRUE(result.userLabelTree[0].children.empty());
}

TEST(LabelClassification, AHundredLevelsAreATree) {
  std::string path = "1";
  for (int level = 2; level <= 100; ++level) {
    path += "/" + std::to_string(level);
  }
  const auto result = LabelClassification::classify(messages({{"1", {Text(path)}}}));
  int levels = 0;
  for (const auto* nodes = &result.userLabelTree; !nodes->empty(); nodes = &nodes->front().children) {
    EXPECT_EQ(nodes->front().name, std::to_string(++levels));
    EXPECT_EQ(nodes->front().directCount, levels == 100 ? 1 : 0);
  }
  EXPECT_EQ(levels, 100);
}

// The counts as the words have them: sets of ids for each path.
using Counts = std::map<std::string, std::pair<std::int64_t, std::int64_t>>;  // count and directCount

Counts countsBySets(const MessageList& list) {
  std::map<std::string, std::set<std::string>> direct;
  std::map<std::string, std::set<std::string>> total;
  for (const auto& message : list) {
    for (const auto& label : message->labels) {
      if (isNoiseLabel(label) || matchingSystemMailbox(label) || matchingCategoryFolder(label)) {
        continue;
      }
      std::string path;
      std::string rest = label.string() + "/";
      for (auto slash = rest.find('/'); slash != std::string::npos; slash = rest.find('/')) {
        const std::string component(trimWhitespaceAndNewlines(rest.substr(0, slash)));
        rest.erase(0, slash + 1);
        if (!component.empty()) {
          path += (path.empty() ? "" : "/") + component;
          total[path].insert(message->id.string());
        }
      }
      if (!path.empty()) {
        direct[path].insert(message->id.string());
      }
    }
  }
  Counts counts;
  for (const auto& [path, ids] : total) {
    counts[path] = {static_cast<std::int64_t>(ids.size()), static_cast<std::int64_t>(direct[path].size())};
  }
  return counts;
}

void addCounts(const std::vector<LabelClassification::UserLabelNode>& nodes, Counts& counts) {
  for (const auto& node : nodes) {
    counts[node.path.string()] = {node.count, node.directCount};
    addCounts(node.children, counts);
  }
}

TEST(LabelClassification, CountsEqualThoseOfSetsOfIDsForAnyMessages) {
  const std::vector<Text> labels = {"Inbox",  "Work",  "Work/Done", "Work/Todo", " Work / Done",
                                    "work",   "a/b/c", "a/b",       "a",         "b",
                                    "Unread", "/",     "Sent/2019", "Social",    "x/y/z/a/b"};
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::pair<const char*, std::vector<Text>>> content;
    static const char* const ids[] = {"1", "2", "3", "4", "5", "6", "7", "8"};
    for (auto count = random() % 20; count > 0; --count) {
      std::vector<Text> own;
      for (auto i = random() % 4; i > 0; --i) {
        own.push_back(labels[random() % labels.size()]);
      }
      content.emplace_back(ids[random() % 8], own);
    }
    const auto list = messages(content);
    Counts counts;
    addCounts(LabelClassification::classify(list).userLabelTree, counts);
    ASSERT_EQ(counts, countsBySets(list));
  }
}

}  // namespace
}  // namespace tidewrack
