#include "platform/byte_scan.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(ByteScan, TheFastScanEqualsThePlainOneOnRandomTexts) {
  std::mt19937 random(1);
  const std::string pieces[] = {"\r",
                                "\n",
                                "Fr",
                                "F",
                                "r",
                                "\n--",
                                "a",
                                "text",
                                "\xC3\xA9",
                                "\xE2\x82\xAC",
                                "\xF0\x9F\x98\x80",
                                "\xC3",
                                "\x80",
                                std::string(33, 'x')};
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    const std::size_t count = random() % 60;
    for (std::size_t i = 0; i < count; ++i) {
      text += pieces[random() % std::size(pieces)];
    }
    for (std::size_t from = 0; from <= text.size(); ++from) {
      ASSERT_EQ(findLineStart(text, 'F', 'r', from), plain::findLineStart(text, 'F', 'r', from)) << from;
    }
  }
}

TEST(ByteScan, ALineStartFollowsOnAnyLineEndAndNotOnTheBeginning) {
  EXPECT_EQ(findLineStart("Fr\nFr", 'F', 'r', 0), 3U);
  EXPECT_EQ(findLineStart("Fr\rFr", 'F', 'r', 0), 3U);
  EXPECT_EQ(findLineStart("Fr\r\nFr", 'F', 'r', 0), 4U);
  EXPECT_EQ(findLineStart("xFr\n F", 'F', 'r', 0), std::string_view::npos);
  EXPECT_EQ(findLineStart("\nFr\nFr", 'F', 'r', 2), 4U);
  EXPECT_EQ(findLineStart("", 'F', 'r', 0), std::string_view::npos);
}

}  // namespace
}  // namespace tidewrack
