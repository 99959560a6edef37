#include "cli/output.h"

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(OutputTest, columnsArePartedByTabsInAPipe) {
  EXPECT_EQ(formatColumns({{"a", "b"}, {"long", ""}}, false), "a\tb\nlong\t\n");
  EXPECT_EQ(formatColumns({}, false), "");
}

TEST(OutputTest, columnsAreAlignedOnATerminalByTheWidthOfTheirText) {
  EXPECT_EQ(formatColumns({{"a", "b"}, {"long", "c"}}, true), "a     b\nlong  c\n");
  EXPECT_EQ(formatColumns({{"会議", "b"}, {"é", "c"}}, true), "会議  b\né     c\n");
  EXPECT_EQ(displayWidth("e\u0301"), 1U);
  EXPECT_EQ(displayWidth("a\u200Bb"), 2U);
}

TEST(OutputTest, controlCharactersBreakNoTable) {
  EXPECT_EQ(formatColumns({{"a\tb\nc\x1b[2J", "d"}}, false), "a b c [2J\td\n");
}

TEST(OutputTest, textForATerminalKeepsLinesAndCommandsNothing) {
  EXPECT_EQ(terminalSafe("one\n\ttwo\r\x1b]0;title\x07"), "one\n\ttwo\uFFFD\uFFFD]0;title\uFFFD");
  EXPECT_EQ(terminalSafe("\u009b2J"), "\uFFFD2J");
}

}  // namespace
}  // namespace tidewrack
