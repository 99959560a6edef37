#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/observable.h"
#include "platform/settings.h"
#include "screen/settings_panel.h"
#include "sync/cloud_sync_monitor.h"

namespace tidewrack {

/// The tab of the cloud sync. The switch takes effect at the next launch. Main thread only; both outlive it.
class CloudSettings {
 public:
  CloudSettings(Settings& settings, iCloudSyncMonitor& monitor) : settings_(settings), monitor_(monitor) {}

  [[nodiscard]] static std::string title();
  [[nodiscard]] static SettingToggle syncToggle();
  [[nodiscard]] static std::string syncFooter();
  /// The user has moved the switch.
  void switchSync(bool isOn);
  Observable<bool> showingSyncRestart{false};
  [[nodiscard]] static std::string restartTitle();
  [[nodiscard]] static std::string restartMessage();

  /// Whether there is a status to show.
  [[nodiscard]] bool showsStatus() const;
  [[nodiscard]] InformativeRow statusRow() const;
  /// The line below the status; none where there is nothing to say.
  [[nodiscard]] std::optional<std::string> lastSyncText() const;

  [[nodiscard]] static InformativeRow visibilityRow();
  [[nodiscard]] static std::vector<InformativeRow> aboutRows();

 private:
  Settings& settings_;
  iCloudSyncMonitor& monitor_;
};

}  // namespace tidewrack
