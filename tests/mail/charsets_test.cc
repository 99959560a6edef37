#include "mail/charsets.h"

#include <random>

#include <gtest/gtest.h>

#include "platform/unicode.h"
#include "test_sizes.h"

namespace tidewrack {
namespace {

using std::string_view_literals::operator""sv;

TEST(DecodeText, UTF8InCapitalsOrInQuotesResolvesLikeInLowerCase) {
  for (const auto* name : {"utf-8", "UTF-8", "\"UTF-8\"", "'utf-8'", " Utf8\r\n", "\t\"utf8\" "}) {
    EXPECT_EQ(decodeText("\xC3\xA9", name), "\u00E9") << name;
  }
}

TEST(DecodeText, NamesOutsideTheTableResolveThroughTheCharsetLibrary) {
  EXPECT_EQ(decodeText("\xF0\xD2\xC9", "KOI8-R"), "\u041F\u0440\u0438");
  EXPECT_EQ(decodeText("\xA4", "\"ISO-8859-15\""), "\u20AC");
  EXPECT_EQ(decodeText("\x1B$BF|\x1B(B", "iso-2022-jp"), "\u65E5");
  EXPECT_EQ(decodeText("ansi", "ANSI_X3.4-1968"), "ansi");
}

TEST(DecodeText, NameThatNothingResolvesWithValidUTF8BytesComesBackAsUTF8) {
  EXPECT_EQ(decodeText("h\xC3\xA9", "x-no-such-charset"), "h\u00E9");
  EXPECT_EQ(decodeText("h\xC3\xA9", ""), "h\u00E9");
  EXPECT_EQ(decodeText("h\xC3\xA9", "\"\""), "h\u00E9");
  EXPECT_EQ(decodeText("h\xC3\xA9", std::nullopt), "h\u00E9");
}

TEST(DecodeText, InvalidUTF8ReadsAsLatin1InFullWhateverWasNamed) {
  const auto* const bytes = "\xC3\xA9 \xE9";
  const auto* const latin1 = "\u00C3\u00A9 \u00E9";
  EXPECT_EQ(decodeText(bytes, "utf-8"), latin1);
  EXPECT_EQ(decodeText(bytes, "us-ascii"), latin1);
  EXPECT_EQ(decodeText(bytes, "x-no-such-charset"), latin1);
  EXPECT_EQ(decodeText(bytes, std::nullopt), latin1);
  EXPECT_EQ(decodeWithFallback(bytes), latin1);
}

TEST(DecodeText, CharsetThatCannotReadTheBytesFallsBack) {
  EXPECT_EQ(decodeText("\xC3\xA9", "us-ascii"), "\u00E9");
  EXPECT_EQ(decodeText("\xE9", "us-ascii"), "\u00E9");
  EXPECT_EQ(decodeText("a\x93", "shift_jis"), "a\u0093");
  EXPECT_EQ(decodeText("\xE3\x81", "gb2312"), "\u00E3\u0081");
}

TEST(DecodeText, Latin1ReadsUTF8BytesDoubledUp) {
  for (const auto* name : {"iso-8859-1", "latin1", "Latin-1"}) {
    EXPECT_EQ(decodeText("\xC3\xA9", name), "\u00C3\u00A9") << name;
  }
  EXPECT_EQ(decodeText("\x80", "iso-8859-1"), "\u0080");
}

TEST(DecodeText, Windows1252HasItsOwnCharacters) {
  EXPECT_EQ(decodeText("\x80 \x93x\x94", "windows-1252"), "\u20AC \u201Cx\u201D");
  EXPECT_EQ(decodeText("\x80", "CP1252"), "\u20AC");
}

TEST(DecodeText, ByteOrderMarkStays) {
  EXPECT_EQ(decodeText("\xEF\xBB\xBFx", "utf-8"), "\uFEFFx");
  EXPECT_EQ(decodeText("\xEF\xBB\xBFx", std::nullopt), "\uFEFFx");
  EXPECT_EQ(decodeText("\xFF\xFEx\0"sv, "utf-16"), "\uFEFFx");
}

TEST(DecodeText, BytesThatStayUnchangedAreToldApart) {
  EXPECT_EQ(unchangedBytes(std::nullopt), UnchangedBytes::validUTF8);
  EXPECT_EQ(unchangedBytes("\"UTF-8\""), UnchangedBytes::validUTF8);
  EXPECT_EQ(unchangedBytes("us-ascii"), UnchangedBytes::validUTF8);
  EXPECT_EQ(unchangedBytes("x-no-such-charset"), UnchangedBytes::validUTF8);
  EXPECT_EQ(unchangedBytes("ISO-8859-1"), UnchangedBytes::ascii);
  EXPECT_EQ(unchangedBytes("windows-1252"), UnchangedBytes::ascii);
  EXPECT_EQ(unchangedBytes("koi8-r"), UnchangedBytes::ascii);
  EXPECT_EQ(unchangedBytes("iso-2022-jp"), UnchangedBytes::none);
  EXPECT_EQ(unchangedBytes("utf-16"), UnchangedBytes::none);
  EXPECT_TRUE(decodesUnchanged("plain", "latin1"));
  EXPECT_FALSE(decodesUnchanged("\xC3\xA9", "latin1"));
  EXPECT_TRUE(decodesUnchanged("\xC3\xA9", "utf8"));
  EXPECT_FALSE(decodesUnchanged("\xE9", "utf8"));
  EXPECT_FALSE(decodesUnchanged("+AOk-", "utf-7"));
}

TEST(DecodeText, UnchangedBytesReallyStayUnchangedAndEveryResultIsValid) {
  const std::vector<std::string> names = {
      "utf-8",     "us-ascii",   "latin1", "windows-1252", "koi8-r",  "iso-2022-jp",
      "shift_jis", "gb18030",    "big5",   "euc-kr",       "utf-7",   "utf-16",
      "hz",        "iso-8859-8", "x-none", "windows-1258", "tis-620", "macintosh",
      "ibm-1047",  "utf-32",     "scsu",   "windows-1255"};
  std::mt19937 random(3);
  for (int round = 0; round < randomRounds; ++round) {
    std::string bytes;
    const bool mostlyASCII = random() % 2 == 0;
    const std::size_t size = random() % 12;
    for (std::size_t index = 0; index < size; ++index) {
      bytes.push_back(static_cast<char>(random() % (mostlyASCII ? 0x80 : 0x100)));
    }
    const std::string& name = names[random() % names.size()];
    const std::string text = decodeText(bytes, name);
    ASSERT_TRUE(isValidUTF8(text)) << name;
    ASSERT_TRUE(!decodesUnchanged(bytes, name) || text == bytes) << name << ": " << bytes;
  }
}

}  // namespace
}  // namespace tidewrack
