#include <gmock/gmock.h>

#include "screen_world.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A body that counts how often it is read, and can call out while it is.
class WatchedBody : public ContentSource {
 public:
  struct Watch {
    int reads = 0;
    std::function<void()> onRead;
  };

  WatchedBody(std::string text, std::shared_ptr<Watch> watch)
      : text_(std::move(text)), watch_(std::move(watch)) {}
  [[nodiscard]] std::string bytes() const override {
    ++watch_->reads;
    if (watch_->onRead) {
      watch_->onRead();
    }
    return text_;
  }
  [[nodiscard]] std::uint64_t size() const override { return text_.size(); }

 private:
  std::string text_;
  std::shared_ptr<Watch> watch_;
};

/// Ten messages: m0 to m9, every second one about apples, the others about pears. Body filters go through
/// the background.
class DerivedFlow : public ScreenWorld {
 protected:
  DerivedFlow() {
    auto world = services();
    world.maintainsSearchIndex = false;
    world.synchronousLimit = 5'000;
    open(world);
    MessageList messages;
    for (int i = 0; i < 10; ++i) {
      auto message = std::make_shared<EmailMessage>();
      message->id = "m" + std::to_string(i);
      message->labels = {i < 5 ? "Inbox" : "Work"};
      message->plainBody = Content(std::make_shared<WatchedBody>(i % 2 == 0 ? "apples" : "pears", watch_));
      messages.push_back(message);
    }
    screen().messages.set(messages);
    executor.runUntilIdle();
  }

  void setBodyFilter(const std::string& query) {
    SearchFilters filters = screen().advancedFilters();
    filters.bodyQuery = query;
    screen().advancedFilters.set(filters);
  }

  std::shared_ptr<WatchedBody::Watch> watch_ = std::make_shared<WatchedBody::Watch>();
};

TEST_F(DerivedFlow, ABodyFilterReadsInTheBackgroundAndTheEarlierListStandsMeanwhile) {
  setBodyFilter("apples");
  EXPECT_EQ(watch_->reads, 0);
  EXPECT_THAT(shownIDs(), testing::SizeIs(10));
  executor.runUntilIdle();
  EXPECT_THAT(shownIDs(), ElementsAre("m0", "m2", "m4", "m6", "m8"));
  EXPECT_EQ(watch_->reads, 10);
}

TEST_F(DerivedFlow, AResultOfAnEarlierFilterIsNeverShown) {
  std::vector<std::size_t> shown;
  const auto onList = screen().cachedFilteredMessages.observe(
      [&] { shown.push_back(screen().cachedFilteredMessages().size()); });
  setBodyFilter("apples");
  executor.runMain();
  ASSERT_TRUE(executor.runNextInBackground());
  setBodyFilter("nothing");  // Before the result of the first has come back.
  executor.runUntilIdle();
  EXPECT_THAT(shown, ElementsAre(0U));
}

TEST_F(DerivedFlow, AClearedFilterShowsTheWholeListAtOnce) {
  setBodyFilter("apples");
  setBodyFilter("");
  EXPECT_THAT(shownIDs(), testing::SizeIs(10));
  executor.runUntilIdle();
  EXPECT_THAT(shownIDs(), testing::SizeIs(10));
}

TEST_F(DerivedFlow, ASelectionMadeWhileTheListOfTheSidebarIsComingStays) {
  setBodyFilter("apples");
  screen().sidebarSelection.set(SidebarSelection::label("Work"));
  screen().selectMessage(screen().messages()[3]);
  executor.runUntilIdle();
  EXPECT_THAT(shownIDs(), ElementsAre("m6", "m8"));
  EXPECT_EQ(screen().selectedMessageID(), Text("m3"));
}

TEST_F(DerivedFlow, AListOfTheSidebarThatComesAtOnceAfterAllIsSelectedInAtOnceAndOnlyOnce) {
  setBodyFilter("apples");
  screen().sidebarSelection.set(SidebarSelection::label("Work"));
  setBodyFilter("");
  EXPECT_THAT(shownIDs(), ElementsAre("m5", "m6", "m7", "m8", "m9"));
  EXPECT_EQ(screen().selectedMessageID(), Text("m5"));
  screen().selectMessage(screen().messages()[7]);
  executor.runUntilIdle();
  EXPECT_EQ(screen().selectedMessageID(), Text("m7"));
}

TEST_F(DerivedFlow, OfTwoChangesOfTheSidebarTheLaterOneSelects) {
  setBodyFilter("apples");
  screen().sidebarSelection.set(SidebarSelection::label("Work"));
  screen().selectMessage(screen().messages()[3]);
  screen().sidebarSelection.set(SidebarSelection::mailbox(GmailSystemMailbox::inbox));
  executor.runUntilIdle();
  EXPECT_THAT(shownIDs(), ElementsAre("m0", "m2", "m4"));
  EXPECT_EQ(screen().selectedMessageID(), Text("m0"));
}

