#include "platform/charset.h"

#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "platform/unicode.h"

namespace tidewrack {
namespace {

using std::string_view_literals::operator""sv;

TEST(Charset, NamesResolveWhateverTheirCaseAndHyphens) {
  EXPECT_EQ(charsetKind("UTF-8"), CharsetKind::utf8);
  EXPECT_EQ(charsetKind("utf_8"), CharsetKind::utf8);
  EXPECT_EQ(charsetKind("ISO-8859-15"), CharsetKind::asciiSuperset);
  EXPECT_EQ(charsetKind("KOI8-R"), CharsetKind::asciiSuperset);
  EXPECT_EQ(charsetKind("Big5"), CharsetKind::asciiSuperset);
  EXPECT_EQ(charsetKind("GB18030"), CharsetKind::asciiSuperset);
  EXPECT_EQ(charsetKind("ISO_8859-1:1987"), CharsetKind::asciiSuperset);
  EXPECT_EQ(charsetKind("us-ascii"), CharsetKind::asciiSuperset);
}

TEST(Charset, CharsetsWithStatesOrWideUnitsAreNoSupersetOfASCII) {
  for (const auto* name : {"ISO-2022-JP", "ISO-2022-KR", "UTF-7", "HZ-GB-2312", "UTF-16", "UTF-16LE",
                           "UTF-32", "ibm-037", "SCSU", "BOCU-1", "IMAP-mailbox-name"}) {
    EXPECT_EQ(charsetKind(name), CharsetKind::other) << name;
  }
}

TEST(Charset, ControlCharactersThatChangeCountAsWell) {
  // This table exchanges U+001A, U+001C and U+007F.
  EXPECT_EQ(charsetKind("Shift_JIS"), CharsetKind::other);
}

TEST(Charset, UnknownNamesGiveNothing) {
  for (const auto name : {""sv, "unknown-8bit"sv, "x-unknown"sv, "../utf-8"sv, "/etc/passwd"sv,
                          "utf-8,version=1"sv, "utf-8\0"sv, "utf-8\n"sv,
                          "utf\xE2\x80\x93"
                          "8"sv,
                          "default_charset"sv}) {
    EXPECT_EQ(charsetKind(name), CharsetKind::unknown) << name;
    EXPECT_FALSE(decodeCharset("x", name)) << name;
  }
  EXPECT_FALSE(decodeCharset("x", std::string(100000, 'u')));
}

TEST(Charset, KnownTextsDecode) {
  EXPECT_EQ(decodeCharset("\xCF\xF0\xE8\xE2\xE5\xF2", "windows-1251"),
            "\u041F\u0440\u0438\u0432\u0435\u0442");
  EXPECT_EQ(decodeCharset("\xF0\xD2\xC9\xD7\xC5\xD4", "koi8-r"), "\u041F\u0440\u0438\u0432\u0435\u0442");
  EXPECT_EQ(decodeCharset("\x93\xFA\x96\x7B", "shift_jis"), "\u65E5\u672C");
  EXPECT_EQ(decodeCharset("\x1B$BF|K\\\x1B(B", "iso-2022-jp"), "\u65E5\u672C");
  EXPECT_EQ(decodeCharset("\xC8\xD5\xB1\xBE", "gb2312"), "\u65E5\u672C");
  EXPECT_EQ(decodeCharset("\xA4", "iso-8859-15"), "\u20AC");
  EXPECT_EQ(decodeCharset("\x80\x93", "windows-1252"), "\u20AC\u201C");
  EXPECT_EQ(decodeCharset("", "windows-1252"), "");
  EXPECT_EQ(decodeCharset("+AOk-", "utf-7"), "\u00E9");
}

TEST(Charset, DecodingIsStrict) {
  EXPECT_FALSE(decodeCharset("a\x80", "us-ascii"));
  EXPECT_FALSE(decodeCharset("a\xFF", "utf-8"));
  EXPECT_FALSE(decodeCharset("\x93", "shift_jis"));         // ends within a character
  EXPECT_FALSE(decodeCharset("\xA5", "iso-8859-3"));        // has no character
  EXPECT_FALSE(decodeCharset("\xD8\x00"sv, "utf-16be"));    // half a surrogate pair
  EXPECT_FALSE(decodeCharset("\x00\x61\x00"sv, "utf-16"));  // half a unit
  EXPECT_FALSE(decodeCharset("\x00\x11\x00\x00"sv, "utf-32be"));
}

TEST(Charset, ByteOrderMarkStays) {
  EXPECT_EQ(decodeCharset("\xEF\xBB\xBFx", "utf-8"), "\uFEFFx");
  EXPECT_EQ(decodeCharset("\xFE\xFF\0x"sv, "utf-16"), "\uFEFFx");
  EXPECT_EQ(decodeCharset("\xFF\xFEx\0"sv, "utf-16"), "\uFEFFx");
  EXPECT_EQ(decodeCharset("\xFF\xFEx\0"sv, "utf-16le"), "\uFEFFx");
  EXPECT_EQ(decodeCharset("\xFF\xFEx\0"sv, "x-utf-16le-bom"), "\uFEFFx");
  EXPECT_EQ(decodeCharset("\0\0\xFE\xFF\0\0\0x"sv, "utf-32"), "\uFEFFx");
  EXPECT_EQ(decodeCharset("\xFF\xFE\0\0x\0\0\0"sv, "utf-32"), "\uFEFFx");
}

TEST(Charset, WithoutAByteOrderMarkUTF16IsBigEndian) {
  EXPECT_EQ(decodeCharset("\0x\x20\xAC"sv, "utf-16"), "x\u20AC");
}

TEST(Charset, LongTextsKeepEveryCharacter) {
  std::string utf16;
  std::string expected;
  for (int index = 0; index < 20000; ++index) {
    if (index % 3 == 0) {
      utf16 += "\xD8\x3D\xDE\x00"sv;
      expected += "\U0001F600";
    } else {
      utf16 += "\0a"sv;
      expected += "a";
    }
  }
  EXPECT_EQ(decodeCharset(utf16, "utf-16be"), expected);
  EXPECT_EQ(decodeCharset(std::string(100000, '\xE9'), "iso-8859-2")->size(), 200000U);
}

TEST(Charset, Latin1HasACharacterForEveryByte) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes.push_back(static_cast<char>(byte));
  }
  EXPECT_EQ(decodeLatin1(bytes), decodeCharset(bytes, "iso-8859-1"));
  EXPECT_EQ(decodeLatin1(""), "");
  std::mt19937 random(37);
  for (int round = 0; round < 2000; ++round) {
    std::string text(random() % 40, 'a');
    for (char& byte : text) {
      byte = static_cast<char>(random() % 4 == 0 ? random() : 'b');
    }
    ASSERT_EQ(decodeLatin1(text), decodeCharset(text, "iso-8859-1"));
  }
}

TEST(Charset, ManyNamesAndThreadsAtOnce) {
  const auto work = [](unsigned seed) {
    std::mt19937 random(seed);
    for (int round = 0; round < 500; ++round) {
      const std::string name = "iso-8859-" + std::to_string(random() % 200);
      if (const auto text = decodeCharset("abc\xE9", name)) {
        EXPECT_TRUE(isValidUTF8(*text)) << name;
      }
    }
  };
  std::thread other(work, 1);
  work(2);
  other.join();
}

}  // namespace
}  // namespace tidewrack
