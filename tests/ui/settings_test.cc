#include <string>

#include <adwaita.h>

#include "platform/app_language.h"
#include "ui/settings_window.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

using Tab = SettingsPanel::SettingsTab;

class SettingsWindowTest : public WindowTest {
 protected:
  /// Opens the settings in their window on a tab.
  ui::SettingsWindow& openSettings(Tab tab = Tab::general) {
    executor_ = std::make_unique<MainLoopExecutor>();
    settingsWindow_ = std::make_unique<ui::SettingsWindow>(
        testApplication(), ui::SettingsSubjects{settings_, intelligence_, *executor_, &monitor_});
    settingsWindow_->panel().selectedTab.set(tab);
    settingsWindow_->present();
    runUntil([this] { return widget("settings.root") != nullptr; });
    runPending();
    return *settingsWindow_;
  }
  Gtk::Widget* widget(const std::string& name) {
    return findWidget(GTK_WIDGET(settingsWindow_->window().gobj()), name);
  }
  Gtk::Switch* toggle(SettingKey key) {
    return dynamic_cast<Gtk::Switch*>(widget(std::string("settings.toggle.") + definition(key).name));
  }
  static const char* subtitle(Gtk::Widget* row) {
    return adw_action_row_get_subtitle(ADW_ACTION_ROW(row->gobj()));
  }
  static const char* title(Gtk::Widget* row) {
    return adw_preferences_row_get_title(ADW_PREFERENCES_ROW(row->gobj()));
  }
  static std::string alertText() {
    return alert() == nullptr ? "" : adw_message_dialog_get_heading(ADW_MESSAGE_DIALOG(alert()));
  }

  iCloudSyncMonitor monitor_{settings_};
  std::unique_ptr<ui::SettingsWindow> settingsWindow_;
};

TEST_F(SettingsWindowTest, TheWindowHasItsFixedSize) {
  ui::SettingsWindow& opened = openSettings();
  EXPECT_FALSE(opened.window().get_resizable());
  EXPECT_EQ(widget("settings.root")->get_width(), 600);
  EXPECT_EQ(widget("settings.root")->get_height(), 500);
  EXPECT_EQ(widget("settings.close"), nullptr);
  EXPECT_FALSE(opened.panel().showsCloseButton);
}

TEST_F(SettingsWindowTest, EachTabShowsItsContent) {
  ui::SettingsWindow& opened = openSettings();
  EXPECT_NE(toggle(SettingKey::confirmBeforeDelete), nullptr);
  EXPECT_NE(widget("settings.language"), nullptr);
  EXPECT_NE(widget("settings.aboutMBOX"), nullptr);
  opened.panel().selectedTab.set(Tab::sync);
  EXPECT_EQ(toggle(SettingKey::confirmBeforeDelete), nullptr);
  EXPECT_NE(toggle(SettingKey::iCloudSyncEnabled), nullptr);
  opened.panel().selectedTab.set(Tab::spotlight);
  EXPECT_NE(toggle(SettingKey::spotlightIndexingEnabled), nullptr);
  EXPECT_NE(widget("settings.rebuildIndex"), nullptr);
  opened.panel().selectedTab.set(Tab::intelligence);
  EXPECT_NE(toggle(SettingKey::intelligenceEnabled), nullptr);
  EXPECT_NE(widget("settings.features"), nullptr);
}

TEST_F(SettingsWindowTest, ASwitchAndItsSettingFollowEachOther) {
  openSettings();
  for (const SettingKey key :
       {SettingKey::confirmBeforeDelete, SettingKey::enableSearchIndexing, SettingKey::autoOpenLastLibrary,
        SettingKey::showMessagePreview, SettingKey::avatarGravatarEnabled}) {
    Gtk::Switch* control = toggle(key);
    ASSERT_NE(control, nullptr) << definition(key).name;
    const bool before = settings_.boolean(key);
    EXPECT_EQ(control->get_active(), before);
    control->set_active(!before);
    EXPECT_EQ(settings_.boolean(key), !before);
    settings_.set(key, before);
    EXPECT_EQ(control->get_active(), before);
  }
}

