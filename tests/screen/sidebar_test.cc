#include "screen/sidebar.h"

#include <set>
#include <string>

#include "screen_world.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = SidebarSection::Kind;

class Sidebar : public ScreenWorld {
 protected:
  static std::shared_ptr<EmailMessage> message(const std::string& id, std::vector<Text> labels = {},
                                               std::optional<Text> category = std::nullopt) {
    auto made = std::make_shared<EmailMessage>();
    made->id = id;
    made->sourceLibraryID = "L1";
    made->conversationID = id;
    made->labels = std::move(labels);
    made->category = std::move(category);
    return made;
  }
  void show(MessageList messages) {
    screen().messages.set(std::move(messages));
    executor.runUntilIdle();
  }
  std::vector<Kind> kinds() {
    std::vector<Kind> found;
    for (const auto& section : sidebarSections(screen())) {
      found.push_back(section.kind);
    }
    return found;
  }
  SidebarSection section(Kind kind) {
    for (const auto& candidate : sidebarSections(screen())) {
      if (candidate.kind == kind) {
        return candidate;
      }
    }
    ADD_FAILURE() << "no such section";
    return {};
  }
  static std::vector<std::string> titles(const SidebarSection& section) {
    std::vector<std::string> found;
    for (const auto& row : section.rows) {
      found.push_back(row.title);
    }
    return found;
  }
  static std::vector<std::int64_t> badges(const SidebarSection& section) {
    std::vector<std::int64_t> found;
    for (const auto& row : section.rows) {
      found.push_back(row.badge.count);
    }
    return found;
  }
};

TEST_F(Sidebar, WithNoMessagesAtAllOnlyTheLibrariesSectionStands) {
  EXPECT_THAT(kinds(), ElementsAre(Kind::libraries));
  EXPECT_EQ(section(Kind::libraries).title, "Libraries");
  ASSERT_THAT(section(Kind::libraries).rows, SizeIs(1));
  const auto all = section(Kind::libraries).rows[0];
  EXPECT_EQ(all.title, "All Libraries");
  EXPECT_EQ(all.icon, "tray.2.fill");
  EXPECT_EQ(all.identifier, "sidebar.allLibraries");
  EXPECT_EQ(all.selection, SidebarSelection::allLibraries());
  EXPECT_EQ(all.badge.count, 0);
}

TEST_F(Sidebar, EachLibraryHasItsRowIconIdentifierAndBadge) {
  screen().libraries.set({{"L1", "Work", "l1.mbox", Date(), false}, {"L2", "Elsewhere", "", Date(), true}});
  show({message("1"), message("2")});
  const auto libraries = section(Kind::libraries);
  EXPECT_THAT(titles(libraries), ElementsAre("All Libraries", "Work", "Elsewhere"));
  EXPECT_THAT(badges(libraries), ElementsAre(2, 2, 0));
  EXPECT_EQ(libraries.rows[1].icon, "archivebox.fill");
  EXPECT_EQ(libraries.rows[1].tint, "indigo");
  EXPECT_EQ(libraries.rows[1].identifier, "sidebar.library.L1");
  EXPECT_EQ(libraries.rows[1].selection, SidebarSelection::library("L1"));
  EXPECT_EQ(libraries.rows[1].help, "");
  EXPECT_EQ(libraries.rows[2].icon, "icloud.square.fill");
  EXPECT_EQ(libraries.rows[2].tint, "blue");
  EXPECT_TRUE(libraries.rows[2].isCloudDerived);
  EXPECT_EQ(libraries.rows[2].help, "Synced from iCloud — no local .mbox file");
}

