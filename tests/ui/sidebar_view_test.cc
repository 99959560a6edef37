#include <map>
#include <string>
#include <vector>

#include "ui/sidebar_item.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

using ui::SidebarItem;

std::shared_ptr<EmailMessage> message(const std::string& id, std::vector<Text> labels,
                                      std::optional<Text> category = std::nullopt) {
  auto made = std::make_shared<EmailMessage>();
  made->id = id;
  made->sourceLibraryID = id < "m5" ? "L1" : "L2";
  made->sourceLibraryName = made->sourceLibraryID;
  made->subject = "About " + id;
  made->conversationID = id;
  made->labels = std::move(labels);
  made->category = std::move(category);
  return made;
}

class SidebarViewTest : public WindowTest {
 protected:
  void openWithMail() {
    open();
    screen_->libraries.set({{"L1", "First", "L1.mbox", Date(), false}, {"L2", "Second", "", Date(), true}});
    messages_ = {message("m1", {"Inbox", "Work/Done"}, "Travel"), message("m2", {"Recibidos", "Work/Todo"}),
                 message("m3", {"Category Updates", "Work"}),     message("m4", {"Sent", "Alpha"}),
                 message("m6", {"Inbox", "Zulu"}, "Travel"),      message("m7", {})};
    show(messages_);
  }
  void show(const MessageList& messages) {
    screen_->messages.set(messages);
    runPending();
  }

  Gtk::ListView& list() { return *find<Gtk::ListView>("sidebar.list"); }
  Glib::RefPtr<Gtk::SingleSelection> selection() {
    return std::dynamic_pointer_cast<Gtk::SingleSelection>(list().get_model());
  }
  Glib::RefPtr<Gtk::TreeListRow> rowAt(guint position) {
    return std::dynamic_pointer_cast<Gtk::TreeListRow>(selection()->get_object(position));
  }
  static std::string titleOf(const Glib::RefPtr<Gtk::TreeListRow>& row) {
    const auto item = std::dynamic_pointer_cast<SidebarItem>(row->get_item());
    return item->kind() == SidebarItem::Kind::heading ? "# " + item->title() : item->row().title;
  }
  std::vector<std::string> titles() {
    std::vector<std::string> found;
    for (guint position = 0; position < selection()->get_n_items(); ++position) {
      found.push_back(titleOf(rowAt(position)));
    }
    return found;
  }
  guint positionOf(const std::string& title) {
    for (guint position = 0; position < selection()->get_n_items(); ++position) {
      if (titleOf(rowAt(position)) == title) {
        return position;
      }
    }
    ADD_FAILURE() << "no row " << title;
    return 0;
  }
  /// Chooses a row as a click does, and gives the ids in the list.
  std::vector<std::string> choose(const std::string& title) {
    selection()->set_selected(positionOf(title));
    runPending();
    std::vector<std::string> ids;
    for (guint position = 0; position < window_->list().model()->get_n_items(); ++position) {
      ids.push_back(window_->list().model()->messageAt(position)->id.string());
    }
    return ids;
  }

  MessageList messages_;
};

using IDs = std::vector<std::string>;

TEST_F(SidebarViewTest, EveryKindOfRowFiltersTheList) {
  openWithMail();
  EXPECT_EQ(choose("First"), (IDs{"m1", "m2", "m3", "m4"}));
  EXPECT_EQ(screen_->activeTitle(), "First");
  EXPECT_EQ(choose("All Libraries").size(), 6U);
  EXPECT_EQ(choose("Inbox"), (IDs{"m1", "m2", "m6"}));
  EXPECT_EQ(screen_->activeTitle(), "Inbox");
  EXPECT_EQ(choose("Updates"), IDs{"m3"});
  EXPECT_EQ(choose("Travel"), (IDs{"m1", "m6"}));
  EXPECT_EQ(screen_->activeTitle(), "All Libraries");
  EXPECT_EQ(choose("Work"), (IDs{"m1", "m2", "m3"}));
  rowAt(positionOf("Work"))->set_expanded(true);
  runPending();
  EXPECT_EQ(choose("Todo"), IDs{"m2"});
  EXPECT_EQ(screen_->activeTitle(), "Todo");
  EXPECT_EQ(screen_->selectedMessageID(), Text("m2"));
}

TEST_F(SidebarViewTest, WithNoMessagesOnlyTheLibrariesStand) {
  open();
  EXPECT_EQ(titles(), (IDs{"# Libraries", "All Libraries"}));
}

TEST_F(SidebarViewTest, TheSectionsStandInTheirOrder) {
  openWithMail();
  EXPECT_EQ(titles(), (IDs{"# Libraries", "All Libraries", "First", "Second", "# Mailboxes", "Inbox", "Sent",
                           "# Gmail Categories", "Updates", "# Smart Categories", "Travel", "# Labels",
                           "Alpha", "Work", "Zulu"}));
}

