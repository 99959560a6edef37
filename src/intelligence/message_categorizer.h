#pragma once

#include <functional>

#include "mail/records.h"
#include "platform/observable.h"

namespace tidewrack {

/// The background categoriser as the screen sees it. Main thread only.
class MessageCategorizer {
 public:
  virtual ~MessageCategorizer() = default;

  /// Whether the on-device model can be used at all.
  [[nodiscard]] virtual bool isModelAvailable() const = 0;
  /// Works through the messages that have no category, in the background, one call of `onCategorized`
  /// (message id, category) for each result. Returns at once; does nothing while a run is under way.
  virtual void categorize(const MessageList& messages,
                          std::function<void(const Text& id, const Text& category)> onCategorized) = 0;

  Observable<bool> isCategorizing{false};
  Observable<int> totalToProcess{0};
  Observable<int> processedCount{0};
};

}  // namespace tidewrack
