#include "screen/intelligence_settings.h"

#include <utility>

#include "platform/log.h"

namespace tidewrack {
namespace {

using Kind = IntelligenceService::Availability::Kind;

}  // namespace

IntelligenceSettings::IntelligenceSettings(Settings& settings, IntelligenceService& service,
                                           Executor& executor)
    : settings_(settings), service_(service), executor_(executor) {}

void IntelligenceSettings::appear() {
  isCheckingAvailability.set(true);
  check(this, alive_, executor_);
}

Task<> IntelligenceSettings::check(IntelligenceSettings* self, std::weak_ptr<int> alive, Executor& executor) {
  co_await yieldToMainLoop(executor);
  if (alive.expired()) {
    co_return;
  }
  const Availability availability = self->service_.checkAvailability();
  self->modelAvailability.set(availability);
  Logger::of("IntelligenceSettings").info("Estado de Apple Intelligence: %s", {printed(availability)});
  self->isCheckingAvailability.set(false);
}

InformativeRow IntelligenceSettings::statusRow(const Availability& availability) {
  switch (availability.kind) {
    case Kind::available:
      return {.symbol = "checkmark.circle.fill",
              .title = "Apple Intelligence disponible",
              .text = "Todas las funciones están listas para usar",
              .tint = "green"};
    case Kind::deviceNotEligible:
      return {.symbol = "xmark.circle.fill",
              .title = "Dispositivo no compatible",
              .text = "Este dispositivo no soporta Apple Intelligence",
              .tint = "red"};
    case Kind::appleIntelligenceNotEnabled:
      return {.symbol = "exclamationmark.triangle.fill",
              .title = "Apple Intelligence desactivado",
              .text = "Actívalo en Ajustes del Sistema > Apple Intelligence",
              .tint = "orange"};
    case Kind::modelNotReady:
      return {.symbol = "arrow.down.circle.fill",
              .title = "Modelo descargándose",
              .text = "Apple Intelligence se está descargando o preparando",
              .tint = "blue"};
    case Kind::unsupportedOS:
      return {.symbol = "xmark.circle.fill",
              .title = "Sistema no compatible",
              .text = "Apple Intelligence requiere iOS 26 o macOS 26",
              .tint = "red"};
    case Kind::unavailable:
      break;
  }
  return {.symbol = "questionmark.circle.fill",
          .title = "No disponible",
          .text = availability.reason,
          .tint = "gray"};
}

bool IntelligenceSettings::offersSystemSettings(const Availability& availability) {
  return availability.kind == Kind::appleIntelligenceNotEnabled;
}

SettingToggle IntelligenceSettings::masterToggle() {
  return {.key = SettingKey::intelligenceEnabled, .title = "Habilitar Apple Intelligence"};
}

std::vector<SettingToggle> IntelligenceSettings::featureToggles() {
  return {{.key = SettingKey::enableSmartSummaries, .title = "Resúmenes inteligentes"},
          {.key = SettingKey::enableSmartReply, .title = "Sugerencias de respuesta"},
          {.key = SettingKey::enableCategoryDetection, .title = "Detección automática de categorías"},
          {.key = SettingKey::enableSentimentAnalysis, .title = "Análisis de sentimiento"}};
}

bool IntelligenceSettings::showsFeatures() const {
  return settings_.boolean(SettingKey::intelligenceEnabled);
}

std::vector<InformativeRow> IntelligenceSettings::featureDescriptions() {
  return {{.symbol = "doc.text.magnifyingglass",
           .title = "Resúmenes inteligentes",
           .text = "Genera resúmenes automáticos de mensajes largos para captar rápidamente el contenido "
                   "principal.",
           .tint = "blue"},
          {.symbol = "bubble.left.and.bubble.right",
           .title = "Sugerencias de respuesta",
           .text = "Obtén sugerencias contextuales de respuesta basadas en el contenido del mensaje.",
           .tint = "green"},
          {.symbol = "folder.badge.gearshape",
           .title = "Detección de categorías",
           .text = "Clasifica automáticamente tus mensajes en categorías como Trabajo, Personal, Facturas, "
                   "etc.",
           .tint = "orange"},
          {.symbol = "face.smiling",
           .title = "Análisis de sentimiento",
           .text = "Detecta el tono emocional de los mensajes (positivo, neutral, negativo).",
           .tint = "purple"}};
}

std::vector<InformativeRow> IntelligenceSettings::privacyRows() {
  return {
      {.symbol = "lock.shield.fill",
       .title = "Procesamiento on-device",
       .text = "Todo el procesamiento de IA se ejecuta localmente en tu dispositivo. Tus mensajes nunca "
               "salen de tu Mac, iPad o iPhone."},
      {.symbol = "antenna.radiowaves.left.and.right.slash",
       .title = "Sin conexión requerida",
       .text = "Apple Intelligence funciona completamente offline. No necesitas conexión a internet."},
      {.symbol = "eye.slash.fill",
       .title = "Privacidad total",
       .text = "Apple no tiene acceso a tus datos ni a las solicitudes que haces al modelo de lenguaje."}};
}

std::vector<IntelligenceSettings::Requirement> IntelligenceSettings::requirements() const {
  const auto& availability = modelAvailability();
  return {
      {"Apple Silicon (M1 o posterior)", true},
      {"iOS 26 o macOS 26", true},
      {"Apple Intelligence habilitado en Ajustes", availability && availability->kind == Kind::available}};
}

std::string printed(const IntelligenceService::Availability& availability) {
  switch (availability.kind) {
    case Kind::available:
      return "available";
    case Kind::deviceNotEligible:
      return "deviceNotEligible";
    case Kind::appleIntelligenceNotEnabled:
      return "appleIntelligenceNotEnabled";
    case Kind::modelNotReady:
      return "modelNotReady";
    case Kind::unsupportedOS:
      return "unsupportedOS";
    case Kind::unavailable:
      break;
  }
  return "unavailable(\"" + availability.reason + "\")";
}

}  // namespace tidewrack
