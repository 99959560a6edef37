#pragma once

#include "screen/general_settings.h"
#include "ui/settings_form.h"

namespace tidewrack::ui {

/// Preferences, language, sender pictures, import, and which program this is.
class GeneralSettingsTab : public SettingsForm {
 public:
  explicit GeneralSettingsTab(Settings& settings);

 private:
  void addLanguage();
  void addMaximum();
  void addInformation();
  void showRestartAlert();

  Settings& settings_;
  GeneralSettings model_;
};

}  // namespace tidewrack::ui