TEST_F(Sidebar, MailboxesTabsAndLabelsStandInTheirOrderWithTheirBadges) {
  show({message("1", {"Trash", "Inbox", "Forums", "Updates"}),
        message("2", {"Inbox", "Starred", "Work/Done"})});
  EXPECT_THAT(kinds(), ElementsAre(Kind::libraries, Kind::mailboxes, Kind::gmailCategories, Kind::labels));
  EXPECT_EQ(section(Kind::mailboxes).title, "Mailboxes");
  EXPECT_THAT(titles(section(Kind::mailboxes)), ElementsAre("Inbox", "Starred", "Trash"));
  EXPECT_THAT(badges(section(Kind::mailboxes)), ElementsAre(2, 1, 1));
  EXPECT_EQ(section(Kind::mailboxes).rows[0].icon, "tray.fill");
  EXPECT_EQ(section(Kind::mailboxes).rows[0].tint, "blue");
  EXPECT_EQ(section(Kind::mailboxes).rows[0].selection, SidebarSelection::mailbox(GmailSystemMailbox::inbox));
  EXPECT_EQ(section(Kind::gmailCategories).title, "Gmail Categories");
  EXPECT_THAT(titles(section(Kind::gmailCategories)), ElementsAre("Updates", "Forums"));
  const auto labels = section(Kind::labels);
  EXPECT_EQ(labels.title, "Labels");
  ASSERT_THAT(labels.rows, SizeIs(1));
  EXPECT_EQ(labels.rows[0].title, "Work");
  EXPECT_EQ(labels.rows[0].icon, "folder.fill");
  EXPECT_EQ(labels.rows[0].badge.count, 1);
  ASSERT_THAT(labels.rows[0].children, SizeIs(1));
  EXPECT_EQ(labels.rows[0].children[0].title, "Done");
  EXPECT_EQ(labels.rows[0].children[0].icon, "tag.fill");
  EXPECT_EQ(labels.rows[0].children[0].selection, SidebarSelection::label("Work/Done"));
  EXPECT_EQ(labels.rows[0].children[0].tint, labelTint("Work/Done"));
}

TEST_F(Sidebar, AScopeWithNoGmailLabelsHidesTheSectionsAndASelectedMailboxStaysEmpty) {
  show({message("1", {"Inbox"})});
  screen().sidebarSelection.set(SidebarSelection::mailbox(GmailSystemMailbox::inbox));
  EXPECT_THAT(shownIDs(), ElementsAre("1"));
  show({message("1")});
  EXPECT_THAT(kinds(), ElementsAre(Kind::libraries));
  EXPECT_EQ(screen().sidebarSelection(), SidebarSelection::mailbox(GmailSystemMailbox::inbox));
  EXPECT_THAT(shownIDs(), IsEmpty());
}

TEST_F(Sidebar, SmartCategoriesStandInTheirFixedOrderAndOtherNamesAreNeverListed) {
  show({message("1", {}, "Spam"), message("2", {}, "Work"), message("3", {}, "Work"),
        message("4", {}, "Mystery"), message("5", {}, "")});
  EXPECT_THAT(kinds(), ElementsAre(Kind::libraries, Kind::smartCategories));
  const auto categories = section(Kind::smartCategories);
  EXPECT_EQ(categories.title, "Smart Categories");
  EXPECT_THAT(titles(categories), ElementsAre("Work", "Spam"));
  EXPECT_THAT(badges(categories), ElementsAre(2, 1));
  EXPECT_EQ(categories.rows[0].icon, "briefcase.fill");
  EXPECT_EQ(categories.rows[0].tint, "blue");
  EXPECT_EQ(categories.rows[0].selection, SidebarSelection::category("Work"));
  EXPECT_THAT(screen().categoriesInScope(), ElementsAre("Work", "Spam"));
  EXPECT_FALSE(categories.progress);
}

TEST_F(Sidebar, EachSmartCategoryHasItsIconAndTint) {
  show({message("1", {}, "Other"), message("2", {}, "Spam"), message("3", {}, "Newsletter"),
        message("4", {}, "Social"), message("5", {}, "Travel"), message("6", {}, "Shopping"),
        message("7", {}, "Finance"), message("8", {}, "Personal"), message("9", {}, "Work")});
  std::vector<std::string> rows;
  for (const auto& row : section(Kind::smartCategories).rows) {
    rows.push_back(row.title + " " + std::string(row.icon) + " " + std::string(row.tint));
  }
  EXPECT_THAT(rows, ElementsAre("Work briefcase.fill blue", "Personal person.fill green",
                                "Finance dollarsign.circle.fill yellow", "Shopping cart.fill orange",
                                "Travel airplane purple", "Social bubble.left.and.bubble.right.fill pink",
                                "Newsletter envelope.fill cyan", "Spam exclamationmark.octagon.fill red",
                                "Other folder.fill gray"));
}

