#include "screen/general_settings.h"

#include <algorithm>

#include "platform/count_text.h"
#include "platform/localized.h"
#include "reading/gravatar_service.h"

namespace tidewrack {
namespace {

constexpr const char* unknown = "Desconocida";

}  // namespace

std::vector<SettingToggle> GeneralSettings::preferenceToggles() {
  return {
      {.key = SettingKey::enableSearchIndexing,
       .title = "Habilitar indexación de búsqueda",
       .help = "Permite búsqueda de texto completo en mensajes"},
      {.key = SettingKey::autoOpenLastLibrary,
       .title = "Abrir última biblioteca al iniciar",
       .help = "Selecciona automáticamente la última biblioteca importada"},
      {.key = SettingKey::confirmBeforeDelete,
       .title = "Confirmar antes de eliminar",
       .help = "Muestra una confirmación antes de eliminar bibliotecas"},
      {.key = SettingKey::showMessagePreview,
       .title = "Mostrar vista previa de mensajes",
       .help = "Muestra un fragmento del contenido en la lista de mensajes"},
  };
}

AppLanguage GeneralSettings::language() const {
  return appLanguageFromRawValue(settings_.string(SettingKey::appLanguage));
}

void GeneralSettings::chooseLanguage(AppLanguage language) {
  settings_.set(SettingKey::appLanguage, std::string(rawValue(language)));
  showingLanguageRestartAlert.set(true);
}

std::string GeneralSettings::languageRestartTitle() {
  return localized("language_restart_alert_title", "Reinicio requerido", "Language restart alert title");
}

std::string GeneralSettings::languageRestartMessage() {
  return localized("language_restart_alert_message",
                   "Cierra y vuelve a abrir la aplicación para aplicar el nuevo idioma.",
                   "Language restart alert message");
}

SettingToggle GeneralSettings::gravatarToggle() {
  return {
      .key = SettingKey::avatarGravatarEnabled,
      .title = localized("gravatar_toggle_title", "Cargar avatares desde Gravatar", "Gravatar toggle title"),
      .help = localized("gravatar_toggle_help",
                        "Cuando esté disponible, muestra el avatar de Gravatar del remitente. En caso "
                        "contrario se usa el avatar de iniciales.",
                        "Gravatar toggle help"),
      .symbol = "person.crop.circle.badge.checkmark"};
}

std::string GeneralSettings::gravatarFooter() {
  return formatText(
      localized("gravatar_section_footer",
                "Al activarlo, se enviará un hash SHA-256 de la dirección de cada remitente a %@ para buscar "
                "su avatar. Los resultados se cachean localmente.",
                "Gravatar privacy footer"),
      {std::string(GravatarService::defaultHost)});
}

std::int64_t GeneralSettings::maximum() const {
  return settings_.integer(SettingKey::maxMessagesPerImport);
}

std::string GeneralSettings::maximumLabel() const {
  return "Máximo de mensajes por importación: " + formatCount(maximum());
}

void GeneralSettings::stepMaximum(std::int64_t step) {
  // First into the range, so that no stored number makes the sum overflow.
  const std::int64_t inside =
      std::clamp(maximum(), leastMaximum - maximumStep, greatestMaximum + maximumStep);
  settings_.set(SettingKey::maxMessagesPerImport, std::clamp(inside + step, leastMaximum, greatestMaximum));
}

std::string GeneralSettings::versionText(const ProgramVersion& version) {
  return version.version.value_or(unknown);
}

std::string GeneralSettings::buildText(const ProgramVersion& version) {
  return version.build.value_or(unknown);
}

}  // namespace tidewrack
