#pragma once

#include "screen/spotlight_settings.h"
#include "ui/settings_form.h"

namespace tidewrack::ui {

/// What goes into the system-wide search index. Its maintenance rests while there is no such index.
class SpotlightSettingsTab : public SettingsForm {
 public:
  explicit SpotlightSettingsTab(Settings& settings);

 private:
  void addSearch();
  void addOptions();
  void addMaintenance();
  void addExplanations();

  Settings& settings_;
  SpotlightSettings model_;
};

}  // namespace tidewrack::ui