TEST_F(DerivedFlow, ANewFilterStopsTheReadingOfTheOneBefore) {
  watch_->onRead = [&] {
    if (watch_->reads == 3) {
      setBodyFilter("pears");
    }
  };
  setBodyFilter("apples");
  executor.runUntilIdle();
  EXPECT_EQ(watch_->reads, 13);
  EXPECT_THAT(shownIDs(), ElementsAre("m1", "m3", "m5", "m7", "m9"));
}

TEST_F(DerivedFlow, WhatHasBeenReadIsNotReadAgainUnderAnotherSelection) {
  watch_->onRead = [&] {
    if (watch_->reads == 3) {
      screen().sidebarSelection.set(SidebarSelection::mailbox(GmailSystemMailbox::inbox));
    }
  };
  setBodyFilter("apples");
  executor.runUntilIdle();
  EXPECT_EQ(watch_->reads, 5);
  EXPECT_THAT(shownIDs(), ElementsAre("m0", "m2", "m4"));
  screen().sidebarSelection.set(std::nullopt);
  executor.runUntilIdle();
  EXPECT_EQ(watch_->reads, 10);
  EXPECT_THAT(shownIDs(), ElementsAre("m0", "m2", "m4", "m6", "m8"));
}

TEST_F(DerivedFlow, CategoriesThatArriveWhileBodiesAreReadDoNotBeginTheReadingAnew) {
  setBodyFilter("apples");
  executor.runMain();
  ASSERT_TRUE(executor.runNextInBackground());
  for (const char* id : {"m1", "m2"}) {
    screen().setCategory(Text(id), Text("Travel"));
  }
  executor.runUntilIdle();
  EXPECT_THAT(shownIDs(), ElementsAre("m0", "m2", "m4", "m6", "m8"));
  EXPECT_EQ(screen().cachedFilteredMessages()[1]->category, Text("Travel"));
  EXPECT_EQ(screen().cachedCategoryCounts()->at("Travel"), 2);
  EXPECT_LE(watch_->reads, 12);
}

TEST_F(DerivedFlow, OtherFiltersAndTheSearchDoNotReadBodiesAgain) {
  setBodyFilter("apples");
  executor.runUntilIdle();
  SearchFilters filters = screen().advancedFilters();
  filters.onlyInConversations = true;
  screen().advancedFilters.set(filters);
  EXPECT_THAT(shownIDs(), IsEmpty()) << "at once";
  filters.onlyInConversations = false;
  screen().advancedFilters.set(filters);
  screen().sidebarSelection.set(SidebarSelection::label("Work"));
  EXPECT_THAT(shownIDs(), ElementsAre("m6", "m8"));
  EXPECT_EQ(watch_->reads, 10);
}

TEST_F(DerivedFlow, MergedMessagesAloneAreReadUnderAFilterThatStands) {
  setBodyFilter("apples");
  executor.runUntilIdle();
  auto message = std::make_shared<EmailMessage>();
  message->id = "new";
  message->plainBody = Content(std::make_shared<WatchedBody>("more apples", watch_));
  executor.finish(screen().mergeIntoMessages(MessageList{message}));
  EXPECT_THAT(shownIDs(), testing::SizeIs(6));
  EXPECT_EQ(watch_->reads, 11);
}

TEST_F(DerivedFlow, AChangedCategoryIsShownAtOnceAndLeavesTheSelectedMessageSelected) {
  screen().sidebarSelection.set(SidebarSelection::category("Travel"));
  EXPECT_THAT(shownIDs(), IsEmpty());
  screen().selectedMessageID.set(Text("m4"));
  screen().setCategory(Text("m4"), Text("Travel"));
  EXPECT_THAT(shownIDs(), ElementsAre("m4"));
  EXPECT_EQ(screen().selectedMessage()->category, Text("Travel"));
  EXPECT_EQ(screen().categoriesInScope(), std::vector<std::string_view>{"Travel"});
  executor.runUntilIdle();
}

TEST_F(DerivedFlow, ACategoryOfAMessageThatHasGoneChangesNothing) {
  int changes = 0;
  const auto onMessages = screen().messages.observe([&] { ++changes; });
  screen().setCategory(Text("unknown"), Text("Travel"));
  executor.runUntilIdle();
  EXPECT_EQ(changes, 0);
}

TEST_F(ScreenWorld, AChangedCategoryReadsNoTextForTheSearchIndex) {
  const auto watch = std::make_shared<WatchedBody::Watch>();
  auto message = std::make_shared<EmailMessage>();
  message->id = "m";
  message->plainBody = Content(std::make_shared<WatchedBody>("apples", watch));
  screen().messages.set(MessageList{message});
  executor.runUntilIdle();
  const auto index = screen().searchIndex();
  EXPECT_EQ(watch->reads, 1);
  screen().setCategory(Text("m"), Text("Travel"));
  executor.runUntilIdle();
  EXPECT_EQ(watch->reads, 1);
  EXPECT_EQ(screen().searchIndex(), index);
  screen().searchText.set("apples");
  EXPECT_THAT(shownIDs(), ElementsAre("m"));
}

}  // namespace
}  // namespace tidewrack
