#include "intelligence/intelligence_service.h"

#include "platform/alphanumerics.h"
#include "platform/localized.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

using EmailCategory = IntelligenceService::EmailCategory;

std::string describe(IntelligenceError::Kind kind, const std::string& underlying) {
  switch (kind) {
    case IntelligenceError::Kind::modelNotAvailable:
      return "Apple Intelligence no está disponible en este dispositivo";
    case IntelligenceError::Kind::unsupportedOS:
      return "Apple Intelligence requiere iOS 26 o macOS 26";
    case IntelligenceError::Kind::emptyMessage:
      return "El mensaje está vacío";
    case IntelligenceError::Kind::emptyResponse:
      return "El modelo no devolvió contenido";
    case IntelligenceError::Kind::generationFailed:
      return "Error al generar respuesta: " + underlying;
  }
  return {};
}

IntelligenceError notAvailable() {
  return IntelligenceError(IntelligenceError::Kind::modelNotAvailable);
}

}  // namespace

IntelligenceError::IntelligenceError(Kind kind, const std::string& underlying)
    : Failure(describe(kind, underlying)), kind_(kind) {}

std::string_view rawValue(EmailCategory category) {
  switch (category) {
    case EmailCategory::work:
      return "Work";
    case EmailCategory::personal:
      return "Personal";
    case EmailCategory::finance:
      return "Finance";
    case EmailCategory::shopping:
      return "Shopping";
    case EmailCategory::travel:
      return "Travel";
    case EmailCategory::social:
      return "Social";
    case EmailCategory::newsletter:
      return "Newsletter";
    case EmailCategory::spam:
      return "Spam";
    case EmailCategory::other:
      return "Other";
  }
  return "Other";
}

std::optional<EmailCategory> emailCategoryFromRawValue(std::string_view name) {
  for (const auto category : allEmailCategories) {
    if (rawValue(category) == name) {
      return category;
    }
  }
  return std::nullopt;
}

EmailCategory parseEmailCategory(std::string_view response) {
  const std::string lower = lowercase(response);
  std::size_t position = 0;
  const auto firstWord = nextAlphanumericRun(lower, position);
  for (const auto category : allEmailCategories) {
    if (lowercase(rawValue(category)) == firstWord) {
      return category;
    }
  }
  for (const auto category : allEmailCategories) {
    if (lower.find(lowercase(rawValue(category))) != std::string::npos) {
      return category;
    }
  }
  return EmailCategory::other;
}

std::string title(IntelligenceService::Sentiment sentiment) {
  switch (sentiment) {
    case IntelligenceService::Sentiment::positive:
      return localized("sentiment_positive", "Positive", "Sentiment value: positive");
    case IntelligenceService::Sentiment::neutral:
      return localized("sentiment_neutral", "Neutral", "Sentiment value: neutral");
    case IntelligenceService::Sentiment::negative:
      return localized("sentiment_negative", "Negative", "Sentiment value: negative");
  }
  return {};
}

IntelligenceService::Availability UnavailableIntelligenceService::checkAvailability() const {
  return {Availability::Kind::unavailable, {}};
}

Task<EmailCategory> UnavailableIntelligenceService::detectCategory(
    std::shared_ptr<const EmailMessage> /*message*/) {
  throw notAvailable();
  co_return EmailCategory::other;
}

Task<IntelligenceService::Sentiment> UnavailableIntelligenceService::analyzeSentiment(
    std::shared_ptr<const EmailMessage> /*message*/) {
  throw notAvailable();
  co_return Sentiment::neutral;
}

Task<std::string> UnavailableIntelligenceService::summarize(std::shared_ptr<const EmailMessage> /*message*/) {
  throw notAvailable();
  co_return std::string();
}

Task<std::vector<IntelligenceService::ReplySuggestion>>
UnavailableIntelligenceService::generateReplySuggestions(std::shared_ptr<const EmailMessage> /*message*/) {
  throw notAvailable();
  co_return std::vector<ReplySuggestion>();
}

}  // namespace tidewrack
