#pragma once

#include <array>
#include <string>
#include <string_view>

#include "platform/observable.h"
#include "platform/settings.h"

namespace tidewrack {

/// What the settings panel shows. The same panel stands in a window of its own and in a sheet over the main
/// window; each has its own state. Main thread only.
struct SettingsPanel {
  enum class SettingsTab { general, sync, spotlight, intelligence };

  static constexpr int width = 600;
  static constexpr int height = 500;

  bool showsCloseButton = false;  ///< In a sheet, which has no window buttons.
  Observable<SettingsTab> selectedTab{SettingsTab::general};
};

/// In the order of the tabs.
inline constexpr std::array allSettingsTabs = {
    SettingsPanel::SettingsTab::general, SettingsPanel::SettingsTab::sync,
    SettingsPanel::SettingsTab::spotlight, SettingsPanel::SettingsTab::intelligence};

/// The stored form, which is also the tab's title in every language.
std::string_view rawValue(SettingsPanel::SettingsTab tab);
/// Platform symbol of the tab.
std::string_view symbol(SettingsPanel::SettingsTab tab);

/// A switch of the panel, bound to a setting.
struct SettingToggle {
  SettingKey key{};
  std::string title = {};
  std::string help = {};
  std::string_view symbol = {};  ///< Platform symbol; empty for none.
};

/// A row that tells something.
struct InformativeRow {
  std::string_view symbol = {};
  std::string title = {};
  std::string text = {};
  std::string_view tint = {};  ///< Colour name; empty for the ordinary colour.
};

}  // namespace tidewrack
