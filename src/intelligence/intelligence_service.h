#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail/records.h"
#include "platform/failure.h"
#include "platform/task.h"
#include "platform/uuid.h"

namespace tidewrack {

/// The model could not be used or did not answer.
class IntelligenceError : public Failure {
 public:
  enum class Kind { modelNotAvailable, unsupportedOS, emptyMessage, emptyResponse, generationFailed };
  /// `underlying` is the description of what failed; it is used by generationFailed only.
  explicit IntelligenceError(Kind kind, const std::string& underlying = {});
  [[nodiscard]] Kind kind() const { return kind_; }

 private:
  Kind kind_;
};

/// The on-device language model as the reader uses it. Main thread only; a call suspends while the model
/// works. Every operation but the first may throw IntelligenceError.
class IntelligenceService {
 public:
  struct Availability {
    enum class Kind {
      available,
      deviceNotEligible,
      appleIntelligenceNotEnabled,
      modelNotReady,
      unsupportedOS,
      unavailable
    };
    Kind kind = Kind::unavailable;
    std::string reason;  ///< Of `unavailable` only, in words.
    friend bool operator==(const Availability&, const Availability&) = default;
  };
  /// In the order in which parsing tries them.
  enum class EmailCategory { work, personal, finance, shopping, travel, social, newsletter, spam, other };
  enum class Sentiment { positive, neutral, negative };
  struct ReplySuggestion {
    UUID id;  ///< Fresh for each suggestion.
    std::string text;
    std::string tone;  ///< "professional", "casual" or "brief".
    friend bool operator==(const ReplySuggestion&, const ReplySuggestion&) = default;
  };

  virtual ~IntelligenceService() = default;
  [[nodiscard]] virtual Availability checkAvailability() const = 0;
  virtual Task<EmailCategory> detectCategory(std::shared_ptr<const EmailMessage> message) = 0;
  virtual Task<Sentiment> analyzeSentiment(std::shared_ptr<const EmailMessage> message) = 0;
  virtual Task<std::string> summarize(std::shared_ptr<const EmailMessage> message) = 0;
  virtual Task<std::vector<ReplySuggestion>> generateReplySuggestions(
      std::shared_ptr<const EmailMessage> message) = 0;
};

inline constexpr std::array allEmailCategories = {
    IntelligenceService::EmailCategory::work,       IntelligenceService::EmailCategory::personal,
    IntelligenceService::EmailCategory::finance,    IntelligenceService::EmailCategory::shopping,
    IntelligenceService::EmailCategory::travel,     IntelligenceService::EmailCategory::social,
    IntelligenceService::EmailCategory::newsletter, IntelligenceService::EmailCategory::spam,
    IntelligenceService::EmailCategory::other};

/// "Work" and so on: the stored form.
std::string_view rawValue(IntelligenceService::EmailCategory category);
std::optional<IntelligenceService::EmailCategory> emailCategoryFromRawValue(std::string_view rawValue);
/// Reads a category out of a model's words: the first word, in any case, or else the first category whose
/// name stands anywhere in them, or else `other`.
IntelligenceService::EmailCategory parseEmailCategory(std::string_view response);

/// "Positive" and so on, in the language of the interface.
std::string title(IntelligenceService::Sentiment sentiment);

/// Stands where no model is installed: reports it as unavailable, and every operation throws.
class UnavailableIntelligenceService : public IntelligenceService {
 public:
  [[nodiscard]] Availability checkAvailability() const override;
  Task<EmailCategory> detectCategory(std::shared_ptr<const EmailMessage> message) override;
  Task<Sentiment> analyzeSentiment(std::shared_ptr<const EmailMessage> message) override;
  Task<std::string> summarize(std::shared_ptr<const EmailMessage> message) override;
  Task<std::vector<ReplySuggestion>> generateReplySuggestions(
      std::shared_ptr<const EmailMessage> message) override;
};

}  // namespace tidewrack
