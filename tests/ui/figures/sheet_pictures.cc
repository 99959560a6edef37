// Draws the sheets, alerts and settings of the real window over made-up mail:
//   TIDEWRACK_PICTURES=FOLDER tidewrack-sheet-pictures
// TIDEWRACK_LANGUAGE is the language, as the setting has it; TIDEWRACK_DARK makes the desktop dark, and the
// names of the files end in "-dark".

#include <array>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include <adwaita.h>

#include "platform/app_language.h"
#include "ui/settings_panel_view.h"
#include "ui/window_fixture.h"
#include "ui/window_picture.h"

namespace tidewrack {
namespace {

constexpr int margin = 20;  // of the window around a sheet

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

class SheetPictures : public WindowTest {
 protected:
  static void SetUpTestSuite() {
    applyLanguage(appLanguageFromRawValue(environment("TIDEWRACK_LANGUAGE")));
    testApplication();
    gtk_widget_set_default_direction(isInterfaceRightToLeft() ? GTK_TEXT_DIR_RTL : GTK_TEXT_DIR_LTR);
    adw_style_manager_set_color_scheme(adw_style_manager_get_default(), environment("TIDEWRACK_DARK").empty()
                                                                            ? ADW_COLOR_SCHEME_FORCE_LIGHT
                                                                            : ADW_COLOR_SCHEME_FORCE_DARK);
  }
  void openDemo() {
    arguments_ = {"tidewrack", "--screenshots"};
    open();
  }

