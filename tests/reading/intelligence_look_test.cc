#include "reading/intelligence_look.h"

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "reading/icons.h"

namespace tidewrack {
namespace {

using Sentiment = IntelligenceService::Sentiment;

TEST(IntelligenceLook, EveryCategoryHasATitleAColourAndAKnownIconOfItsOwn) {
  const auto symbols = knownSymbols();
  std::set<std::string_view> titles;
  std::set<std::string_view> tints;
  for (const auto category : allEmailCategories) {
    const CategoryLook shown = look(category);
    EXPECT_EQ(shown.title, rawValue(category));
    EXPECT_TRUE(std::ranges::binary_search(symbols, shown.icon)) << shown.icon;
    titles.insert(shown.title);
    tints.insert(shown.tint);
  }
  EXPECT_EQ(titles.size(), 9U);
  EXPECT_EQ(tints.size(), 9U);
  EXPECT_EQ(look(IntelligenceService::EmailCategory::finance).icon, "dollarsign.circle.fill");
  EXPECT_EQ(look(IntelligenceService::EmailCategory::finance).tint, "yellow");
}

TEST(IntelligenceLook, EverySentimentHasItsFaceAndItsTip) {
  EXPECT_EQ(look(Sentiment::positive).icon, "face.smiling.fill");
  EXPECT_EQ(look(Sentiment::positive).tint, "green");
  EXPECT_EQ(look(Sentiment::neutral).icon, "face.dashed.fill");
  EXPECT_EQ(look(Sentiment::neutral).tint, "gray");
  EXPECT_EQ(look(Sentiment::negative).icon, "face.frowning.fill");
  EXPECT_EQ(look(Sentiment::negative).tint, "red");
  EXPECT_EQ(toneTip(Sentiment::neutral), "Tone: Neutral");
}

}  // namespace
}  // namespace tidewrack
