#pragma once

#include <vector>

#include "screen/intelligence_settings.h"
#include "ui/settings_form.h"

namespace tidewrack::ui {

/// Whether the on-device model is there, and what it may do.
class IntelligenceSettingsTab : public SettingsForm {
 public:
  /// All outlive the view.
  IntelligenceSettingsTab(Settings& settings, IntelligenceService& service, Executor& executor);

 private:
  void addStatus();
  void addSwitches();
  void addExplanations();
  void addRequirements();
  void refreshStatus();

  Settings& settings_;
  IntelligenceSettings model_;
  AdwActionRow* status_ = nullptr;
  Gtk::Spinner spinner_;
  Gtk::Button* systemSettings_ = nullptr;
  std::vector<AdwActionRow*> requirements_;
};

}  // namespace tidewrack::ui