TEST_F(SidebarViewTest, WithTheIntelligenceOffItsCategoriesAreAbsent) {
  openWithMail();
  settings_.set(SettingKey::intelligenceEnabled, false);
  runPending();
  const auto found = titles();
  EXPECT_EQ(std::ranges::count(found, "# Smart Categories"), 0);
  settings_.set(SettingKey::intelligenceEnabled, true);
  runPending();
  EXPECT_EQ(titles().at(9), "# Smart Categories");
}

TEST_F(SidebarViewTest, AnUnfoldedLabelStaysUnfoldedWhenCountsAndLabelsChange) {
  openWithMail();
  rowAt(positionOf("Work"))->set_expanded(true);
  runPending();
  selection()->set_selected(positionOf("Done"));
  runPending();
  messages_.push_back(message("m8", {"Work/Done", "Work/New", "Beta"}));
  messages_.erase(messages_.begin() + 4);  // With it goes the label Zulu.
  show(messages_);
  EXPECT_EQ(titles(), (IDs{"# Libraries", "All Libraries", "First", "Second", "# Mailboxes", "Inbox", "Sent",
                           "# Gmail Categories", "Updates", "# Smart Categories", "Travel", "# Labels",
                           "Alpha", "Beta", "Work", "Done", "New", "Todo"}));
  EXPECT_EQ(titleOf(rowAt(selection()->get_selected())), "Done");
  EXPECT_EQ(screen_->sidebarSelection(), SidebarSelection::label("Work/Done"));
  const auto item = std::dynamic_pointer_cast<SidebarItem>(rowAt(positionOf("Work"))->get_item());
  EXPECT_EQ(item->row().badge.count, 4);
}

TEST_F(SidebarViewTest, AFoldedSelectionIsShownAgainWhenItIsUnfolded) {
  openWithMail();
  rowAt(positionOf("Work"))->set_expanded(true);
  runPending();
  choose("Done");
  rowAt(positionOf("Work"))->set_expanded(false);
  runPending();
  EXPECT_EQ(screen_->sidebarSelection(), SidebarSelection::label("Work/Done"));
  EXPECT_EQ(window_->list().model()->size(), 1U);
  rowAt(positionOf("Work"))->set_expanded(true);
  runPending();
  EXPECT_EQ(titleOf(rowAt(selection()->get_selected())), "Done");
}

TEST_F(SidebarViewTest, TheScrollPositionStaysWhenCountsChange) {
  open();
  for (int i = 100; i < 300; ++i) {
    messages_.push_back(message("m" + std::to_string(i), {Text("Label " + std::to_string(i))}));
  }
  show(messages_);
  auto* scroller = dynamic_cast<Gtk::ScrolledWindow*>(list().get_parent());
  ASSERT_NE(scroller, nullptr);
  ASSERT_TRUE(runUntil([&] { return scroller->get_vadjustment()->get_upper() > 2000; }));
  scroller->get_vadjustment()->set_value(1000);
  runPending();
  const double before = scroller->get_vadjustment()->get_value();
  auto changed = std::make_shared<EmailMessage>(*messages_[150]);
  changed->labels = {"Label 120", "Inbox"};
  messages_[150] = changed;
  show(messages_);
  EXPECT_EQ(
      std::dynamic_pointer_cast<SidebarItem>(rowAt(positionOf("Label 120"))->get_item())->row().badge.count,
      2);
  // A section has come and a row has gone above or below; the rows in view may move by their height at most.
  EXPECT_NEAR(scroller->get_vadjustment()->get_value(), before, 150);
}

TEST_F(SidebarViewTest, AChangedCategoryTouchesNoOtherSection) {
  openWithMail();
  const auto labels = rowAt(positionOf("Work"))->get_item();
  screen_->setCategory("m3", "Finance");
  ASSERT_TRUE(runUntil([&] { return titles().at(10) == "Finance"; }));
  EXPECT_EQ(rowAt(positionOf("Work"))->get_item(), labels);
  EXPECT_EQ(titles().at(11), "Travel");
}

TEST_F(SidebarViewTest, AThousandLabelsUnderOneComeAndGo) {
  open();
  for (int i = 0; i < 1000; ++i) {
    messages_.push_back(message("m" + std::to_string(i), {Text("Root/" + std::to_string(i))}));
  }
  show(messages_);
  rowAt(positionOf("Root"))->set_expanded(true);
  runPending();
  EXPECT_EQ(selection()->get_n_items(), 4U + 1000U);
  show({messages_[7], messages_[500]});
  EXPECT_EQ(titles(), (IDs{"# Libraries", "All Libraries", "# Labels", "Root", "500", "7"}));
}

}  // namespace
}  // namespace tidewrack
