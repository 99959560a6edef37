#pragma once

#include <gtkmm.h>

#include "ui/settings_panel_view.h"

namespace tidewrack::ui {

/// The settings in a window of their own, of a fixed size. Main thread only; the widgets live as long as
/// this object.
class SettingsWindow {
 public:
  SettingsWindow(Gtk::Application& application, const SettingsSubjects& subjects);
  ~SettingsWindow();
  SettingsWindow(const SettingsWindow&) = delete;
  SettingsWindow& operator=(const SettingsWindow&) = delete;

  void present() { window_->present(); }
  [[nodiscard]] Gtk::Window& window() { return *window_; }
  [[nodiscard]] SettingsPanel& panel() { return view_->panel(); }

 private:
  Gtk::Window* window_ = nullptr;
  SettingsPanelView* view_ = nullptr;
};

}  // namespace tidewrack::ui
