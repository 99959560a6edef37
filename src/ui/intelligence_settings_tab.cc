#include "ui/intelligence_settings_tab.h"

#include <cstddef>

#include "ui/widgets.h"

namespace tidewrack::ui {

IntelligenceSettingsTab::IntelligenceSettingsTab(Settings& settings, IntelligenceService& service,
                                                 Executor& executor)
    : SettingsForm("Apple Intelligence"), settings_(settings), model_(settings, service, executor) {
  addStatus();
  addSwitches();
  addExplanations();
  addRequirements();
  const auto refresh = [this] { refreshStatus(); };
  follow(model_.modelAvailability, refresh);
  follow(model_.isCheckingAvailability, refresh);
  signal_map().connect([this] { model_.appear(); });
}

void IntelligenceSettingsTab::addStatus() {
  FormSection& section = addSection("Estado de Apple Intelligence");
  status_ = makeSettingsRow({});
  gtk_widget_set_name(GTK_WIDGET(status_), "settings.intelligenceStatus");
  adw_action_row_add_prefix(status_, GTK_WIDGET(spinner_.gobj()));
  systemSettings_ = makeIconButton("gear", "Abrir Ajustes del Sistema");
  systemSettings_->set_valign(Gtk::Align::CENTER);
  setIdentifier(*systemSettings_, "settings.systemSettings");
  systemSettings_->signal_clicked().connect([this] {
    auto* window = dynamic_cast<Gtk::Window*>(get_root());
    gtk_show_uri(window != nullptr ? window->gobj() : nullptr, IntelligenceSettings::systemSettingsURL,
                 GDK_CURRENT_TIME);
  });
  adw_action_row_add_suffix(status_, GTK_WIDGET(systemSettings_->gobj()));
  section.addRow(status_);
}

void IntelligenceSettingsTab::refreshStatus() {
  const auto& availability = model_.modelAvailability();
  const bool isChecking = model_.isCheckingAvailability() || !availability;
  spinner_.set_visible(isChecking);
  spinner_.set_spinning(isChecking);
  systemSettings_->set_visible(!isChecking && IntelligenceSettings::offersSystemSettings(*availability));
  setSettingsRow(status_, isChecking ? InformativeRow{.title = "Verificando disponibilidad..."}
                                     : IntelligenceSettings::statusRow(*availability));
  const auto requirements = model_.requirements();
  for (std::size_t index = 0; index < requirements_.size(); ++index) {
    setSettingsRow(requirements_[index], {.symbol = requirements[index].symbol(),
                                          .title = requirements[index].requirement,
                                          .tint = requirements[index].isMet ? "green" : "red"});
  }
}

void IntelligenceSettingsTab::addSwitches() {
  FormSection& master = addSection();
  master.addRow(makeSwitchRow(IntelligenceSettings::masterToggle(), settings_));
  master.setFooter("Activa o desactiva todas las funcionalidades de Apple Intelligence en la app.");
  FormSection& features = addSection("Funciones", "list.bullet.rectangle");
  setIdentifier(features, "settings.features");
  for (const SettingToggle& toggle : IntelligenceSettings::featureToggles()) {
    features.addRow(makeSwitchRow(toggle, settings_));
  }
  features.setFooter("Selecciona qué funciones de IA quieres utilizar en tus mensajes.");
  follow(settings_, SettingKey::intelligenceEnabled,
         [this, &features] { features.set_visible(model_.showsFeatures()); });
}

void IntelligenceSettingsTab::addExplanations() {
  FormSection& features = addSection("Funcionalidades disponibles", "sparkle.magnifyingglass");
  for (const InformativeRow& row : IntelligenceSettings::featureDescriptions()) {
    features.addRow(makeSettingsRow(row));
  }
  FormSection& privacy = addSection("Privacidad y seguridad", "hand.raised.fill");
  for (const InformativeRow& row : IntelligenceSettings::privacyRows()) {
    privacy.addRow(makeSettingsRow(row));
  }
}

void IntelligenceSettingsTab::addRequirements() {
  FormSection& section = addSection("Requisitos del sistema");
  for (std::size_t index = 0; index < model_.requirements().size(); ++index) {
    requirements_.push_back(makeSettingsRow({}));
    section.addRow(requirements_.back());
  }
  section.setFooter(
      "Para usar Apple Intelligence, tu dispositivo debe cumplir con todos los requisitos anteriores.");
}

}  // namespace tidewrack::ui
