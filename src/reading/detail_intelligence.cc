// The four operations of the detail's intelligence row. A result is stored when it arrives, whatever message
// is then shown.

#include <exception>

#include "reading/message_detail.h"

namespace tidewrack {

// `start` gives the task of the operation and `store` takes its result. The detail may be gone by then.
template <typename Start, typename Store>
Task<> MessageDetail::runIntelligence(Observable<bool>& isRunning, Start start, Store store) {
  const MessagePointer shown = message();
  if (!shown || isRunning()) {
    co_return;
  }
  const std::weak_ptr<int> alive = alive_;
  isRunning.set(true);
  std::optional<std::string> failureText;
  try {
    auto result = co_await start(shown);
    if (alive.expired()) {
      co_return;
    }
    store(std::move(result));
  } catch (const std::exception& failure) {
    failureText = failure.what();
  }
  if (alive.expired()) {
    co_return;
  }
  isRunning.set(false);
  if (failureText) {
    intelligenceError.set(failureText);
  }
}

Task<> MessageDetail::generateSummary() {
  return runIntelligence(
      isGeneratingSummary, [this](const MessagePointer& shown) { return intelligence_.summarize(shown); },
      [this](std::string summary) {
        generatedSummary.set(std::move(summary));
        showSummaryPopover.set(true);
      });
}

Task<> MessageDetail::detectCategory() {
  return runIntelligence(
      isDetectingCategory,
      [this](const MessagePointer& shown) { return intelligence_.detectCategory(shown); },
      [this](IntelligenceService::EmailCategory category) { detectedCategory.set(category); });
}

Task<> MessageDetail::analyzeSentiment() {
  return runIntelligence(
      isAnalyzingSentiment,
      [this](const MessagePointer& shown) { return intelligence_.analyzeSentiment(shown); },
      [this](IntelligenceService::Sentiment sentiment) { analyzedSentiment.set(sentiment); });
}

Task<> MessageDetail::generateReplies() {
  return runIntelligence(
      isGeneratingReplies,
      [this](const MessagePointer& shown) { return intelligence_.generateReplySuggestions(shown); },
      [this](std::vector<IntelligenceService::ReplySuggestion> suggestions) {
        replySuggestions.set(std::move(suggestions));
        showRepliesPopover.set(true);
      });
}

}  // namespace tidewrack
