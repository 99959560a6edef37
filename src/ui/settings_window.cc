#include "ui/settings_window.h"

#include "platform/localized.h"
#include "ui/widgets.h"

namespace tidewrack::ui {

SettingsWindow::SettingsWindow(Gtk::Application& application, const SettingsSubjects& subjects) {
  GtkWidget* window = adw_window_new();
  window_ = dynamic_cast<Gtk::Window*>(Glib::wrap(window));
  gtk_window_set_application(window_->gobj(), application.gobj());
  window_->set_title(localized("settings_button", "Settings", "Settings button"));
  window_->set_icon_name(application.get_id());
  window_->set_resizable(false);
  window_->set_hide_on_close(true);
  setIdentifier(*window_, "settings.window");
  view_ = Gtk::make_managed<SettingsPanelView>(subjects, nullptr);
  adw_window_set_content(ADW_WINDOW(window), GTK_WIDGET(view_->gobj()));

  const auto keys = Gtk::EventControllerKey::create();
  keys->signal_key_pressed().connect(
      [this](guint key, guint, Gdk::ModifierType) {
        if (key == GDK_KEY_Escape) {
          window_->close();
        }
        return key == GDK_KEY_Escape;
      },
      false);
  window_->add_controller(keys);
}

SettingsWindow::~SettingsWindow() {
  gtk_window_destroy(window_->gobj());
}

}  // namespace tidewrack::ui
