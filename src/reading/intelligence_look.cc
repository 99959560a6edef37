#include "reading/intelligence_look.h"

#include "platform/localized.h"

namespace tidewrack {

CategoryLook look(IntelligenceService::EmailCategory category) {
  using Category = IntelligenceService::EmailCategory;
  switch (category) {
    case Category::work:
      return {"Work", "briefcase.fill", "blue"};
    case Category::personal:
      return {"Personal", "person.fill", "green"};
    case Category::finance:
      return {"Finance", "dollarsign.circle.fill", "yellow"};
    case Category::shopping:
      return {"Shopping", "cart.fill", "orange"};
    case Category::travel:
      return {"Travel", "airplane", "purple"};
    case Category::social:
      return {"Social", "bubble.left.and.bubble.right.fill", "pink"};
    case Category::newsletter:
      return {"Newsletter", "envelope.fill", "cyan"};
    case Category::spam:
      return {"Spam", "exclamationmark.octagon.fill", "red"};
    case Category::other:
      return {"Other", "folder.fill", "gray"};
  }
  return {};
}

SentimentLook look(IntelligenceService::Sentiment sentiment) {
  switch (sentiment) {
    case IntelligenceService::Sentiment::positive:
      return {"face.smiling.fill", "green"};
    case IntelligenceService::Sentiment::neutral:
      return {"face.dashed.fill", "gray"};
    case IntelligenceService::Sentiment::negative:
      return {"face.frowning.fill", "red"};
  }
  return {};
}

std::string toneTip(IntelligenceService::Sentiment sentiment) {
  return formatText(localized("intelligence_tone_help_format", "Tone: %@", "Sentiment tooltip"),
                    {title(sentiment)});
}

}  // namespace tidewrack
