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

TEST(TextNumbers, ManyTextsAtOnceGetTheNumbersThatTheyWouldGetOneByOne) {
  for (const std::size_t count : {0U, 1U, 7U, 8U, 23U, 24U, 25U, 3000U}) {
    std::vector<Text> texts;
    for (std::size_t i = 0; i < count; ++i) {
      texts.emplace_back("text " + std::to_string(i * i % 997));
    }
    TextNumbers expected;
    TextNumbers numbers;
    const auto textAt = [&](std::size_t i) -> const Text& { return texts[i]; };
    std::size_t next = 0;
    numbers.numberEach(count, textAt, [&](std::size_t i, TextNumbers::Number number) {
      EXPECT_EQ(i, next++);
      EXPECT_EQ(number, expected.numberOf(texts[i]));
    });
    EXPECT_EQ(next, count);
    texts.emplace_back("unknown");
    next = 0;
    numbers.findEach(texts.size(), textAt, [&](std::size_t i, std::optional<TextNumbers::Number> number) {
      EXPECT_EQ(i, next++);
      EXPECT_EQ(number, expected.find(texts[i]));
    });
    EXPECT_EQ(next, count + 1);
  }
}

}  // namespace
}  // namespace tidewrack
