#include "ui/sync_settings_tab.h"

#include "platform/localized.h"
#include "ui/alerts.h"

namespace tidewrack::ui {

iCloudSettingsView::iCloudSettingsView(Settings& settings, iCloudSyncMonitor& monitor)
    : SettingsForm(CloudSettings::title()), settings_(settings), model_(settings, monitor) {
  FormSection& sync = addSection();
  sync.addRow(
      makeSwitchRow(CloudSettings::syncToggle(), settings_, [this](bool isOn) { model_.switchSync(isOn); }));
  sync.setFooter(CloudSettings::syncFooter());
  addStatus(monitor);
  addSection(localized("icloud_visibility_header", "Where are my files?", "Visibility header"))
      .addRow(makeSettingsRow(CloudSettings::visibilityRow()));
  FormSection& about =
      addSection(localized("icloud_about_header", "About iCloud Sync", "About iCloud sync header"));
  for (const InformativeRow& row : CloudSettings::aboutRows()) {
    about.addRow(makeSettingsRow(row));
  }
  follow(model_.showingSyncRestart, [this] { showRestartAlert(); });
}

void iCloudSettingsView::addStatus(iCloudSyncMonitor& monitor) {
  FormSection& section =
      addSection(localized("icloud_sync_status_header", "Sync Status", "Sync status header"));
  AdwActionRow* row = makeSettingsRow(model_.statusRow());
  gtk_widget_set_name(GTK_WIDGET(row), "settings.syncStatus");
  section.addRow(row);
  const auto refresh = [this, row, &section] {
    section.set_visible(model_.showsStatus());
    InformativeRow content = model_.statusRow();
    content.text = model_.lastSyncText().value_or("");
    setSettingsRow(row, content);
  };
  follow(settings_, SettingKey::iCloudSyncEnabled, refresh);
  follow(monitor.phase, refresh);
  follow(monitor.lastSuccessfulImport, refresh);
}

void iCloudSettingsView::showRestartAlert() {
  if (model_.showingSyncRestart()) {
    showAlert(*this, CloudSettings::restartTitle(), CloudSettings::restartMessage(),
              [this] { model_.showingSyncRestart.set(false); });
  }
}

}  // namespace tidewrack::ui
