#include "screen/cloud_settings.h"

#include "platform/date.h"
#include "platform/localized.h"

namespace tidewrack {

std::string CloudSettings::title() {
  return localized("icloud_settings_title", "iCloud Settings", "iCloud settings title");
}

SettingToggle CloudSettings::syncToggle() {
  return {.key = SettingKey::iCloudSyncEnabled,
          .title = localized("icloud_sync_toggle", "Sync with iCloud", "iCloud sync toggle")};
}

std::string CloudSettings::syncFooter() {
  return localized("icloud_sync_footer",
                   "iCloud sync keeps your imported messages available on all Apple devices signed in with "
                   "the same Apple ID.",
                   "iCloud sync footer");
}

void CloudSettings::switchSync(bool isOn) {
  settings_.set(SettingKey::iCloudSyncEnabled, isOn);
  showingSyncRestart.set(true);
}

std::string CloudSettings::restartTitle() {
  return localized("icloud_restart_required_title", "Restart Required", "Restart required alert");
}

std::string CloudSettings::restartMessage() {
  return localized("icloud_restart_required_message",
                   "Quit and reopen Tidewrack for the iCloud change to take effect.",
                   "Restart required message");
}

bool CloudSettings::showsStatus() const {
  return settings_.boolean(SettingKey::iCloudSyncEnabled);
}

InformativeRow CloudSettings::statusRow() const {
  return {.symbol = symbol(monitor_.phase()), .title = tidewrack::title(monitor_.phase())};
}

std::optional<std::string> CloudSettings::lastSyncText() const {
  if (const auto& date = monitor_.lastSuccessfulImport()) {
    return formatText(localized("icloud_last_sync_format", "Last sync: %@", "Last successful iCloud sync"),
                      {formatMediumDateShortTime(*date)});
  }
  if (monitor_.phase().kind == iCloudSyncMonitor::Phase::Kind::idle) {
    return localized("icloud_waiting_first_sync", "Waiting for the first sync to complete…",
                     "Initial sync placeholder");
  }
  return std::nullopt;
}

InformativeRow CloudSettings::visibilityRow() {
  return {.symbol = "questionmark.folder",
          .title = localized("icloud_visibility_title", "Not visible in iCloud Drive",
                             "Visibility explainer title"),
          .text = localized("icloud_visibility_message",
                            "Your messages live in CloudKit's private database, not in iCloud Drive or the "
                            "Files app. They are only accessible from inside Tidewrack on devices signed in "
                            "with the same Apple ID.",
                            "Visibility explainer message")};
}

std::vector<InformativeRow> CloudSettings::aboutRows() {
  return {
      {.symbol = "lock.fill",
       .title = localized("icloud_privacy_title", "Private CloudKit database", "About iCloud sync"),
       .text = localized("icloud_privacy_message",
                         "Data is encrypted in transit and at rest. Only your Apple ID can access it.",
                         "About iCloud sync")},
      {.symbol = "bolt.fill",
       .title = localized("icloud_automatic_title", "Automatic", "About iCloud sync"),
       .text = localized("icloud_automatic_message",
                         "Changes sync in the background whenever the device has connectivity.",
                         "About iCloud sync")},
      {.symbol = "arrow.triangle.2.circlepath",
       .title = localized("icloud_offline_title", "Offline ready", "About iCloud sync"),
       .text = localized("icloud_offline_message",
                         "Your data is also stored locally, so it stays available offline. Sync resumes once "
                         "you reconnect.",
                         "About iCloud sync")},
  };
}

}  // namespace tidewrack
