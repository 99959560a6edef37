#include "intelligence/intelligence_service.h"

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

using Category = IntelligenceService::EmailCategory;

TEST(ParseEmailCategory, TheFirstWordCountsInAnyCase) {
  EXPECT_EQ(parseEmailCategory("Newsletter."), Category::newsletter);
  EXPECT_EQ(parseEmailCategory("  **SPAM** of work"), Category::spam);
}

TEST(ParseEmailCategory, OtherwiseTheFirstCategoryInItsOrderThatStandsAnywhere) {
  EXPECT_EQ(parseEmailCategory("Category: Spam"), Category::spam);
  EXPECT_EQ(parseEmailCategory("I would say this is work and finance"), Category::work);
  EXPECT_EQ(parseEmailCategory("networking"), Category::work);
  EXPECT_EQ(parseEmailCategory("of finance and work"), Category::work);
}

TEST(ParseEmailCategory, AnUnreadableResponseIsOther) {
  EXPECT_EQ(parseEmailCategory(""), Category::other);
  EXPECT_EQ(parseEmailCategory("?!"), Category::other);
}

TEST(EmailCategory, RawValuesReadBackExactly) {
  for (const auto category : allEmailCategories) {
    EXPECT_EQ(emailCategoryFromRawValue(rawValue(category)), category);
  }
  EXPECT_EQ(emailCategoryFromRawValue("work"), std::nullopt);
}

TEST(IntelligenceError, DescribesItself) {
  EXPECT_STREQ(IntelligenceError(IntelligenceError::Kind::emptyMessage).what(), "El mensaje está vacío");
  EXPECT_STREQ(IntelligenceError(IntelligenceError::Kind::generationFailed, "no answer").what(),
               "Error al generar respuesta: no answer");
}

TEST(UnavailableIntelligenceService, ReportsTheModelAsUnavailable) {
  UnavailableIntelligenceService service;
  EXPECT_EQ(service.checkAvailability().kind, IntelligenceService::Availability::Kind::unavailable);
  EXPECT_THROW(service.detectCategory(nullptr).await_resume(), IntelligenceError);
}

}  // namespace
}  // namespace tidewrack
