#include "screen/toolbar.h"

#include <algorithm>

#include "platform/localized.h"
#include "screen/content_view.h"

namespace tidewrack {

std::string importButtonTitle() {
  return localized("import_mbox_button", "Import MBOX…", "Toolbar import action");
}

std::vector<ToolbarItem> toolbarItems(const ContentView& screen) {
  std::vector<ToolbarItem> items;
  items.push_back({.action = ToolbarAction::manageLibraries,
                   .identifier = "toolbar.manageLibraries",
                   .icon = "books.vertical.circle",
                   .label = localized("manage_libraries", "Manage Libraries", "Manage libraries button"),
                   .isEnabled = !screen.libraries().empty()});
  items.push_back(
      {.action = ToolbarAction::advancedSearch,
       .identifier = "toolbar.advancedSearch",
       .icon = "line.3.horizontal.decrease.circle",
       .label = localized("Advanced_search", "Advanced Search", "Advanced search button"),
       .help = localized("advanced_search_help", "Advanced search filters", "Advanced search help"),
       .isEnabled = !screen.messages().empty()});
  const std::string exportHelp =
      localized("export_button_help", "Export filtered messages", "Export button help");
  items.push_back({.action = ToolbarAction::exportMessages,
                   .identifier = "toolbar.export",
                   .icon = "square.and.arrow.up",
                   .label = exportHelp,
                   .help = exportHelp});
  items.push_back({.action = ToolbarAction::importArchives,
                   .identifier = "toolbar.import",
                   .icon = "tray.and.arrow.down",
                   .label = importButtonTitle(),
                   .isEnabled = !screen.isImporting(),
                   .showsSpinner = screen.isImporting()});
  if (screen.advancedFilters().isActive()) {
    items.push_back(
        {.action = ToolbarAction::clearFilters,
         .icon = "xmark.circle.fill",
         .label = localized("Clear Filters", "Clear Filters", "Clear filters button"),
         .help = localized("clear_filters_help", "Advanced filters are active. Click to clear them.",
                           "Clear filters help")});
  }
  if (screen.iCloudSyncEnabled()) {
    const std::string help =
        localized("icloud_sync_active_help", "iCloud sync is active", "Cloud status help");
    items.push_back({.action = ToolbarAction::cloudStatus,
                     .icon = "icloud.fill",
                     .tint = "blue",
                     .label = help,
                     .help = help});
  }
  if (!screen.discoveredRemoteLibraries().empty()) {
    items.push_back({.action = ToolbarAction::discoveredLibraries,
                     .icon = "icloud.and.arrow.down.fill",
                     .label = localized("discovered_libraries_toolbar", "Available in iCloud",
                                        "Discovered libraries button"),
                     .help = localized("discovered_libraries_toolbar_help",
                                       "Libraries available in iCloud not added on this device",
                                       "Discovered libraries help"),
                     .badge = std::ssize(screen.discoveredRemoteLibraries())});
  }
  items.push_back({.action = ToolbarAction::settings,
                   .identifier = "toolbar.settings",
                   .icon = "gearshape",
                   .label = localized("settings_button", "Settings", "Settings button"),
                   .help = localized("settings_button_help", "Configure the app", "Settings button help")});
  return items;
}

void perform(ToolbarAction action, ContentView& screen) {
  const auto items = toolbarItems(screen);
  const auto item = std::ranges::find(items, action, &ToolbarItem::action);
  if (item == items.end() || !item->isEnabled) {
    return;
  }
  switch (action) {
    case ToolbarAction::manageLibraries:
      screen.isShowingManageLibrariesSheet.set(true);
      break;
    case ToolbarAction::advancedSearch:
      screen.isShowingAdvancedSearch.set(true);
      break;
    case ToolbarAction::exportMessages:
      screen.isShowingExport.set(true);
      break;
    case ToolbarAction::importArchives:
      screen.isPresentingImporter.set(true);
      break;
    case ToolbarAction::clearFilters:
      screen.advancedFilters.set(SearchFilters::defaults(screen.services().executor.now()));
      break;
    case ToolbarAction::cloudStatus:
      break;
    case ToolbarAction::discoveredLibraries:
      screen.isShowingDiscoveredLibraries.set(true);
      break;
    case ToolbarAction::settings:
      screen.isShowingSettings.set(true);
      break;
  }
}

}  // namespace tidewrack
