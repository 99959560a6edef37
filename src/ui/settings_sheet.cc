#include "ui/settings_sheet.h"

namespace tidewrack::ui {

SettingsSubjects settingsSubjects(ContentView& screen, IntelligenceService& intelligence) {
  const ContentViewServices& services = screen.services();
  return {services.settings, intelligence, services.executor, services.syncMonitor};
}

SettingsSheet::SettingsSheet(ContentView& screen, IntelligenceService& intelligence, Gtk::Widget& covered)
    : Sheet(covered), screen_(screen), intelligence_(intelligence) {
  setCloseRequest([this] { screen_.isShowingSettings.set(false); });
  subscription_ = screen_.isShowingSettings.observe([this] { refresh(); });
}

void SettingsSheet::refresh() {
  if (!screen_.isShowingSettings()) {
    dismiss();
    return;
  }
  if (!isPresented()) {
    auto* panel = Gtk::make_managed<SettingsPanelView>(settingsSubjects(screen_, intelligence_),
                                                       [this] { screen_.isShowingSettings.set(false); });
    panel->set_overflow(Gtk::Overflow::HIDDEN);
    auto* holder = Gtk::make_managed<Gtk::Box>();
    holder->append(*panel);
    setContent(*holder, SettingsPanel::width);
    present();
  }
}

}  // namespace tidewrack::ui