TEST_F(SettingsWindowTest, ChoosingALanguageStoresItAndTellsOfTheRestart) {
  openSettings();
  auto* row = ADW_COMBO_ROW(widget("settings.language")->gobj());
  EXPECT_EQ(adw_combo_row_get_selected(row), 0U);
  adw_combo_row_set_selected(row, 8);
  EXPECT_EQ(settings_.string(SettingKey::appLanguage), "ar");
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  EXPECT_EQ(alertText(), "Reinicio requerido");
  gtk_window_close(alert());
  EXPECT_TRUE(runUntil([] { return alert() == nullptr; }));
  settings_.set(SettingKey::appLanguage, std::string("EN"));
  EXPECT_EQ(adw_combo_row_get_selected(row), 0U) << "a text that matches no case shows as the system's";
  runPending();
  EXPECT_EQ(alert(), nullptr);
  EXPECT_EQ(settings_.string(SettingKey::appLanguage), "EN");
}

TEST_F(SettingsWindowTest, AMaximumOutsideTheRangeIsShownAsItIs) {
  settings_.set(SettingKey::maxMessagesPerImport, std::int64_t{123'456});
  openSettings();
  EXPECT_STREQ(title(widget("settings.maximum")), "Máximo de mensajes por importación: 123456");
  auto* raise = dynamic_cast<Gtk::Button*>(widget("settings.maximum.raise"));
  auto* lower = dynamic_cast<Gtk::Button*>(widget("settings.maximum.lower"));
  EXPECT_FALSE(raise->get_sensitive());
  gtk_widget_activate(GTK_WIDGET(lower->gobj()));
  ASSERT_TRUE(runUntil([this] { return settings_.integer(SettingKey::maxMessagesPerImport) == 100'000; }));
  EXPECT_STREQ(title(widget("settings.maximum")), "Máximo de mensajes por importación: 100000");
}

TEST_F(SettingsWindowTest, SwitchingSyncTellsOfTheRestartAndHidesTheStatus) {
  openSettings(Tab::sync);
  ASSERT_NE(widget("settings.syncStatus"), nullptr);
  EXPECT_STREQ(title(widget("settings.syncStatus")), "iCloud sync is on");
  EXPECT_STREQ(subtitle(widget("settings.syncStatus")), "Waiting for the first sync to complete…");
  monitor_.handleEvent({StoreSyncEvent::importType, std::nullopt, std::nullopt});
  EXPECT_STREQ(title(widget("settings.syncStatus")), "Downloading from iCloud…");
  toggle(SettingKey::iCloudSyncEnabled)->set_active(false);
  EXPECT_EQ(widget("settings.syncStatus"), nullptr);
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  EXPECT_EQ(alertText(), "Restart Required");
  gtk_window_close(alert());
}

TEST_F(SettingsWindowTest, ChangedIndexOptionsShowTheStaleWarning) {
  openSettings(Tab::spotlight);
  EXPECT_EQ(widget("settings.staleWarning"), nullptr);
  toggle(SettingKey::indexMessageBodies)->set_active(false);
  toggle(SettingKey::indexMessageBodies)->set_active(true);
  EXPECT_NE(widget("settings.staleWarning"), nullptr);
  toggle(SettingKey::spotlightIndexingEnabled)->set_active(false);
  EXPECT_EQ(widget("settings.spotlightStatus"), nullptr);
}

TEST_F(SettingsWindowTest, TheIntelligenceTabSaysWhatItFinds) {
  openSettings(Tab::intelligence);
  ASSERT_TRUE(runUntil(
      [this] { return std::string(title(widget("settings.intelligenceStatus"))) == "No disponible"; }));
  toggle(SettingKey::intelligenceEnabled)->set_active(false);
  EXPECT_EQ(widget("settings.features"), nullptr);
}

TEST_F(SettingsWindowTest, TheToolbarOpensTheSheetWhichItsButtonCloses) {
  open();
  auto* button = find<Gtk::Button>("toolbar.settings");
  ASSERT_NE(button, nullptr);
  gtk_widget_activate(GTK_WIDGET(button->gobj()));
  ASSERT_TRUE(runUntil([this] { return find("settings.root") != nullptr; }));
  EXPECT_TRUE(screen_->isShowingSettings());
  runPending();
  EXPECT_EQ(find("settings.root")->get_width(), 600);
  EXPECT_EQ(find("settings.root")->get_height(), 500);
  auto* close = find<Gtk::Button>("settings.close");
  ASSERT_NE(close, nullptr);
  gtk_widget_activate(GTK_WIDGET(close->gobj()));
  EXPECT_TRUE(runUntil([this] { return find("settings.root") == nullptr; }));
  EXPECT_FALSE(screen_->isShowingSettings());
}

}  // namespace
}  // namespace tidewrack
