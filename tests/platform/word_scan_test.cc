#include "platform/word_scan.h"

#include <algorithm>
#include <array>
#include <random>
#include <string_view>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(WordScan, TellsLettersDigitsAndWhatLiesBeyondASCII) {
  std::array<char, wordBlock> text{};
  std::array<char, wordBlock> lower{};
  constexpr std::string_view sample = "aZ09@[`{/:\xC3\xA9 Q";
  std::ranges::copy(sample, text.begin());
  const auto bits = scanWords(text.data(), lower.data());
  EXPECT_EQ(bits.alphanumeric, 0b10000000001111U);
  EXPECT_EQ(bits.beyondASCII, 0b110000000000U);
  EXPECT_EQ(std::string_view(lower.data(), sample.size()), "az09@[`{/:\xC3\xA9 q");
}

TEST(WordScan, EqualsThePlainScanForEveryByteInEveryPlace) {
  std::mt19937 random(5);
  std::array<char, wordBlock> text{};
  for (int round = 0; round < 4000; ++round) {
    for (auto& byte : text) {
      byte = static_cast<char>(random());
    }
    std::array<char, wordBlock> fast{};
    std::array<char, wordBlock> slow{};
    const auto fastBits = scanWords(text.data(), fast.data());
    const auto slowBits = plain::scanWords(text.data(), slow.data());
    ASSERT_EQ(fastBits.alphanumeric, slowBits.alphanumeric);
    ASSERT_EQ(fastBits.beyondASCII, slowBits.beyondASCII);
    ASSERT_EQ(fast, slow);
  }
}

}  // namespace
}  // namespace tidewrack
