#include "reading/html_load_memory.h"

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

SharedHTML html(const char* text) {
  return std::make_shared<const std::string>(text);
}

TEST(HTMLLoadMemory, TheFirstDocumentIsLoaded) {
  HTMLLoadMemory memory;
  EXPECT_EQ(memory.documentToLoad(html("a"), HTMLAppearance::light, false),
            buildDocument("a", HTMLAppearance::light, false));
}

TEST(HTMLLoadMemory, TheSameAgainKeepsThePage) {
  HTMLLoadMemory memory;
  memory.documentToLoad(html("a"), HTMLAppearance::light, false);
  EXPECT_EQ(memory.documentToLoad(html("a"), HTMLAppearance::light, false), std::nullopt);
}

TEST(HTMLLoadMemory, AChangeOfAnyOfTheThreeLoadsAgain) {
  HTMLLoadMemory memory;
  memory.documentToLoad(html("a"), HTMLAppearance::light, false);
  EXPECT_TRUE(memory.documentToLoad(html("b"), HTMLAppearance::light, false));
  EXPECT_TRUE(memory.documentToLoad(html("b"), HTMLAppearance::dark, false));
  EXPECT_TRUE(memory.documentToLoad(html("b"), HTMLAppearance::dark, true));
  EXPECT_FALSE(memory.documentToLoad(html("b"), HTMLAppearance::dark, true));
}

TEST(HTMLLoadMemory, AViewThatLostItsPageLoadsItAgain) {
  HTMLLoadMemory memory;
  memory.documentToLoad(html("a"), HTMLAppearance::light, false);
  memory.forget();
  EXPECT_TRUE(memory.documentToLoad(html("a"), HTMLAppearance::light, false));
}

}  // namespace
}  // namespace tidewrack
