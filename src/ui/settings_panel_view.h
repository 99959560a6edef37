#pragma once

#include <functional>
#include <memory>

#include <adwaita.h>
#include <gtkmm.h>

#include "intelligence/intelligence_service.h"
#include "platform/executor.h"
#include "platform/settings.h"
#include "screen/settings_panel.h"
#include "sync/cloud_sync_monitor.h"

namespace tidewrack::ui {

/// What the settings show and change. All outlive the views.
struct SettingsSubjects {
  Settings& settings;
  IntelligenceService& intelligence;
  Executor& executor;
  iCloudSyncMonitor* syncMonitor;  ///< Null: nothing replicates the store; the tab shows it idle.
};

/// The settings panel: four tabs in a fixed size. Main thread only.
class SettingsPanelView : public Gtk::Box {
 public:
  /// `close` is what the close button does; without one there is no such button, and the window's own
  /// buttons stand in its place.
  SettingsPanelView(const SettingsSubjects& subjects, std::function<void()> close);

  [[nodiscard]] SettingsPanel& panel() { return panel_; }

 private:
  void addHeader(std::function<void()> close);
  void addTab(SettingsPanel::SettingsTab tab, Gtk::Widget& content);
  void followSelection();

  SettingsPanel panel_;
  std::unique_ptr<iCloudSyncMonitor> ownMonitor_;
  AdwViewStack* stack_ = nullptr;
  Subscription selection_;
};

}  // namespace tidewrack::ui
