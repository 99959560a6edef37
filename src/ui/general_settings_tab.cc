#include "ui/general_settings_tab.h"

#include <algorithm>

#include "platform/localized.h"
#include "screen/help_page.h"
#include "ui/alerts.h"
#include "ui/widgets.h"

namespace tidewrack::ui {

GeneralSettingsTab::GeneralSettingsTab(Settings& settings) : settings_(settings), model_(settings) {
  FormSection& preferences = addSection("Preferencias", "slider.horizontal.3");
  for (const SettingToggle& toggle : GeneralSettings::preferenceToggles()) {
    preferences.addRow(makeSwitchRow(toggle, settings_));
  }
  addLanguage();
  FormSection& avatars =
      addSection(localized("gravatar_section_header", "Avatares de remitentes", "Gravatar section header"),
                 "person.crop.circle");
  avatars.addRow(makeSwitchRow(GeneralSettings::gravatarToggle(), settings_));
  avatars.setFooter(GeneralSettings::gravatarFooter());
  addMaximum();
  addInformation();
}

void GeneralSettingsTab::addLanguage() {
  FormSection& section =
      addSection(localized("language_section_header", "Idioma", "Language section header"));
  auto* row = ADW_COMBO_ROW(adw_combo_row_new());
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row),
                                localized("language_label", "Idioma", "Language picker label").c_str());
  adw_action_row_set_subtitle(
      ADW_ACTION_ROW(row),
      localized("language_help", "Selecciona el idioma de la interfaz", "Language picker help").c_str());
  GtkStringList* names = gtk_string_list_new(nullptr);
  for (const AppLanguage language : allAppLanguages) {
    gtk_string_list_append(names, displayName(language).c_str());
  }
  adw_combo_row_set_model(row, G_LIST_MODEL(names));
  g_object_unref(names);
  gtk_widget_set_name(GTK_WIDGET(row), "settings.language");
  section.addRow(ADW_ACTION_ROW(row));
  section.setFooter(localized("language_restart_footer",
                              "El cambio de idioma se aplicará al reiniciar la aplicación.",
                              "Language restart footer"));

  follow(settings_, SettingKey::appLanguage, [this, row] {
    const auto* place = std::ranges::find(allAppLanguages, model_.language());
    adw_combo_row_set_selected(row, static_cast<guint>(place - allAppLanguages.begin()));
  });
  g_signal_connect(
      row, "notify::selected", G_CALLBACK(+[](AdwComboRow* chosen, GParamSpec*, gpointer self) {
        GeneralSettings& model = static_cast<GeneralSettingsTab*>(self)->model_;
        const guint position = adw_combo_row_get_selected(chosen);
        if (position < allAppLanguages.size() && allAppLanguages.at(position) != model.language()) {
          model.chooseLanguage(allAppLanguages.at(position));
        }
      }),
      this);
  follow(model_.showingLanguageRestartAlert, [this] { showRestartAlert(); });
}

void GeneralSettingsTab::showRestartAlert() {
  if (model_.showingLanguageRestartAlert()) {
    showAlert(*this, GeneralSettings::languageRestartTitle(), GeneralSettings::languageRestartMessage(),
              [this] { model_.showingLanguageRestartAlert.set(false); });
  }
}

void GeneralSettingsTab::addMaximum() {
  FormSection& section = addSection("Importación", "square.and.arrow.down");
  AdwActionRow* row = makeSettingsRow(
      {.title = model_.maximumLabel(), .text = "Límite de mensajes a procesar en una sola importación"});
  gtk_widget_set_name(GTK_WIDGET(row), "settings.maximum");
  auto* buttons = Gtk::make_managed<Gtk::Box>();
  buttons->add_css_class("linked");
  buttons->set_valign(Gtk::Align::CENTER);
  const auto addButton = [this, buttons](const char* icon, const char* identifier, const std::string& name,
                                         void (GeneralSettings::*step)()) {
    auto* button = Gtk::make_managed<Gtk::Button>();
    button->set_icon_name(icon);
    button->set_tooltip_text(name);
    setIdentifier(*button, identifier);
    setAccessibleLabel(*button, name);
    button->signal_clicked().connect([this, step] { (model_.*step)(); });
    buttons->append(*button);
    return button;
  };
  auto* lower = addButton("list-remove-symbolic", "settings.maximum.lower",
                          localized("stepper_decrement", "Decrease", "Stepper button, read out"),
                          &GeneralSettings::lowerMaximum);
  auto* raise = addButton("list-add-symbolic", "settings.maximum.raise",
                          localized("stepper_increment", "Increase", "Stepper button, read out"),
                          &GeneralSettings::raiseMaximum);
  adw_action_row_add_suffix(row, GTK_WIDGET(buttons->gobj()));
  section.addRow(row);
  section.setFooter(
      "Archivos MBOX muy grandes pueden tardar mucho tiempo en procesarse. Ajusta este límite según tus "
      "necesidades.");
  follow(settings_, SettingKey::maxMessagesPerImport, [this, row, lower, raise] {
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), model_.maximumLabel().c_str());
    lower->set_sensitive(model_.canLowerMaximum());
    raise->set_sensitive(model_.canRaiseMaximum());
  });
}

void GeneralSettingsTab::addInformation() {
  FormSection& section = addSection("Información", "info.circle");
  const auto addFact = [&section](const char* title, const std::string& value) {
    AdwActionRow* row = makeSettingsRow({.title = title});
    auto* label = makeLabel(value, {"dim-label"});
    label->set_selectable(true);
    adw_action_row_add_suffix(row, GTK_WIDGET(label->gobj()));
    section.addRow(row);
  };
  addFact("Versión", GeneralSettings::versionText());
  addFact("Build", GeneralSettings::buildText());
  section.addRow(makeLinkRow({.symbol = "questionmark.circle", .title = "Acerca de archivos MBOX"},
                             "settings.aboutMBOX", exportHelpURL));
}

}  // namespace tidewrack::ui
