#include "classify/label_sets.h"

#include <random>

#include <gtest/gtest.h>

#include "classify/label_classification.h"

namespace tidewrack {
namespace {

TEST(LabelSets, EqualListsHaveOneNumberWhateverTextsTheyAreMadeOf) {
  LabelSets sets;
  const auto first = sets.numberOf({"Inbox", "Work"});
  EXPECT_EQ(sets.numberOf({Text("Inbox"), Text("Work")}), first);
  EXPECT_NE(sets.numberOf({"Work"}), first);
  EXPECT_NE(sets.numberOf({}), first);
  EXPECT_EQ(sets.numberOf({""}), sets.numberOf({})) << "an empty label says nothing";
  EXPECT_EQ(sets.size(), 3U);
}

TEST(LabelSets, ANoiseLabelIsSelectedByItsMailboxButNotCountedInIt) {
  LabelSets sets;
  const auto& set = sets[sets.numberOf({"\\Inbox"})];
  EXPECT_EQ(set.mailboxes, 0U);
  EXPECT_EQ(set.matchingMailboxes, 1U);
}

TEST(LabelSets, ManyListsKeepTheirNumbers) {
  LabelSets sets;
  std::vector<std::vector<Text>> lists;
  for (int i = 0; i < 3000; ++i) {
    lists.push_back({Text("a" + std::to_string(i % 100)), Text("b/" + std::to_string(i))});
    EXPECT_EQ(sets.numberOf(lists.back()), static_cast<LabelSets::Number>(i));
  }
  for (std::size_t i = 0; i < lists.size(); ++i) {
    EXPECT_EQ(sets.numberOf(lists[i]), i);
  }
  sets.sortNodes();
  EXPECT_EQ(sets.sortedNodes().size(), 3101U);
}

TEST(LabelTally, MessagesThatComeAndGoLeaveWhatAFullClassificationGives) {
  const std::vector<Text> labels = {"Inbox", "Recibidos", "Work",   "Work/Done", "Work / Done", "a/b/c",
                                    "a",     "Social",    "Unread", "/",         "\\Inbox"};
  std::mt19937 random(11);
  LabelSets sets;
  LabelTally tally;
  MessageList list;
  for (int round = 0; round < 1000; ++round) {
    if (list.empty() || random() % 2 == 0) {
      auto message = std::make_shared<EmailMessage>();
      message->id = std::to_string(random() % 20);
      for (auto count = random() % 4; count > 0; --count) {
        message->labels.push_back(labels[random() % labels.size()]);
      }
      tally.add(sets, sets.numberOf(message->labels), 1);
      list.push_back(message);
    } else {
      const auto at = list.begin() + static_cast<std::ptrdiff_t>(random() % list.size());
      tally.add(sets, sets.numberOf((*at)->labels), -1);
      list.erase(at);
    }
    sets.sortNodes();
    // Every message may be told as one of a repeated id; those that are alone take nothing back.
    std::vector<LabelTally::Repeated> repeated;
    for (const auto& message : list) {
      repeated.push_back({message->id, sets.numberOf(message->labels)});
    }
    ASSERT_EQ(tally.classification(sets, repeated), LabelClassification::classify(list));
  }
}

}  // namespace
}  // namespace tidewrack
