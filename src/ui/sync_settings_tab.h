#pragma once

#include "screen/cloud_settings.h"
#include "ui/settings_form.h"

namespace tidewrack::ui {

/// The switch of the cloud sync, what the sync does at the moment, and where the mail is.
class iCloudSettingsView : public SettingsForm {
 public:
  /// Both outlive the view.
  iCloudSettingsView(Settings& settings, iCloudSyncMonitor& monitor);

 private:
  void addStatus(iCloudSyncMonitor& monitor);
  void showRestartAlert();

  Settings& settings_;
  CloudSettings model_;
};

}  // namespace tidewrack::ui
