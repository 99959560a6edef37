#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidewrack {

class ContentView;

enum class ToolbarAction {
  manageLibraries,
  advancedSearch,
  exportMessages,
  importArchives,
  clearFilters,
  cloudStatus,
  discoveredLibraries,
  settings
};

/// One item of the toolbar in the present state, ready to be drawn.
struct ToolbarItem {
  ToolbarAction action{};
  std::string_view identifier = {};  ///< Accessibility identifier; empty where there is none.
  std::string_view icon = {};        ///< Platform symbol name.
  std::string_view tint = {};        ///< Colour name; empty for the ordinary colour.
  std::string label = {};  ///< Localised; for items without a text of their own also their accessible name.
  std::string help = {};   ///< Localised tip; may be empty.
  bool isEnabled = true;
  bool showsSpinner = false;               ///< A small spinner stands beside the item.
  std::optional<std::int64_t> badge = {};  ///< A bold white count on a badge.
  friend bool operator==(const ToolbarItem&, const ToolbarItem&) = default;
};

/// The text of every import button.
std::string importButtonTitle();

/// The items that are shown now, in their order. Follows libraries, messages, isImporting, advancedFilters,
/// iCloudSyncEnabled and discoveredRemoteLibraries. Main thread only.
std::vector<ToolbarItem> toolbarItems(const ContentView& screen);

/// Carries out an item's action on the screen's state. An item that is not enabled does nothing.
void perform(ToolbarAction action, ContentView& screen);

}  // namespace tidewrack