TEST_F(Sidebar, TheTintsOfLabelsAreTwelve) {
  std::set<std::string_view> tints;
  for (int i = 0; i < 1000; ++i) {
    const std::string path = "label " + std::to_string(i);
    tints.insert(labelTint(path));
    EXPECT_EQ(labelTint(path), labelTint(std::string(path)));
  }
  EXPECT_EQ(tints, (std::set<std::string_view>{"blue", "green", "orange", "purple", "pink", "teal", "indigo",
                                               "mint", "yellow", "cyan", "red", "brown"}));
}

TEST_F(Sidebar, WithIntelligenceOffTheSectionIsAbsentWhateverTheMessagesHold) {
  show({message("1", {}, "Work")});
  settings.set(SettingKey::intelligenceEnabled, false);
  EXPECT_THAT(kinds(), ElementsAre(Kind::libraries));
  settings.set(SettingKey::intelligenceEnabled, true);
  settings.set(SettingKey::enableCategoryDetection, false);
  EXPECT_THAT(kinds(), ElementsAre(Kind::libraries));
}

TEST_F(Sidebar, WhileCategorisingWithNoCategorisedMessageTheSectionStandsWithOnlyItsProgressRow) {
  categorizer = std::make_unique<FakeCategorizer>();
  show({message("1")});
  categorizer->isCategorizing.set(true);
  auto categories = section(Kind::smartCategories);
  EXPECT_THAT(categories.rows, IsEmpty());
  ASSERT_TRUE(categories.progress);
  EXPECT_FALSE(categories.progress->fraction);
  categorizer->totalToProcess.set(4);
  categorizer->processedCount.set(1);
  categories = section(Kind::smartCategories);
  EXPECT_EQ(categories.progress->text, "Categorizing 1 of 4…");
  EXPECT_DOUBLE_EQ(*categories.progress->fraction, 0.25);
}

TEST_F(Sidebar, TheTitleFollowsTheSelection) {
  screen().libraries.set({{"L1", "Work", "l1.mbox", Date(), false}});
  const auto titleOf = [&](const SidebarSelection& selection) {
    screen().sidebarSelection.set(selection);
    return screen().activeTitle();
  };
  EXPECT_EQ(titleOf(SidebarSelection::mailbox(GmailSystemMailbox::spam)), "Spam");
  EXPECT_EQ(titleOf(SidebarSelection::gmailCategory(GmailCategoryFolder::social)), "Social");
  EXPECT_EQ(titleOf(SidebarSelection::label("Work/Done")), "Done");
  EXPECT_EQ(titleOf(SidebarSelection::label("Work/")), "Work");
  EXPECT_EQ(titleOf(SidebarSelection::label("//")), "//");
  EXPECT_EQ(titleOf(SidebarSelection::library("L1")), "Work");
  EXPECT_EQ(titleOf(SidebarSelection::library("gone")), "All Libraries");
  EXPECT_EQ(titleOf(SidebarSelection::category("Travel")), "All Libraries");
  EXPECT_EQ(titleOf(SidebarSelection::allLibraries()), "All Libraries");
}

TEST_F(Sidebar, SelectionsAreComparedByCaseAndPayload) {
  EXPECT_EQ(SidebarSelection::library("a"), SidebarSelection::library("a"));
  EXPECT_NE(SidebarSelection::library("a"), SidebarSelection::library("b"));
  EXPECT_NE(SidebarSelection::library("a"), SidebarSelection::label("a"));
}

TEST_F(Sidebar, ALabelThatHasGoneStaysSelectedOverAnEmptyList) {
  show({message("1", {"Work"})});
  screen().sidebarSelection.set(SidebarSelection::label("Work"));
  EXPECT_THAT(shownIDs(), ElementsAre("1"));
  show({message("1")});
  EXPECT_EQ(screen().sidebarSelection(), SidebarSelection::label("Work"));
  EXPECT_THAT(shownIDs(), IsEmpty());
}

}  // namespace
}  // namespace tidewrack
