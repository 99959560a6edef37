#include "mail/encoded_words.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/regex.h>

#include "mail/charsets.h"
#include "mail/transfer_decoding.h"
#include "platform/unicode.h"
#include "test_sizes.h"

namespace tidewrack {
namespace {

TEST(EncodedWords, TwoAdjacentWordsSeparatedByABlankOrAFoldedLineJoinWithoutABlank) {
  EXPECT_EQ(decodeHeaderText("=?utf-8?Q?one?= =?utf-8?Q?two?="), "onetwo");
  EXPECT_EQ(decodeHeaderText("=?utf-8?B?b25l?=\r\n =?utf-8?B?dHdv?="), "onetwo");
  EXPECT_EQ(decodeHeaderText("=?utf-8?Q?one?==?utf-8?Q?two?="), "onetwo");
}

TEST(EncodedWords, PlainWordThenAnEncodedWordKeepsTheBlankBetweenThem) {
  EXPECT_EQ(decodeHeaderText("Re: =?utf-8?Q?caf=C3=A9?="), "Re: caf\u00E9");
  EXPECT_EQ(decodeHeaderText("=?utf-8?Q?caf=C3=A9?= and more"), "caf\u00E9 and more");
  EXPECT_EQ(decodeHeaderText("=?utf-8?Q?a?= b =?utf-8?Q?c?="), "a b c");
}

TEST(EncodedWords, LowerCaseBAndQWorkLikeTheCapitals) {
  EXPECT_EQ(decodeHeaderText("=?utf-8?b?w6k=?="), "\u00E9");
  EXPECT_EQ(decodeHeaderText("=?utf-8?B?w6k=?="), "\u00E9");
  EXPECT_EQ(decodeHeaderText("=?utf-8?q?=c3=a9?="), "\u00E9");
  EXPECT_EQ(decodeHeaderText("=?utf-8?Q?=C3=A9?="), "\u00E9");
}

TEST(EncodedWords, UnderscoreIsABlankInAQWordAndUntouchedInABWord) {
  EXPECT_EQ(decodeHeaderText("=?utf-8?q?a_b?="), "a b");
  // Base64 ignores it as unknown.
  EXPECT_EQ(decodeHeaderText("=?utf-8?b?YW_Jj?="), "abc");
}

TEST(EncodedWords, NameWithTheOpeningButNoClosingStaysUnchanged) {
  EXPECT_EQ(decodeHeaderText("  =?utf-8?q?abc  and  more "), "  =?utf-8?q?abc  and  more ");
  EXPECT_EQ(decodeHeaderText("a  b"), "a  b");
  EXPECT_EQ(decodeHeaderText(" ?= =? "), " ?= =? ");
  EXPECT_EQ(decodeHeaderText("=?utf-8?x?abc?=  d"), "=?utf-8?x?abc?=  d");
}

TEST(EncodedWords, UnknownCharsetDecodesThroughTheFallback) {
  EXPECT_EQ(decodeHeaderText("=?x-unknown?q?caf=C3=A9?="), "caf\u00E9");
  EXPECT_EQ(decodeHeaderText("=?x-unknown?q?caf=E9?="), "caf\u00E9");
}

TEST(EncodedWords, Base64ThatCannotBeDecodedStaysAsRawText) {
  EXPECT_EQ(decodeHeaderText("=?utf-8?b?YWJj=?="), "=?utf-8?b?YWJj=?=");
  EXPECT_EQ(decodeHeaderText("x  =?utf-8?b?YWI?= =?utf-8?q?y?="), "x =?utf-8?b?YWI?=y");
}

TEST(EncodedWords, CharacterSplitAcrossTwoWordsIsDamaged) {
  EXPECT_EQ(decodeHeaderText("=?utf-8?q?=C3?= =?utf-8?q?=A9?="), "\u00C3\u00A9");
}

TEST(EncodedWords, PayloadWithARawQuestionMarkIsNoWord) {
  EXPECT_EQ(decodeHeaderText("=?utf-8?q?what?\?="), "=?utf-8?q?what?\?=");
  EXPECT_EQ(decodeHeaderText("=?utf-8?q?\?="), "");
  EXPECT_EQ(decodeHeaderText("=??q?a?="), "=??q?a?=");
}

TEST(EncodedWords, WhiteSpaceCollapsesOnlyInATextWithAWord) {
  EXPECT_EQ(decodeHeaderText("  a \t b  =?utf-8?q?_c__d_?=  "), "a b c d");
  EXPECT_EQ(decodeHeaderText("\u00A0=?utf-8?q?a?="), "a");
}

TEST(EncodedWords, LanguageSuffixAndAnyOtherCharsetNameIsTakenWhole) {
  EXPECT_EQ(decodeHeaderText("=?utf-8*en?q?=C3=A9?="), "\u00E9");
  EXPECT_EQ(decodeHeaderText("=?iso-8859-1?q?=E9?="), "\u00E9");
  EXPECT_EQ(decodeHeaderText("=?a =?utf-8?q?b?="), "=?a b");
}

// The definition as it is written, by regular expressions.
std::string decodedByRegex(const std::string& text) {
  if (text.find("=?") == std::string::npos || text.find("?=") == std::string::npos) {
    return text;
  }
  UErrorCode status = U_ZERO_ERROR;
  const auto whole = icu::UnicodeString::fromUTF8(text);
  icu::RegexMatcher matcher("=\\?([^?]+)\\?([bBqQ])\\?([^?]*)\\?=", whole, 0, status);
  const auto bytes = [](const icu::UnicodeString& part) {
    std::string result;
    part.toUTF8String(result);
    return result;
  };
  std::string result;
  std::int32_t cursor = 0;
  bool found = false;
  while (matcher.find(status)) {
    found = true;
    const std::string gap = bytes(whole.tempSubStringBetween(cursor, matcher.start(status)));
    result += trimWhitespaceAndNewlines(gap).empty() ? "" : gap;
    const std::string charset = bytes(matcher.group(1, status));
    const char encoding = bytes(matcher.group(2, status))[0];
    std::string payload = bytes(matcher.group(3, status));
    if (encoding == 'b' || encoding == 'B') {
      const auto decoded = decodeBase64(payload);
      result += decoded ? decodeText(*decoded, charset) : bytes(matcher.group(status));
    } else {
      std::replace(payload.begin(), payload.end(), '_', ' ');
      result += decodeText(decodeQuotedPrintable(payload), charset);
    }
    cursor = matcher.end(status);
  }
  if (!found) {
    return text;
  }
  result += bytes(whole.tempSubString(cursor));
  const auto joined = icu::UnicodeString::fromUTF8(result);
  icu::RegexMatcher spaces("\\s+", joined, 0, status);
  return std::string(trimWhitespaceAndNewlines(bytes(spaces.replaceAll(" ", status))));
}

TEST(EncodedWords, EveryTextGivesWhatTheRegularExpressionGives) {
  const std::vector<std::string> pieces = {"=?",
                                           "?=",
                                           "=",
                                           "?",
                                           "utf-8",
                                           "iso-8859-1",
                                           "b",
                                           "Q",
                                           "?q?",
                                           "?B?",
                                           " ",
                                           "\r\n ",
                                           "\u00A0",
                                           "a",
                                           "YWJj",
                                           "YQ==",
                                           "=C3=A9",
                                           "_",
                                           "\u00E9",
                                           "=?utf-8?q?x=20y?=",
                                           "=?utf-8?b?w6k=?=",
                                           "\u3042"};
  std::mt19937 random(11);
  for (int round = 0; round < randomRounds; ++round) {
    std::string text;
    const std::size_t count = random() % 14;
    for (std::size_t index = 0; index < count; ++index) {
      text += pieces[random() % pieces.size()];
    }
    ASSERT_EQ(decodeHeaderText(text), decodedByRegex(text)) << text;
  }
}

std::string repeated(std::string_view piece) {
  std::string text;
  text.reserve(hostileSize + piece.size());
  while (text.size() < hostileSize) {
    text += piece;
  }
  return text;
}

TEST(EncodedWords, HostileTextsOfAnyLengthAreReadInLinearTime) {
  for (const auto* piece : {"=?", "=?a", "=?a?", "=?a?b", "=?a?b?", "=?a?q?x? ", "?=", "=?\?=", " ="}) {
    const std::string text = repeated(piece);
    EXPECT_EQ(decodeHeaderText(text), text) << piece;
  }
  const std::string words = repeated("=?utf-8?q?a?= ");
  EXPECT_EQ(decodeHeaderText(words).size(), words.size() / 14);
  const std::string blanks = repeated(" ") + "=?utf-8?q?a?=" + repeated("\t");
  EXPECT_EQ(decodeHeaderText(blanks), "a");
}

TEST(EncodedWords, ManyUnknownCharsetsAreReadInLinearTime) {
  std::string text;
  std::size_t count = 0;
  while (text.size() < hostileSize / 10) {
    text += "=?x" + std::to_string(count++) + "?q?a?= ";
  }
  EXPECT_EQ(decodeHeaderText(text), std::string(count, 'a'));
}

}  // namespace
}  // namespace tidewrack
