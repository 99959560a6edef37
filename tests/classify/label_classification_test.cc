#include "classify/label_classification.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tidewrack
