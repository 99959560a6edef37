#include "screen/content_view.h"

#include <random>

#include "screen/toolbar.h"
#include "screen_world.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct Mail {
  std::string id;
  std::string library = "L1";
  std::optional<int> day = std::nullopt;  ///< Days since 1970.
  std::vector<Text> labels = {};
  std::optional<Text> category = std::nullopt;
  std::string subject = "Subject";
  std::string conversation = "C";
};

std::shared_ptr<const EmailMessage> message(const Mail& mail) {
  auto made = std::make_shared<EmailMessage>();
  made->id = mail.id;
  made->sourceLibraryID = mail.library;
  made->sourceLibraryName = mail.library;
  made->subject = mail.subject;
  made->from.address = "ann@example.org";
  made->conversationID = mail.conversation;
  made->labels = mail.labels;
  made->category = mail.category;
  if (mail.day) {
    made->date = Date(std::chrono::days(*mail.day));
  }
  return made;
}

MessageList list(const std::vector<Mail>& mails) {
  MessageList made;
  for (const auto& mail : mails) {
    made.push_back(message(mail));
  }
  return made;
}

MBOXLibrary library(const std::string& id, const std::string& name, bool isCloudDerived = false) {
  return {id, name, isCloudDerived ? "" : id + ".mbox", Date(std::chrono::seconds(1'700'000'000)),
          isCloudDerived};
}

class Screen : public ScreenWorld {
 protected:
  void show(const MessageList& messages) {
    screen().messages.set(messages);
    executor.runUntilIdle();
  }
};

TEST_F(Screen, StartsEmpty) {
  EXPECT_THAT(screen().messages().get(), IsEmpty());
  EXPECT_THAT(screen().cachedFilteredMessages().get(), IsEmpty());
  EXPECT_TRUE(screen().cachedConversationCounts()->empty());
  EXPECT_EQ(screen().cachedLabelClassification(), LabelClassification());
  EXPECT_FALSE(screen().selectedMessage());
  EXPECT_FALSE(screen().sidebarSelection());
  EXPECT_EQ(screen().advancedFilters(), SearchFilters::defaults(executor.now()));
  EXPECT_EQ(screen().activeTitle(), "All Libraries");
  EXPECT_EQ(screen().subtitle(), "0 messages");
}

TEST_F(Screen, FollowsTheThreeSettings) {
  screen();
  EXPECT_TRUE(screen().intelligenceEnabled());
  EXPECT_TRUE(screen().enableCategoryDetection());
  EXPECT_TRUE(screen().iCloudSyncEnabled());
  settings.set(SettingKey::iCloudSyncEnabled, false);
  settings.set(SettingKey::intelligenceEnabled, false);
  EXPECT_FALSE(screen().iCloudSyncEnabled());
  EXPECT_FALSE(screen().intelligenceEnabled());
  EXPECT_TRUE(screen().enableCategoryDetection());
}

TEST_F(Screen, AChangeOfTheMessagesRefreshesEverythingDerived) {
  show(list({{.id = "1", .labels = {"Inbox", "Work"}, .conversation = "A"},
             {.id = "2", .labels = {"Inbox"}, .conversation = "A"}}));
  EXPECT_EQ(shownIDs(), (std::vector<std::string>{"1", "2"}));
  EXPECT_EQ(screen().conversationCount("A"), 2);
  EXPECT_EQ(screen().conversationCount("B"), 0);
  EXPECT_EQ(screen().cachedLabelClassification(), LabelClassification::classify(screen().messages()));
  EXPECT_EQ(screen().subtitle(), "2 messages");
}

TEST_F(Screen, AChangeOfTheMessagesDoesNotReselect) {
  show(list({{.id = "1"}, {.id = "2"}}));
  EXPECT_FALSE(screen().selectedMessageID());
  screen().selectedMessageID.set(Text("2"));
  show(list({{.id = "3"}}));
  EXPECT_EQ(screen().selectedMessageID(), Text("2"));
  EXPECT_FALSE(screen().selectedMessage());
}

TEST_F(Screen, DeletingTheLastLibraryBringsBackTheWelcomeOnlyOnceNoMessageIsLeftAndNoImportRuns) {
  EXPECT_TRUE(screen().showsWelcome());
  screen().libraries.set({library("L1", "Work")});
  screen().messages.set(list({{.id = "1"}}));
  EXPECT_FALSE(screen().showsWelcome());
  screen().libraries.set({});
  EXPECT_FALSE(screen().showsWelcome());
  screen().isImporting.set(true);
  screen().messages.set(MessageList());
  EXPECT_FALSE(screen().showsWelcome());
  screen().isImporting.set(false);
  EXPECT_TRUE(screen().showsWelcome());
  executor.runUntilIdle();
}

TEST_F(Screen, ASearchDoesNotReselect) {
  show(list({{.id = "1", .subject = "apples"}, {.id = "2", .subject = "pears"}}));
  screen().selectedMessageID.set(Text("1"));
  screen().searchText.set("pears");
  EXPECT_THAT(shownIDs(), ElementsAre("2"));
  EXPECT_EQ(screen().selectedMessageID(), Text("1"));
  ASSERT_TRUE(screen().selectedMessage());
  EXPECT_EQ(screen().selectedMessage()->subject, "apples") << "the detail goes on showing it";
  SearchFilters filters = screen().advancedFilters();
  filters.subjectQuery = "none";
  screen().advancedFilters.set(filters);
  EXPECT_THAT(shownIDs(), IsEmpty());
  EXPECT_EQ(screen().selectedMessageID(), Text("1"));
}

TEST_F(Screen, AChangeOfTheSidebarSelectsTheFirstRemainingMessageOrNone) {
  show(list({{.id = "1"}, {.id = "2", .library = "L2"}, {.id = "3", .library = "L2"}}));
  screen().sidebarSelection.set(SidebarSelection::library("L2"));
  EXPECT_EQ(screen().selectedMessageID(), Text("2"));
  screen().sidebarSelection.set(SidebarSelection::library("unknown"));
  EXPECT_FALSE(screen().selectedMessageID());
  screen().sidebarSelection.set(std::nullopt);
  EXPECT_EQ(screen().selectedMessageID(), Text("1"));
}

TEST_F(Screen, AnErrorWhileASheetIsOpenIsClosedByItself) {
  screen().isShowingExport.set(true);
  screen().importErrorMessage.set("No.");
  screen().importErrorMessage.set(std::nullopt);
  EXPECT_TRUE(screen().isShowingExport());
}

TEST_F(Screen, TheReactionsToOneChangeComeBeforeItsObservers) {
  show(list({{.id = "1"}, {.id = "2", .library = "L2"}}));
  std::vector<std::string> seen;
  auto onSelection = screen().sidebarSelection.observe([&] {
    seen.push_back("sidebar: " + std::to_string(screen().messageCount()) + " " +
                   screen().selectedMessageID()->string());
  });
  screen().sidebarSelection.set(SidebarSelection::library("L2"));
  EXPECT_THAT(seen, ElementsAre("sidebar: 1 2"));
}

TEST_F(Screen, AnObserverThatChangesTheSearchLeavesOneConsistentState) {
  show(list({{.id = "1", .library = "L1", .conversation = "A"},
             {.id = "2", .library = "L2", .conversation = "B"}}));
  bool changed = false;
  auto onList = screen().cachedFilteredMessages.observe([&] {
    if (!std::exchange(changed, true)) {
      screen().sidebarSelection.set(SidebarSelection::library("L2"));
    }
  });
  screen().sidebarSelection.set(SidebarSelection::library("L1"));
  EXPECT_THAT(shownIDs(), ElementsAre("2"));
  EXPECT_EQ(screen().conversationCount("B"), 1);
  EXPECT_EQ(screen().conversationCount("A"), 0);
}

TEST_F(Screen, AnObserverThatChangesTheSearchLeavesTheClassificationOfTheNewMessages) {
  show(list({{.id = "1"}}));
  bool changed = false;
  auto onList = screen().cachedFilteredMessages.observe([&] {
    if (!std::exchange(changed, true)) {
      screen().searchText.set("word");
    }
  });
  auto labelled = std::make_shared<EmailMessage>(*screen().messages()[0]);
  labelled->labels = {"Inbox", "Work"};
  screen().messages.set(MessageList{labelled});
  EXPECT_EQ(screen().cachedLabelClassification().systemMailboxes.size(), 1U);
  EXPECT_EQ(screen().cachedLabelClassification().userLabelTree.size(), 1U);
}

TEST_F(Screen, TheSelectedMessageIsTheFirstWithItsId) {
  show(list({{.id = "1", .subject = "first"}, {.id = "1", .subject = "second"}}));
  screen().selectedMessageID.set(Text("1"));
  EXPECT_EQ(screen().selectedMessage()->subject, "first");
  screen().selectMessage(nullptr);
  EXPECT_FALSE(screen().showsDetail());
  screen().selectMessage(screen().messages()[0]);
  EXPECT_TRUE(screen().showsDetail());
}

TEST_F(Screen, TheSelectedMessageFollowsItsChangedCopy) {
  show(list({{.id = "1", .subject = "before"}}));
  screen().selectFirstFilteredMessage();
  EXPECT_EQ(screen().selectedMessage()->subject, "before");
  executor.finish(screen().mergeIntoMessages(list({{.id = "1", .subject = "after"}})));
  EXPECT_EQ(screen().selectedMessage()->subject, "after");
}

TEST_F(Screen, MergingReplacesByIdAddsTheRestAndSortsUndatedLast) {
  show(list({{.id = "b", .day = 3, .subject = "old b"}, {.id = "a", .day = 1}, {.id = "u"}}));
  executor.finish(screen().mergeIntoMessages(
      list({{.id = "c", .day = 2}, {.id = "b", .day = 0, .subject = "new b"}, {.id = "v"}})));
  EXPECT_THAT(loadedIDs(), ElementsAre("c", "a", "b", "u", "v"));
  EXPECT_EQ(screen().messages()[2]->subject, "new b");
}

TEST_F(Screen, OfTwoMergedMessagesWithOneIdTheLaterStays) {
  executor.finish(
      screen().mergeIntoMessages(list({{.id = "a", .subject = "one"}, {.id = "a", .subject = "two"}})));
  ASSERT_THAT(loadedIDs(), ElementsAre("a"));
  EXPECT_EQ(screen().messages()[0]->subject, "two");
}

TEST_F(Screen, MergingNothingChangesNothing) {
  show(list({{.id = "a"}}));
  int changes = 0;
  auto onMessages = screen().messages.observe([&] { ++changes; });
  executor.finish(screen().mergeIntoMessages(MessageList()));
  EXPECT_EQ(changes, 0);
}

TEST_F(Screen, AMergeTakesInWhatChangedWhileItWasUnderWay) {
  show(list({{.id = "a"}}));
  const auto merge = screen().mergeIntoMessages(list({{.id = "b"}}));
  screen().messages.set(list({{.id = "a"}, {.id = "c"}}));
  executor.runUntilIdle();
  EXPECT_TRUE(merge.done());
  EXPECT_THAT(loadedIDs(), testing::UnorderedElementsAre("a", "b", "c"));
}

TEST_F(Screen, TwoMergesAtOnceBothArrive) {
  const auto first = screen().mergeIntoMessages(list({{.id = "a"}}));
  const auto second = screen().mergeIntoMessages(list({{.id = "b"}}));
  executor.runUntilIdle();
  EXPECT_THAT(loadedIDs(), testing::UnorderedElementsAre("a", "b"));
}

TEST_F(Screen, TheIndexFollowsTheMessagesInTheBackground) {
  screen().messages.set(list({{.id = "1", .subject = "lighthouse"}}));
  screen().searchText.set("lighthouse");
  EXPECT_THAT(shownIDs(), IsEmpty()) << "the index is not there yet";
  executor.runUntilIdle();
  EXPECT_THAT(shownIDs(), ElementsAre("1"));
  screen().messages.set(list({{.id = "2", .subject = "harbour"}}));
  executor.runUntilIdle();
  EXPECT_THAT(shownIDs(), IsEmpty());
  screen().searchText.set("");
  EXPECT_THAT(shownIDs(), ElementsAre("2"));
}

TEST_F(Screen, ChangesDuringAnIndexRunAreTakenInByOneMore) {
  screen().messages.set(list({{.id = "1", .subject = "lighthouse"}}));
  executor.runMain();
  screen().messages.set(list({{.id = "2", .subject = "harbour"}}));
  screen().messages.set(list({{.id = "3", .subject = "mole"}}));
  executor.runUntilIdle();
  EXPECT_THAT(screen().searchIndex().matchingMessageIDs("mole"), ElementsAre(Text("3")));
  EXPECT_THAT(screen().searchIndex().matchingMessageIDs("lighthouse"), IsEmpty());
}

TEST_F(Screen, WithoutAnIndexToMaintainNoBodyIsRead) {
  auto world = services();
  world.maintainsSearchIndex = false;
  open(world);
  show(list({{.id = "1", .subject = "lighthouse"}}));
  EXPECT_TRUE(screen().searchIndex().empty());
}

TEST_F(Screen, MessagesOfUnknownLibrariesAreDiscovered) {
  ModelContext context = services().container->newContext();
  saveMessages(list({{.id = "1", .library = "elsewhere"}}), context);
  screen().refreshDiscoveredLibraries();
  executor.runUntilIdle();
  ASSERT_THAT(screen().discoveredRemoteLibraries(), SizeIs(1));
  EXPECT_EQ(screen().discoveredRemoteLibraries()[0].id, "elsewhere");
  screen().libraries.set({library("elsewhere", "Elsewhere")});
  executor.runUntilIdle();
  EXPECT_THAT(screen().discoveredRemoteLibraries(), IsEmpty());
}

// -- Toasts

TEST_F(Screen, AToastOfThreeSecondsIsGoneAfterThreeSeconds) {
  screen().showToast(Toast::success("Done"));
  executor.advance(2'999ms);
  EXPECT_TRUE(screen().currentToast());
  executor.advance(1ms);
  EXPECT_FALSE(screen().currentToast());
  EXPECT_EQ(executor.pendingTimers(), 0U);
}

TEST_F(Screen, AnErrorToastStaysFourSeconds) {
  screen().showToast(Toast::error("Failed"));
  executor.advance(3'999ms);
  EXPECT_TRUE(screen().currentToast());
  executor.advance(1ms);
  EXPECT_FALSE(screen().currentToast());
}

TEST_F(Screen, ANewToastReplacesTheOldOneAndIsCutShortByItsJob) {
  screen().showToast(Toast::success("First"));
  executor.advance(2s);
  screen().showToast(Toast::success("Second"));
  EXPECT_EQ(screen().currentToast()->message, "Second");
  executor.advance(1s);
  EXPECT_FALSE(screen().currentToast());
}

TEST_F(Screen, EveryToastTypeHasItsLook) {
  EXPECT_EQ(icon(ToastType::success), "checkmark.circle.fill");
  EXPECT_EQ(icon(ToastType::error), "exclamationmark.circle.fill");
  EXPECT_EQ(icon(ToastType::info), "info.circle.fill");
  EXPECT_EQ(icon(ToastType::warning), "exclamationmark.triangle.fill");
  EXPECT_EQ(tint(ToastType::success), "green");
  EXPECT_EQ(tint(ToastType::error), "red");
  EXPECT_EQ(tint(ToastType::info), "blue");
  EXPECT_EQ(tint(ToastType::warning), "orange");
}

TEST_F(Screen, TheStatusPanelsButtonClosesTheSheetAndForgetsTheStatus) {
  screen().importStatus.set(ImportStatus::Success{});
  screen().showImportStatusSheet.set(true);
  screen().dismissImportStatus();
  EXPECT_FALSE(screen().showImportStatusSheet());
  EXPECT_FALSE(screen().importStatus());
}

// -- Toolbar

std::vector<ToolbarAction> actions(const ContentView& screen) {
  std::vector<ToolbarAction> found;
  for (const auto& item : toolbarItems(screen)) {
    found.push_back(item.action);
  }
  return found;
}

ToolbarItem item(const ContentView& screen, ToolbarAction action) {
  for (const auto& candidate : toolbarItems(screen)) {
    if (candidate.action == action) {
      return candidate;
    }
  }
  ADD_FAILURE() << "no such item";
  return {};
}

TEST_F(Screen, TheToolbarOfAnEmptyScreenOffersImportExportAndSettings) {
  settings.set(SettingKey::iCloudSyncEnabled, false);
  EXPECT_THAT(actions(screen()), ElementsAre(ToolbarAction::manageLibraries, ToolbarAction::advancedSearch,
                                             ToolbarAction::exportMessages, ToolbarAction::importArchives,
                                             ToolbarAction::settings));
  EXPECT_FALSE(item(screen(), ToolbarAction::manageLibraries).isEnabled);
  EXPECT_FALSE(item(screen(), ToolbarAction::advancedSearch).isEnabled);
  EXPECT_TRUE(item(screen(), ToolbarAction::importArchives).isEnabled);
  perform(ToolbarAction::manageLibraries, screen());
  EXPECT_FALSE(screen().isShowingManageLibrariesSheet());
}

TEST_F(Screen, TheToolbarShowsEveryItemInItsOrder) {
  screen().libraries.set({library("L1", "Work")});
  screen().messages.set(list({{.id = "1"}}));
  executor.runUntilIdle();
  screen().discoveredRemoteLibraries.set(std::vector<DiscoveredLibrary>(3));
  SearchFilters filters = screen().advancedFilters();
  filters.onlyHTML = true;
  screen().advancedFilters.set(filters);
  EXPECT_THAT(actions(screen()), ElementsAre(ToolbarAction::manageLibraries, ToolbarAction::advancedSearch,
                                             ToolbarAction::exportMessages, ToolbarAction::importArchives,
                                             ToolbarAction::clearFilters, ToolbarAction::cloudStatus,
                                             ToolbarAction::discoveredLibraries, ToolbarAction::settings));
  EXPECT_EQ(item(screen(), ToolbarAction::discoveredLibraries).badge, 3);
  EXPECT_TRUE(item(screen(), ToolbarAction::manageLibraries).isEnabled);
  EXPECT_TRUE(item(screen(), ToolbarAction::advancedSearch).isEnabled);
}

TEST_F(Screen, TheImportItemIsDisabledBesideASpinnerWhileAnImportRuns) {
  screen().isImporting.set(true);
  EXPECT_FALSE(item(screen(), ToolbarAction::importArchives).isEnabled);
  EXPECT_TRUE(item(screen(), ToolbarAction::importArchives).showsSpinner);
  perform(ToolbarAction::importArchives, screen());
  EXPECT_FALSE(screen().isPresentingImporter());
  screen().isImporting.set(false);
  perform(ToolbarAction::importArchives, screen());
  EXPECT_TRUE(screen().isPresentingImporter());
}

TEST_F(Screen, EachToolbarItemOpensItsSheet) {
  screen().libraries.set({library("L1", "Work")});
  screen().messages.set(list({{.id = "1"}}));
  executor.runUntilIdle();
  screen().discoveredRemoteLibraries.set(std::vector<DiscoveredLibrary>(1));
  for (const auto action : actions(screen())) {
    perform(action, screen());
  }
  EXPECT_TRUE(screen().isShowingManageLibrariesSheet());
  EXPECT_TRUE(screen().isShowingAdvancedSearch());
  EXPECT_TRUE(screen().isShowingExport());
  EXPECT_TRUE(screen().isPresentingImporter());
  EXPECT_TRUE(screen().isShowingDiscoveredLibraries());
  EXPECT_TRUE(screen().isShowingSettings());
}

TEST_F(Screen, ClearingTheFiltersBringsBackTheDefaults) {
  SearchFilters filters = screen().advancedFilters();
  filters.fromQuery = "ann";
  screen().advancedFilters.set(filters);
  executor.advance(1h);
  perform(ToolbarAction::clearFilters, screen());
  EXPECT_EQ(screen().advancedFilters(), SearchFilters::defaults(executor.now()));
}

TEST_F(Screen, TheToolbarHasItsIdentifiersAndTexts) {
  screen().libraries.set({library("L1", "Work")});
  const auto check = [&](ToolbarAction action, std::string_view identifier, std::string_view symbol,
                         const std::string& label, const std::string& help) {
    const auto found = item(screen(), action);
    EXPECT_EQ(found.identifier, identifier);
    EXPECT_EQ(found.icon, symbol);
    EXPECT_EQ(found.label, label);
    EXPECT_EQ(found.help, help);
  };
  check(ToolbarAction::manageLibraries, "toolbar.manageLibraries", "books.vertical.circle",
        "Manage Libraries", "");
  check(ToolbarAction::advancedSearch, "toolbar.advancedSearch", "line.3.horizontal.decrease.circle",
        "Advanced Search", "Advanced search filters");
  check(ToolbarAction::exportMessages, "toolbar.export", "square.and.arrow.up", "Export filtered messages",
        "Export filtered messages");
  check(ToolbarAction::cloudStatus, "", "icloud.fill", "iCloud sync is active", "iCloud sync is active");
  check(ToolbarAction::settings, "toolbar.settings", "gearshape", "Settings", "Configure the app");
  EXPECT_EQ(item(screen(), ToolbarAction::cloudStatus).tint, "blue");
  check(ToolbarAction::importArchives, "toolbar.import", "tray.and.arrow.down", "Import MBOX…", "");
  SearchFilters filters;
  filters.onlyHTML = true;
  screen().advancedFilters.set(filters);
  check(ToolbarAction::clearFilters, "", "xmark.circle.fill", "Clear Filters",
        "Advanced filters are active. Click to clear them.");
  screen().discoveredRemoteLibraries.set(std::vector<DiscoveredLibrary>(2));
  check(ToolbarAction::discoveredLibraries, "", "icloud.and.arrow.down.fill", "Available in iCloud",
        "Libraries available in iCloud not added on this device");
  EXPECT_EQ(item(screen(), ToolbarAction::discoveredLibraries).badge, 2);
}

// -- Long lists go through the background and end the same.

MessageList randomList(std::mt19937& random, int count) {
  const std::vector<Text> labels = {"Inbox",     "Sent",     "Category Forums", "Work",
                                    "Work/Done", "\"Work\"", "Unread"};
  const std::vector<std::string> words = {"apple", "pear", "plum", "fig"};
  std::vector<Mail> mails;
  for (int i = 0; i < count; ++i) {
    Mail mail{.id = "m" + std::to_string(i)};
    mail.library = "L" + std::to_string(random() % 3);
    mail.conversation = "C" + std::to_string(random() % 10);
    mail.subject = words[random() % words.size()] + " " + words[random() % words.size()];
    for (const auto& label : labels) {
      if (random() % 3 == 0) {
        mail.labels.push_back(label);
      }
    }
    if (random() % 2 == 0) {
      mail.category = Text("Travel");
    }
    mails.push_back(mail);
  }
  return list(mails);
}

std::optional<SidebarSelection> randomSelection(std::mt19937& random) {
  switch (random() % 7) {
    case 0:
      return std::nullopt;
    case 1:
      return SidebarSelection::library("L" + std::to_string(random() % 4));
    case 2:
      return SidebarSelection::mailbox(allGmailSystemMailboxes[random() % 2]);
    case 3:
      return SidebarSelection::gmailCategory(GmailCategoryFolder::forums);
    case 4:
      return SidebarSelection::label(random() % 2 ? "Work" : "Work/Done");
    case 5:
      return SidebarSelection::category("Travel");
    default:
      return SidebarSelection::allLibraries();
  }
}

TEST_F(Screen, WhatIsTakenOverFromBeforeEqualsAFullRecomputation) {
  std::mt19937 random(7);
  const std::vector<std::string> searches = {"", " ", "apple", "plum fig", "nothing", "x"};
  for (const std::size_t limit : {std::size_t{0}, std::size_t{1'000'000}}) {
    auto world = services();
    world.synchronousLimit = limit;
    ContentView& screen = open(world);
    for (int round = 0; round < 200; ++round) {
      switch (random() % 5) {
        case 0:
          screen.messages.set(randomList(random, static_cast<int>(random() % 40)));
          break;
        case 1:
          screen.searchText.set(searches[random() % searches.size()]);
          break;
        case 2: {
          SearchFilters filters = screen.advancedFilters();
          filters.subjectQuery = random() % 2 ? "apple" : "";
          screen.advancedFilters.set(filters);
          break;
        }
        default:
          screen.sidebarSelection.set(randomSelection(random));
          break;
      }
      if (random() % 3 != 0) {
        executor.runUntilIdle();  // Otherwise the next change comes while this one is being worked out.
      }
    }
    executor.runUntilIdle();
    FullTextSearchIndex index;
    index.build(screen.messages());
    const DerivedState expected =
        deriveState({screen.messages(), screen.sidebarSelection(), screen.advancedFilters(),
                     screen.searchText(), index, SharedMessageList()});
    EXPECT_EQ(screen.cachedFilteredMessages(), expected.filteredMessages);
    EXPECT_EQ(*screen.cachedConversationCounts(), *expected.counts.conversations);
    EXPECT_EQ(screen.cachedLabelClassification(), *expected.counts.labelClassification);
    EXPECT_EQ(*screen.cachedCategoryCounts(), *expected.counts.categories);
    for (const Text id : {"L0", "L1", "L2", "L3"}) {
      EXPECT_EQ(screen.messageCount(id),
                std::ranges::count(screen.messages(), id, [](const auto& m) { return m->sourceLibraryID; }));
    }
  }
}

TEST_F(Screen, ALongListIsFilteredInTheBackgroundAndThenSelected) {
  auto world = services();
  world.synchronousLimit = 1;
  open(world);
  show(list({{.id = "1"}, {.id = "2", .library = "L2"}, {.id = "3", .library = "L2"}}));
  EXPECT_THAT(shownIDs(), ElementsAre("1", "2", "3"));
  screen().sidebarSelection.set(SidebarSelection::library("L2"));
  EXPECT_THAT(shownIDs(), ElementsAre("1", "2", "3"));
  executor.finish(screen().whenDerivedStateIsCurrent());
  EXPECT_THAT(shownIDs(), ElementsAre("2", "3"));
  EXPECT_EQ(screen().selectedMessageID(), Text("2"));
}

TEST_F(Screen, AnImportOfALongListEndsWithItsDerivedStateCurrent) {
  auto world = services();
  world.synchronousLimit = 1;
  open(world);
  import({archive("a.mbox", {"a1", "a2"}), archive("b.mbox", {"b1", "b2"})});
  EXPECT_EQ(screen().activeTitle(), "a");
  EXPECT_THAT(shownIDs(), ElementsAre("a1", "a2"));
  EXPECT_EQ(screen().selectedMessageID(), Text("a1"));
}

}  // namespace
}  // namespace tidewrack
