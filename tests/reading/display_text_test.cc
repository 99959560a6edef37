#include "reading/display_text.h"

#include <string>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(ShortenedLine, AnOrdinaryLineStays) {
  EXPECT_EQ(shortenedLine("Berth for the summer"), "Berth for the summer");
  EXPECT_EQ(shortenedLine(""), "");
  EXPECT_EQ(shortenedLine(std::string(maximumLineBytes, 'x')), std::string(maximumLineBytes, 'x'));
}

TEST(ShortenedLine, ALongLineEndsAtACharacterWithAnEllipsis) {
  std::string shortened(maximumLineBytes, 'x');
  shortened += "…";
  EXPECT_EQ(shortenedLine(std::string(50'000'000, 'x')), shortened);
  EXPECT_EQ(shortenedLine("ñññ", 3), "ñ…");
  EXPECT_EQ(shortenedLine("語語", 5), "語…");
}

TEST(ShortenedLine, AZeroByteIsShownAsUnknown) {
  EXPECT_EQ(shortenedLine(std::string("a\0b", 3)), "a\uFFFDb");
}

}  // namespace
}  // namespace tidewrack
