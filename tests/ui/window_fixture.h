#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <gtkmm.h>

#include "intelligence/intelligence_service.h"
#include "platform/main_loop_executor.h"
#include "platform/settings.h"
#include "screen/content_view.h"
#include "support/temporary_folder.h"
#include "ui/main_window.h"

namespace tidewrack {

/// Runs the main loop until `isDone` says yes; false when it has not within `seconds`.
bool runUntil(const std::function<bool()>& isDone, int seconds = 60);

/// Runs the main loop until nothing is left to do at once.
void runPending();

/// The application that windows of the tests belong to; starts GTK and libadwaita when first asked for.
Gtk::Application& testApplication();

/// A test with widgets of its own as fields.
class WidgetTest : public testing::Test {
 protected:
  WidgetTest() { testApplication(); }
};

/// The first visible widget of this name in or below `root`, or null.
Gtk::Widget* findWidget(GtkWidget* root, const std::string& name);

/// Does what a key does that a shortcut of `widget`, or of a widget around it, waits for; false for none.
bool pressShortcut(Gtk::Widget& widget, guint key, Gdk::ModifierType modifiers);

/// A message of an archive: its header lines (with their line ends) and its body.
std::string archivedMessage(const std::string& headers, const std::string& body);

/// The real window over the real screen and store, in a folder of its own.
class WindowTest : public testing::Test {
 protected:
  WindowTest();
  ~WindowTest() override;

  /// Opens the store, the screen and the window, and waits for all that a start sets off. After `close`, a
  /// restart.
  void open();
  void close();

  /// Writes an archive and gives its path.
  std::filesystem::path archive(const std::string& name, const std::string& bytes) const;
  /// Imports as the desktop's "open with" does, and waits for the end of the run.
  void import(const std::filesystem::path& file);

  /// The visible widget of this name, or null.
  Gtk::Widget* find(const std::string& name);
  template <typename Widget>
  Widget* find(const std::string& name) {
    return dynamic_cast<Widget*>(find(name));
  }
  /// Presses the button of this name, which is visible and sensitive, and lets what it does run.
  void press(const std::string& name);
  /// The window of an alert, or null.
  static GtkWindow* alert();

  /// Opens the store and the screen alone.
  ContentView& startScreen();

  /// Waits for the flows that have begun.
  void letFlowsEnd();

  std::vector<std::string> arguments_ = {"tidewrack"};  ///< Of the screen that is opened next.
  TemporaryFolder folder_;
  Settings settings_;
  UnavailableIntelligenceService intelligence_;
  IntelligenceService* service_ = &intelligence_;  ///< The model of the windows that `open` makes.
  std::unique_ptr<ContentView> screen_;
  std::unique_ptr<MainLoopExecutor> executor_;  ///< Goes before the screen, which its flows use.
  std::unique_ptr<ui::MainWindow> window_;
};

}  // namespace tidewrack
