#include "platform/text_numbers.h"

#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(TextNumbers, TextsAreNumberedInTheOrderInWhichTheyFirstCome) {
  TextNumbers numbers;
  EXPECT_EQ(numbers.find("a"), std::nullopt);
  EXPECT_EQ(numbers.numberOf("b"), 0U);
  EXPECT_EQ(numbers.numberOf("a"), 1U);
  EXPECT_EQ(numbers.numberOf("b"), 0U);
  EXPECT_EQ(numbers.numberOf(""), 2U);
  EXPECT_EQ(numbers.size(), 3U);
  EXPECT_EQ(numbers[1], "a");
  EXPECT_EQ(numbers.find("a"), 1U);
  EXPECT_EQ(numbers.find(""), 2U);
  EXPECT_EQ(numbers.find("c"), std::nullopt);
}

TEST(TextNumbers, ManyTextsKeepTheirNumbers) {
  TextNumbers numbers;
  std::map<std::string, TextNumbers::Number> expected;
  std::mt19937 random(3);
  for (int round = 0; round < 20'000; ++round) {
    const std::string text = std::to_string(random() % 5'000);
    const auto next = static_cast<TextNumbers::Number>(expected.size());
    EXPECT_EQ(numbers.numberOf(Text(text)), expected.emplace(text, next).first->second);
  }
  numbers.reserve(50'000);
  for (const auto& [text, number] : expected) {
    EXPECT_EQ(numbers.find(text), number);
    EXPECT_EQ(numbers[number], text);
  }
}

}  // namespace
}  // namespace tidewrack
