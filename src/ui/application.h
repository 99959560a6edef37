#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtkmm.h>

#include "intelligence/intelligence_service.h"
#include "platform/observable.h"
#include "screen/content_view.h"
#include "ui/main_window.h"
#include "ui/settings_window.h"

namespace tidewrack::ui {

/// The program as the desktop sees it: one instance, files opened with it, the actions "app.*". A second
/// launch hands its files to the first and ends. Main thread only.
class Application : public Gtk::Application {
 public:
  struct Configuration {
    /// Opens what the screen needs, in the first instance only and before any window. Throws Failure when
    /// the program cannot run.
    std::function<ContentView&()> start;
    /// Outlives the application.
    IntelligenceService& intelligence;
    /// The user has asked for help.
    std::function<void()> help;
    /// When not empty: once the mail stands, a picture of the window goes into this file and the program
    /// ends. Such a run is an instance of its own.
    std::string pictureFile;
  };

  static constexpr const char* applicationID = "io.marloon.Tidewrack";
  static Glib::RefPtr<Application> create(Configuration configuration);
  ~Application() override;

  /// Whether the start failed; the program then ends with a status of failure.
  [[nodiscard]] bool hasFailed() const { return !failure_.empty(); }
  /// The main window; null before the first activation.
  [[nodiscard]] MainWindow* mainWindow() { return window_.get(); }

 protected:
  explicit Application(Configuration configuration);
  void on_startup() override;
  void on_activate() override;
  void on_open(const Gio::Application::type_vec_files& files, const Glib::ustring& hint) override;

 private:
  void addActions();
  void close();
  bool ensureWindow();
  void showFailure();
  void showAbout();
  void showSettings();
  void openExportHelp();
  void takePictureWhenReady();
  void presentWhenLoaded();
  void presentNow();

  Configuration configuration_;
  ContentView* screen_ = nullptr;
  std::unique_ptr<MainWindow> window_;
  std::unique_ptr<SettingsWindow> settingsWindow_;
  std::string failure_;
  sigc::connection pictureTimer_;
  sigc::connection prefetchTimer_;
  sigc::connection presentTimer_;
  Subscription firstLoad_;
};

}  // namespace tidewrack::ui
