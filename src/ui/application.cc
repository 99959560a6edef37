#include "ui/application.h"

#include <cstdio>
#include <utility>

#include <adwaita.h>

#include "platform/app_language.h"
#include "platform/failure.h"
#include "platform/localized.h"
#include "screen/help_page.h"
#include "ui/alerts.h"
#include "ui/archive_picker.h"
#include "ui/main_menu.h"
#include "ui/settings_sheet.h"
#include "ui/style.h"
#include "ui/web_library.h"
#include "ui/window_picture.h"

namespace tidewrack::ui {
namespace {

constexpr unsigned pictureDelayMilliseconds = 1500;  // the page of the first message has been painted
constexpr unsigned presentPatienceMilliseconds = 50;
constexpr unsigned prefetchDelayMilliseconds = 1000;  // not while the window is being drawn

}  // namespace

Glib::RefPtr<Application> Application::create(Configuration configuration) {
  return Glib::make_refptr_for_instance(new Application(std::move(configuration)));
}

Application::Application(Configuration configuration)
    : Gtk::Application(applicationID,
                       configuration.pictureFile.empty()
                           ? Gio::Application::Flags::HANDLES_OPEN
                           : Gio::Application::Flags::HANDLES_OPEN | Gio::Application::Flags::NON_UNIQUE),
      configuration_(std::move(configuration)) {}

Application::~Application() {
  close();
}

// The screen may go before the application does: nothing of it runs any more.
void Application::close() {
  pictureTimer_.disconnect();
  prefetchTimer_.disconnect();
  presentTimer_.disconnect();
  firstLoad_.reset();
  settingsWindow_.reset();
  window_.reset();
}

void Application::on_startup() {
  adw_init();
  Gtk::Application::on_startup();
  gtk_widget_set_default_direction(isInterfaceRightToLeft() ? GTK_TEXT_DIR_RTL : GTK_TEXT_DIR_LTR);
  installStyle();
  addActions();
  setShortcuts(*this);
  try {
    screen_ = &configuration_.start();
  } catch (const Failure& failure) {
    failure_ = failure.what();
    std::fprintf(stderr, "tidewrack: %s\n", failure_.c_str());
  }
}

void Application::addActions() {
  add_action("quit", [this] {
    close();
    quit();
  });
  add_action("about", [this] { showAbout(); });
  add_action("about-mbox", [this] { openExportHelp(); });
  add_action("help", [this] {
    if (configuration_.help) {
      configuration_.help();
    }
  });
  add_action("preferences", [this] { showSettings(); });
}

bool Application::ensureWindow() {
  if (hasFailed()) {
    if (configuration_.pictureFile.empty()) {
      showFailure();
    } else {
      quit();  // Nobody sits before the screen; standard error has the message.
    }
    return false;
  }
  if (!window_) {
    screen_->startup();  // Reads in the background while the window is being made.
    window_ = std::make_unique<MainWindow>(*this, *screen_, configuration_.intelligence);
    window_->window().signal_close_request().connect(
        [this] {
          activate_action("quit");
          return true;
        },
        false);
    prefetchTimer_ = Glib::signal_timeout().connect(
        [this] {
          screen_->services().executor.runInBackground(TaskPriority::utility, prefetchWebLibrary);
          return false;
        },
        prefetchDelayMilliseconds, Glib::PRIORITY_LOW);
    if (!configuration_.pictureFile.empty()) {
      takePictureWhenReady();
    }
    presentWhenLoaded();
  } else {
    window_->present();
  }
  return true;
}

// A short load is over before the window stands, which then does not have to change at once.
void Application::presentWhenLoaded() {
  firstLoad_ = screen_->isImporting.observe([this] {
    if (!screen_->isImporting()) {
      presentNow();
    }
  });
  presentTimer_ = Glib::signal_timeout().connect(
      [this] {
        presentNow();
        return false;
      },
      presentPatienceMilliseconds);
}

void Application::presentNow() {
  presentTimer_.disconnect();
  firstLoad_.reset();
  if (window_) {
    window_->present();
  }
}

void Application::on_activate() {
  ensureWindow();
}

void Application::on_open(const Gio::Application::type_vec_files& files, const Glib::ustring& /*hint*/) {
  if (ensureWindow()) {
    openFiles(files, *screen_);
  }
}

void Application::showFailure() {
  auto* dialog = ADW_MESSAGE_DIALOG(adw_message_dialog_new(
      nullptr, localized("start_error_title", "Tidewrack cannot start", "Title of a failed start").c_str(),
      failure_.c_str()));
  adw_message_dialog_add_response(dialog, "ok",
                                  localized("ok_button", "OK", "Default dismiss button").c_str());
  gtk_window_set_application(GTK_WINDOW(dialog), gobj());
  gtk_window_present(GTK_WINDOW(dialog));
}

void Application::showSettings() {
  if (hasFailed() || screen_ == nullptr) {
    return;
  }
  // Each time a new one: its state goes with it.
  if (!settingsWindow_ || !settingsWindow_->window().get_visible()) {
    settingsWindow_ =
        std::make_unique<SettingsWindow>(*this, settingsSubjects(*screen_, configuration_.intelligence));
  }
  settingsWindow_->present();
}

void Application::showAbout() {
  auto* about = ADW_ABOUT_WINDOW(adw_about_window_new());
  adw_about_window_set_application_name(about, "Tidewrack");
  adw_about_window_set_application_icon(about, applicationID);
  adw_about_window_set_version(about, TIDEWRACK_VERSION);
  adw_about_window_set_comments(
      about, localized("about_comments", "A reader for mail archives", "About window").c_str());
  if (window_) {
    gtk_window_set_transient_for(GTK_WINDOW(about), GTK_WINDOW(window_->window().gobj()));
  }
  gtk_window_present(GTK_WINDOW(about));
}

void Application::openExportHelp() {
  gtk_show_uri(window_ ? GTK_WINDOW(window_->window().gobj()) : nullptr, exportHelpURL, GDK_CURRENT_TIME);
}

void Application::takePictureWhenReady() {
  // Started anew for as long as something is under way.
  pictureTimer_ = Glib::signal_timeout().connect(
      [this] {
        if (screen_->isImporting() || !screen_->hasLoadedPersistedLibraries()) {
          return true;
        }
        if (screen_->importStatus() && screen_->importStatus()->showsDismissButton()) {
          screen_->dismissImportStatus();
          return true;
        }
        if (!writePicture(window_->window(), configuration_.pictureFile)) {
          failure_ = "no picture";
          std::fprintf(stderr, "tidewrack: could not write %s\n", configuration_.pictureFile.c_str());
        }
        activate_action("quit");
        return false;
      },
      pictureDelayMilliseconds);
}

}  // namespace tidewrack::ui
