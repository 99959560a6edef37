#include "screen/spotlight_settings.h"

#include "platform/date.h"
#include "platform/date_styles.h"

namespace tidewrack {

SpotlightSettings::SpotlightSettings(Settings& settings) : settings_(settings) {
  for (const SettingKey key : {SettingKey::indexMessageBodies, SettingKey::indexAttachments}) {
    subscriptions_.push_back(settings_.observe(key, [this] { needsRebuild.set(true); }));
  }
}

SettingToggle SpotlightSettings::enabledToggle() {
  return {.key = SettingKey::spotlightIndexingEnabled, .title = "Habilitar búsqueda en Spotlight"};
}

std::vector<SettingToggle> SpotlightSettings::optionToggles() {
  return {{.key = SettingKey::indexMessageBodies, .title = "Indexar cuerpo de mensajes"},
          {.key = SettingKey::indexAttachments, .title = "Indexar archivos adjuntos"}};
}

bool SpotlightSettings::isEnabled() const {
  return settings_.boolean(SettingKey::spotlightIndexingEnabled);
}

std::string SpotlightSettings::indexedCountText() const {
  return std::to_string(settings_.integer(SettingKey::spotlightIndexedCount));
}

std::optional<std::string> SpotlightSettings::lastUpdateText() const {
  const double seconds = settings_.number(SettingKey::lastIndexUpdate);
  if (seconds <= 0) {
    return std::nullopt;
  }
  return "Última actualización: " + DateStyle::numericDateAndShortTime().format(dateFromSeconds(seconds));
}

InformativeRow SpotlightSettings::staleWarning() {
  return {.symbol = "exclamationmark.triangle.fill",
          .title = "Índice desactualizado",
          .text =
              "Has cambiado las opciones de indexación. Reconstruye el índice para que los cambios surtan "
              "efecto.",
          .tint = "orange"};
}

std::vector<InformativeRow> SpotlightSettings::aboutRows() {
  return {
      {.symbol = "target",
       .title = "Búsqueda universal",
       .text = "Busca tus mensajes desde cualquier lugar del sistema usando Spotlight (⌘+Espacio en Mac)."},
      {.symbol = "app.badge",
       .title = "Resultados enriquecidos",
       .text =
           "Los resultados muestran el remitente, asunto, fecha y un fragmento del contenido del mensaje."},
      {.symbol = "hand.tap",
       .title = "Acceso rápido",
       .text = "Toca un resultado para abrir el mensaje directamente en la app."}};
}

std::vector<InformativeRow> SpotlightSettings::platformRows() {
  return {{.symbol = "laptopcomputer", .title = "macOS"},
          {.symbol = "ipad", .title = "iPadOS"},
          {.symbol = "iphone", .title = "iOS"}};
}

}  // namespace tidewrack
