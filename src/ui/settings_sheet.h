#pragma once

#include "intelligence/intelligence_service.h"
#include "platform/observable.h"
#include "screen/content_view.h"
#include "ui/settings_panel_view.h"
#include "ui/sheet.h"

namespace tidewrack::ui {

/// What the settings of a screen change.
SettingsSubjects settingsSubjects(ContentView& screen, IntelligenceService& intelligence);

/// The settings over the main window, for as long as the screen says so. Each time the panel is a new one.
class SettingsSheet : public Sheet {
 public:
  SettingsSheet(ContentView& screen, IntelligenceService& intelligence, Gtk::Widget& covered);

 private:
  void refresh();

  ContentView& screen_;
  IntelligenceService& intelligence_;
  Subscription subscription_;
};

}  // namespace tidewrack::ui
