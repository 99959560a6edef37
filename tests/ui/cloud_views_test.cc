// What the window offers of the cloud: the buttons of the welcome, and the cards of libraries to adopt.

#include <string>
#include <vector>

#include <adwaita.h>

#include "ui/discovered_libraries_sheet.h"
#include "ui/welcome_view.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

class CloudViewsTest : public WindowTest {
 protected:
  ~CloudViewsTest() override { view_.unset_child(); }

  /// A view of its own beside the window, with all that it can offer.
  void showWelcome(bool isCloudEnabled) {
    settings_.set(SettingKey::iCloudSyncEnabled, isCloudEnabled);
    open();
    ui::WelcomeView::Actions actions;
    actions.onImport = [this] { done_.emplace_back("import"); };
    actions.onRestore = [this] { done_.emplace_back("restore"); };
    actions.onShowDiscovered = [this] { done_.emplace_back("discovered"); };
    view_.set_child(*Gtk::make_managed<ui::WelcomeView>(*screen_, std::move(actions)));
    view_.present();
    runPending();
  }
  void discover(std::vector<std::string> names) {
    std::vector<DiscoveredLibrary> libraries;
    for (const auto& name : names) {
      libraries.emplace_back();
      libraries.back().id = name;
      libraries.back().displayName = name;
    }
    screen_->discoveredRemoteLibraries.set(libraries);
    runPending();
  }
  Gtk::Widget* widget(const std::string& name) { return findWidget(GTK_WIDGET(view_.gobj()), name); }
  std::string label(const std::string& name) {
    auto* button = dynamic_cast<Gtk::Button*>(widget(name));
    return button == nullptr ? "none" : button->get_label().raw();
  }
  void click(const std::string& name) {
    ASSERT_NE(widget(name), nullptr) << name;
    g_signal_emit_by_name(widget(name)->gobj(), "clicked");
  }
  static bool holdsSpinner(GtkWidget* widget) {
    if (GTK_IS_SPINNER(widget)) {
      return gtk_spinner_get_spinning(GTK_SPINNER(widget)) != FALSE &&
             gtk_widget_get_visible(widget) != FALSE;
    }
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
      if (holdsSpinner(child)) {
        return true;
      }
    }
    return false;
  }

  Gtk::Window view_;
  std::vector<std::string> done_;
};

TEST_F(CloudViewsTest, WithCloudSyncOffTheWelcomeOffersOnlyTheImport) {
  showWelcome(false);
  discover({"far"});
  EXPECT_NE(widget("welcome.importButton"), nullptr);
  EXPECT_EQ(widget("welcome.restoreButton"), nullptr);
  EXPECT_EQ(widget("welcome.discoveredButton"), nullptr);
  click("welcome.importButton");
  EXPECT_EQ(done_, std::vector<std::string>{"import"});
}

TEST_F(CloudViewsTest, WithNoDiscoveredLibraryTheThirdButtonIsHiddenAndItsTextIsTheSameForOneAndForMore) {
  showWelcome(true);
  EXPECT_NE(widget("welcome.restoreButton"), nullptr);
  EXPECT_EQ(widget("welcome.discoveredButton"), nullptr);
  discover({"far"});
  EXPECT_EQ(label("welcome.discoveredButton"), "1 library(ies) available in iCloud");
  discover({"far", "farther"});
  EXPECT_EQ(label("welcome.discoveredButton"), "2 library(ies) available in iCloud");
  click("welcome.discoveredButton");
  EXPECT_EQ(done_, std::vector<std::string>{"discovered"});
}

TEST_F(CloudViewsTest, ARestoreUnderWayShowsASpinnerAndTakesNoSecondClick) {
  showWelcome(true);
  ASSERT_NE(widget("welcome.restoreButton"), nullptr);
  EXPECT_FALSE(holdsSpinner(widget("welcome.restoreButton")->gobj()));
  click("welcome.restoreButton");
  EXPECT_EQ(done_, std::vector<std::string>{"restore"});
  screen_->isRestoringFromiCloud.set(true);
  EXPECT_TRUE(holdsSpinner(widget("welcome.restoreButton")->gobj()));
  EXPECT_FALSE(widget("welcome.restoreButton")->get_sensitive());
}

TEST_F(CloudViewsTest, TwoLibrariesAdoptedAtOnceEachShowTheirOwnSpinner) {
  open();
  auto* overlay = Gtk::make_managed<Gtk::Overlay>();
  auto* covered = Gtk::make_managed<Gtk::Box>();
  overlay->set_child(*covered);
  overlay->add_overlay(*Gtk::make_managed<ui::DiscoveredLibrariesSheet>(
      *screen_, *covered,
      [this](const DiscoveredLibrary& library) { done_.push_back(library.id.string()); }));
  view_.set_child(*overlay);
  view_.present();
  discover({"far", "farther", "near"});
  screen_->adoptingLibraryIDs.set({"far", "near"});
  screen_->isShowingDiscoveredLibraries.set(true);
  runPending();
  for (const std::string id : {"far", "farther", "near"}) {
    auto* button = widget("discoveredLibrary.adopt." + id);
    ASSERT_NE(button, nullptr) << id;
    EXPECT_EQ(holdsSpinner(button->gobj()), id != "farther") << id;
    EXPECT_EQ(button->get_sensitive(), id == "farther") << id;
  }
  click("discoveredLibrary.adopt.farther");
  EXPECT_EQ(done_, std::vector<std::string>{"farther"});
}

TEST_F(CloudViewsTest, AnImportErrorWhileASheetIsOpenIsToldOverItAndClosingItClearsOnlyThatField) {
  open();
  screen_->isShowingSettings.set(true);
  runPending();
  screen_->importErrorMessage.set("The file is gone.");
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  EXPECT_STREQ(adw_message_dialog_get_body(ADW_MESSAGE_DIALOG(alert())), "The file is gone.");
  gtk_window_close(alert());
  EXPECT_TRUE(runUntil([this] { return !screen_->importErrorMessage(); }));
  EXPECT_TRUE(screen_->isShowingSettings());
  EXPECT_NE(find("settings.root"), nullptr);
}

TEST_F(CloudViewsTest, AFurtherImportErrorTakesThePlaceOfTheOneBefore) {
  open();
  screen_->importErrorMessage.set("The first file is gone.");
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  screen_->importErrorMessage.set("The second file is gone.");
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  EXPECT_STREQ(adw_message_dialog_get_body(ADW_MESSAGE_DIALOG(alert())), "The second file is gone.");
  EXPECT_EQ(screen_->importErrorMessage(), "The second file is gone.");
  gtk_window_close(alert());
  EXPECT_TRUE(runUntil([this] { return !screen_->importErrorMessage() && alert() == nullptr; }));
  screen_->importErrorMessage.set("A third one.");
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  screen_->importErrorMessage.set(std::nullopt);
  EXPECT_TRUE(runUntil([] { return alert() == nullptr; }));
}

}  // namespace
}  // namespace tidewrack
