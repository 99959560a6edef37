#pragma once

#include <string>
#include <string_view>

#include "intelligence/intelligence_service.h"

/// How the answers of the model are shown. Pure; any thread.
namespace tidewrack {

/// A category as a chip: its title is the same in every language.
struct CategoryLook {
  std::string_view title;
  std::string_view icon;  ///< Platform symbol name.
  std::string_view tint;  ///< A colour name.
};
CategoryLook look(IntelligenceService::EmailCategory category);

/// A sentiment as a face.
struct SentimentLook {
  std::string_view icon;  ///< Platform symbol name.
  std::string_view tint;  ///< A colour name.
};
SentimentLook look(IntelligenceService::Sentiment sentiment);
/// "Tone: Positive", in words of the interface.
std::string toneTip(IntelligenceService::Sentiment sentiment);

}  // namespace tidewrack
