#include "ui/spotlight_settings_tab.h"

#include <utility>

#include "ui/widgets.h"

namespace tidewrack::ui {

SpotlightSettingsTab::SpotlightSettingsTab(Settings& settings)
    : SettingsForm("Ajustes de Spotlight"), settings_(settings), model_(settings) {
  addSearch();
  addOptions();
  addMaintenance();
  addExplanations();
}

void SpotlightSettingsTab::addSearch() {
  FormSection& section = addSection("Búsqueda del sistema", "magnifyingglass");
  section.addRow(makeSwitchRow(SpotlightSettings::enabledToggle(), settings_));
  AdwActionRow* row =
      makeSettingsRow({.symbol = "magnifyingglass.circle.fill", .title = "Indexación activa"});
  gtk_widget_set_name(GTK_WIDGET(row), "settings.spotlightStatus");
  section.addRow(row);
  section.setFooter(
      "Permite buscar tus mensajes de correo directamente desde Spotlight en iOS, iPadOS y macOS.");
  const auto refresh = [this, row] {
    setRowVisible(row, model_.isEnabled());
    std::string text = "Mensajes indexados: " + model_.indexedCountText();
    if (const auto update = model_.lastUpdateText()) {
      text += "\n" + *update;
    }
    setSettingsRow(row, {.symbol = "magnifyingglass.circle.fill",
                         .title = "Indexación activa",
                         .text = std::move(text),
                         .tint = "green"});
  };
  for (const SettingKey key : {SettingKey::spotlightIndexingEnabled, SettingKey::spotlightIndexedCount,
                               SettingKey::lastIndexUpdate}) {
    follow(settings_, key, refresh);
  }
}

void SpotlightSettingsTab::addOptions() {
  FormSection& section = addSection("Opciones de indexación", "slider.horizontal.3");
  for (const SettingToggle& toggle : SpotlightSettings::optionToggles()) {
    section.addRow(makeSwitchRow(toggle, settings_));
  }
  AdwActionRow* warning = makeSettingsRow(SpotlightSettings::staleWarning());
  gtk_widget_set_name(GTK_WIDGET(warning), "settings.staleWarning");
  section.addRow(warning);
  section.setFooter(
      "Indexar el cuerpo de mensajes y adjuntos permite búsquedas más completas pero usa más espacio.");
  follow(model_.needsRebuild, [this, warning] { setRowVisible(warning, model_.needsRebuild()); });
}

void SpotlightSettingsTab::addMaintenance() {
  FormSection& section = addSection("Mantenimiento", "wrench.and.screwdriver");
  const auto addButton = [&section](std::string_view symbol, const char* title, const char* identifier,
                                    const char* styleClass) {
    auto* button = makeIconButton(symbol, title);
    button->set_valign(Gtk::Align::CENTER);
    button->set_sensitive(false);
    if (styleClass != nullptr) {
      button->add_css_class(styleClass);
    }
    setIdentifier(*button, identifier);
    auto* holder = Gtk::make_managed<Gtk::ListBoxRow>();
    holder->set_activatable(false);
    holder->set_child(*button);
    button->set_margin(8);
    button->set_halign(Gtk::Align::START);
    section.addRow(*holder);
  };
  addButton("arrow.clockwise", "Reconstruir índice de Spotlight", "settings.rebuildIndex", nullptr);
  addButton("trash", "Limpiar índice de Spotlight", "settings.clearIndex", "destructive-action");
  section.setFooter(
      "Reconstruye el índice si notas que algunos mensajes no aparecen en las búsquedas de Spotlight.");
}

void SpotlightSettingsTab::addExplanations() {
  FormSection& about = addSection("Acerca de Spotlight", "info.circle");
  for (const InformativeRow& row : SpotlightSettings::aboutRows()) {
    about.addRow(makeSettingsRow(row));
  }
  FormSection& platforms = addSection("Plataformas compatibles", "square.stack.3d.up");
  for (const InformativeRow& content : SpotlightSettings::platformRows()) {
    AdwActionRow* row = makeSettingsRow(content);
    adw_action_row_add_suffix(row, GTK_WIDGET(makeSymbol("checkmark.circle.fill", 16, "green")->gobj()));
    platforms.addRow(row);
  }
}

}  // namespace tidewrack::ui