  static std::filesystem::path file(const std::string& name) {
    const char* end = environment("TIDEWRACK_DARK").empty() ? ".png" : "-dark.png";
    return std::filesystem::path(environment("TIDEWRACK_PICTURES")) / (name + end);
  }
  // Lets what fades in or slides come to rest.
  static void rest() {
    runUntil([] { return false; }, 1);
  }
  static void savePicture(const std::string& name, Gtk::Window& window) {
    rest();
    ASSERT_TRUE(ui::writePicture(window, file(name)));
  }
  // The part of the window in which the widget of this name lies, with a little around it.
  void saveSheet(const std::string& name, const std::string& root) {
    auto* widget = find(root);
    ASSERT_NE(widget, nullptr) << root;
    savePicture(name, window_->window());
    graphene_rect_t bounds;
    ASSERT_TRUE(gtk_widget_compute_bounds(widget->gobj(), GTK_WIDGET(window_->window().gobj()), &bounds));
    const auto whole = Gdk::Pixbuf::create_from_file(file(name));
    const int left = std::max(0, static_cast<int>(bounds.origin.x) - margin);
    const int top = std::max(0, static_cast<int>(bounds.origin.y) - margin);
    const int width = std::min(whole->get_width() - left, static_cast<int>(bounds.size.width) + 2 * margin);
    const int height = std::min(whole->get_height() - top, static_cast<int>(bounds.size.height) + 2 * margin);
    Gdk::Pixbuf::create_subpixbuf(whole, left, top, width, height)
        ->save(file(name), "png", {"compression"}, {"9"});
  }
  static Gtk::Window& windowOf(GtkWindow* window) {
    return *dynamic_cast<Gtk::Window*>(Glib::wrap(GTK_WIDGET(window)));
  }
};

TEST_F(SheetPictures, Welcome) {
  open();
  savePicture("welcome", window_->window());
}

TEST_F(SheetPictures, ManageLibraries) {
  openDemo();
  screen_->isShowingManageLibrariesSheet.set(true);
  runPending();
  saveSheet("manage-libraries", "manageLibraries.root");
  screen_->requestRename(screen_->libraries().front());
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  savePicture("rename-library", windowOf(alert()));
  gtk_window_close(alert());
}

// Deeper and longer than most have them.
constexpr std::array deepLabels = {
    "Projects/Harbour extension/Planning permission/Correspondence with the "
    "council/2024/Objections/Answered/Filed",
    "Projects/Harbour extension/Planning permission/Correspondence with the council/2024/Objections/Open",
    "Projects/Harbour extension/Planning permission/Correspondence with the council/2025",
    "Projects/Harbour extension/Drawings",
    "Projects/Lighthouse",
    "Familie/Urlaub/Donaudampfschifffahrtsgesellschaft und andere lange Namen",
    "\u0627\u0644\u0645\u0634\u0627\u0631\u064a\u0639/\u062a\u0648\u0633\u064a\u0639 "
    "\u0627\u0644\u0645\u064a\u0646\u0627\u0621"
    "/\u0627\u0644\u0645\u0631\u0627\u0633\u0644\u0627\u062a/2025",
    "Receipts",
};

TEST_F(SheetPictures, LabelOutline) {
  open();
  std::string mail;
  int number = 0;
  for (const char* label : deepLabels) {
    for (int copy = 0; copy <= 400 * (number % 3); ++copy) {
      mail += archivedMessage(
          "Message-ID: <o" + std::to_string(mail.size()) +
              "@example.org>\nFrom: Ana <ana@example.org>\nSubject: Plans\nX-Gmail-Labels: " + "Inbox," +
              label + "\n",
          "Text");
    }
    ++number;
  }
  import(archive("Outline.mbox", mail));
  screen_->dismissImportStatus();
  const auto lines =
      std::dynamic_pointer_cast<Gtk::SingleSelection>(find<Gtk::ListView>("sidebar.list")->get_model());
  for (guint position = 0; position < lines->get_n_items(); ++position) {
    std::dynamic_pointer_cast<Gtk::TreeListRow>(lines->get_object(position))->set_expanded(true);
  }
  saveSheet("label-outline", "sidebar.list");
}

TEST_F(SheetPictures, DeleteLibrary) {
  openDemo();
  screen_->requestDelete(screen_->libraries().front());
  runPending();
  saveSheet("delete-library", "deletion.root");
}

TEST_F(SheetPictures, ImportProgress) {
  openDemo();
  screen_->importStatus.set(ImportStatus(
      ImportStatus::Importing{ImportProgressStep::savingMessages, "All mail.mbox", 1, 2, 2, 48'210}));
  screen_->showImportStatusSheet.set(true);
  runPending();
  saveSheet("import-progress", "importStatus.panel");
  screen_->importStatus.set(ImportStatus(ImportStatus::Success{2, 48'210}));
  saveSheet("import-success", "importStatus.panel");
}

TEST_F(SheetPictures, AdvancedSearch) {
  openDemo();
  screen_->isShowingAdvancedSearch.set(true);
  runPending();
  saveSheet("advanced-search", "advancedSearch.root");
}

TEST_F(SheetPictures, Export) {
  openDemo();
  screen_->isShowingExport.set(true);
  runPending();
  saveSheet("export", "export.root");
  screen_->isShowingExport.set(false);
}

TEST_F(SheetPictures, DiscoveredLibraries) {
  openDemo();
  DiscoveredLibrary library;
  library.id = "far";
  library.displayName = "Archive of the harbour office";
  library.messageCount = 1204;
  library.uniqueSendersCount = 87;
  library.uniqueConversationsCount = 410;
  library.attachmentCount = 96;
  library.earliestDate = Date(std::chrono::sys_days(std::chrono::year(2019) / 3 / 4));
  library.latestDate = Date(std::chrono::sys_days(std::chrono::year(2025) / 11 / 20));
  library.labels = {"Inbox", "Invoices", "Sent", "Tides", "Travel", "Work"};
  library.categories = {"Bills", "Work"};
  screen_->discoveredRemoteLibraries.set({library});
  screen_->isShowingDiscoveredLibraries.set(true);
  runPending();
  saveSheet("discovered-libraries", "discoveredLibraries.root");
}

TEST_F(SheetPictures, Settings) {
  openDemo();
  screen_->isShowingSettings.set(true);
  runPending();
  auto* panel = find<ui::SettingsPanelView>("settings.root");
  ASSERT_NE(panel, nullptr);
  using Tab = SettingsPanel::SettingsTab;
  for (const auto& [tab, name] :
       {std::pair(Tab::general, "general"), std::pair(Tab::sync, "sync"),
        std::pair(Tab::spotlight, "spotlight"), std::pair(Tab::intelligence, "intelligence")}) {
    panel->panel().selectedTab.set(tab);
    rest();
    saveSheet(std::string("settings-") + name, "settings.root");
  }
}

}  // namespace
}  // namespace tidewrack
