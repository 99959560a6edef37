#include "platform/unicode.h"

#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include "platform/utf8.h"

namespace tidewrack {
namespace {

std::string utf8(char32_t character) {
  std::string text;
  appendCharacter(text, character);
  return text;
}

template <typename Visit>
void forEachScalar(const Visit& visit) {
  for (char32_t character = 0; character < 0x110000; ++character) {
    if (character < 0xD800 || character > 0xDFFF) {
      visit(character);
    }
  }
}

class LocaleGuard {
 public:
  explicit LocaleGuard(const char* name) : before_(icu::Locale::getDefault()) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale(name), status);
  }
  ~LocaleGuard() {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(before_, status);
  }
  LocaleGuard(const LocaleGuard&) = delete;
  LocaleGuard& operator=(const LocaleGuard&) = delete;

 private:
  icu::Locale before_;
};

TEST(Unicode, RegexSpaceIsWhatTheRegularExpressionMatches) {
  UErrorCode status = U_ZERO_ERROR;
  icu::RegexMatcher matcher(icu::UnicodeString("\\s"), 0, status);
  forEachScalar([&](char32_t character) {
    const icu::UnicodeString text(static_cast<UChar32>(character));
    matcher.reset(text);
    const bool expected = matcher.matches(status) != 0;
    ASSERT_EQ(isRegexSpace(character), expected) << std::hex << static_cast<unsigned>(character);
    const std::string bytes = utf8(character);
    ASSERT_EQ(spaceLength(bytes.data(), bytes.data() + bytes.size()), expected ? bytes.size() : 0);
  });
}

TEST(Unicode, TrimmingTakesSeparatorsTabAndLineEnds) {
  forEachScalar([](char32_t character) {
    const bool expected = (U_GET_GC_MASK(static_cast<UChar32>(character)) & U_GC_Z_MASK) != 0 ||
                          (character >= 9 && character <= 13) || character == 0x85;
    ASSERT_EQ(isWhitespaceOrNewline(character), expected) << std::hex << static_cast<unsigned>(character);
    const std::string text = utf8(character) + "a" + utf8(character) + "b" + utf8(character);
    const auto trimmed = trimWhitespaceAndNewlines(text);
    ASSERT_EQ(trimmed, expected ? "a" + utf8(character) + "b" : text);
  });
  EXPECT_EQ(trimWhitespaceAndNewlines(""), "");
  EXPECT_EQ(trimWhitespaceAndNewlines(" \u00A0\u3000\r\n"), "");
}

TEST(Unicode, CharactersComeBackFromTheirBytes) {
  forEachScalar([](char32_t character) {
    const std::string text = utf8(character);
    const char* position = text.data();
    ASSERT_EQ(nextCharacter(position), character);
    ASSERT_EQ(position, text.data() + text.size());
    ASSERT_TRUE(isValidUTF8(text));
  });
}

TEST(Unicode, WhiteSpaceCollapsesToOneBlank) {
  EXPECT_EQ(collapseWhitespace(""), "");
  EXPECT_EQ(collapseWhitespace(" \t\n"), "");
  EXPECT_EQ(collapseWhitespace("plain"), "plain");
  EXPECT_EQ(collapseWhitespace("  a \r\n b\u00A0\u2003c\u200Bd  "), "a b c\u200Bd");
  EXPECT_EQ(collapseWhitespace("\u1680\u00E9\u3042 \u2028\U0001F600\u205F"), "\u00E9\u3042 \U0001F600");
}

TEST(Unicode, CollapsingUpToASizeGivesABeginningOfTheWhole) {
  const std::string text = " \u3042\u3042 a  \u00E9b\U0001F600\u3000cd\t\u2028e ";
  const std::string whole = collapseWhitespace(text);
  for (std::size_t size = 0; size <= whole.size() + 3; ++size) {
    const std::string part = collapseWhitespace(text, size);
    EXPECT_TRUE(whole.starts_with(part)) << size;
    EXPECT_TRUE(isValidUTF8(part)) << size;
    EXPECT_TRUE(part.size() >= size || part == whole) << size;
    EXPECT_LT(part.size(), size + 6) << size;
  }
}

TEST(Unicode, CaseMappingIsFullAndIndependentOfTheLocale) {
  const LocaleGuard turkish("tr_TR");
  EXPECT_EQ(lowercase("RE: TITLE"), "re: title");
  EXPECT_EQ(lowercase("\u00C9T\u00C9 \u0130"), "\u00E9t\u00E9 i\u0307");
  EXPECT_EQ(lowercase("\u039F\u0394\u039F\u03A3"), "\u03BF\u03B4\u03BF\u03C2");
  EXPECT_EQ(uppercase("stra\u00DFe i"), "STRASSE I");
  EXPECT_EQ(lowercase(""), "");
}

TEST(Unicode, DiacriticsGoFromLatinGreekAndCyrillicLetters) {
  EXPECT_EQ(foldDiacritics("H\u00E9llo \u00C5ngstr\u00F6m \u01D6"), "Hello Angstrom u");
  EXPECT_EQ(foldDiacritics("e\u0301\u0327x 1\u0301"), "ex 1\u0301");
  EXPECT_EQ(foldDiacritics("\u0390 \u1F84"), "\u03B9 \u03B1");
  EXPECT_EQ(foldDiacritics("\u0419 \u0451"), "\u0418 \u0435");
  EXPECT_EQ(foldDiacritics("\u00D8 \u0142 \u00DF"), "\u00D8 \u0142 \u00DF");
}

TEST(Unicode, MarksOfOtherScriptsStay) {
  const std::string hebrew = "\u05E9\u05C1\u05B8\u05DC";
  const std::string devanagari = "\u0915\u094D\u0937\u093F";
  const std::string japanese = "\u304C \u304B\u3099";
  const std::string korean = "\uD55C\uAE00";
  const std::string thai = "\u0E17\u0E35\u0E48";
  for (const auto& text : {hebrew, devanagari, japanese, korean, thai}) {
    EXPECT_EQ(foldDiacritics(text), text);
  }
  EXPECT_EQ(foldDiacritics("\u0301a"), "\u0301a");
}

TEST(Unicode, GraphemesAreUserPerceivedCharacters) {
  EXPECT_EQ(graphemeCount(""), 0U);
  EXPECT_EQ(graphemeCount("abc"), 3U);
  EXPECT_EQ(graphemeCount("a\r\nb\n\r"), 5U);
  EXPECT_EQ(graphemeCount("e\u0301x"), 2U);
  const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";
  EXPECT_EQ(graphemeCount(family + "\U0001F1E9\U0001F1EA!"), 3U);
  EXPECT_EQ(graphemePrefix(family + "ab", 1), family);
  EXPECT_EQ(graphemePrefix(family + "ab", 2), family + "a");
}

TEST(Unicode, GraphemePrefixEndsBetweenCharacters) {
  EXPECT_EQ(graphemePrefix("abc", 0), "");
  EXPECT_EQ(graphemePrefix("abc", 2), "ab");
  EXPECT_EQ(graphemePrefix("abc", 3), "abc");
  EXPECT_EQ(graphemePrefix("abc", 9), "abc");
  EXPECT_EQ(graphemePrefix("abe\u0301f", 3), "abe\u0301");
  EXPECT_EQ(graphemePrefix("ab\r\nc", 3), "ab\r\n");
}

// The ends of user-perceived characters, as ICU finds them.
std::vector<std::size_t> graphemeEnds(const std::string& text) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> iterator(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  const auto units = icu::UnicodeString::fromUTF8(text);
  iterator->setText(units);
  std::vector<std::size_t> ends;
  std::string before;
  std::int32_t begin = 0;
  for (std::int32_t end = iterator->next(); end != icu::BreakIterator::DONE; end = iterator->next()) {
    units.tempSubStringBetween(begin, end).toUTF8String(before);
    ends.push_back(before.size());
    begin = end;
  }
  return ends;
}

TEST(Unicode, EveryCharacterHasItsEndsBesideOrdinaryOnes) {
  std::mt19937 random(31);
  std::vector<std::string> lines;
  forEachScalar([&](char32_t character) {
    if (character < 0x3200 || character % 37 == 0) {
      const char32_t before = U"a\u00E9\uAC00\u4E00\U0001F600\u1100"[random() % 6];
      const char32_t behind = U"b\u0431\uAC01\u3042\u0301\u200D"[random() % 6];
      lines.push_back(utf8(before) + utf8(character) + utf8(behind));
    }
  });
  for (const auto& line : lines) {
    const auto ends = graphemeEnds(line);
    ASSERT_EQ(graphemeCount(line), ends.size()) << line;
    for (std::size_t count = 1; count <= ends.size(); ++count) {
      ASSERT_EQ(graphemePrefix(line, count).size(), ends[count - 1]) << line;
    }
  }
}

TEST(Unicode, OrdinaryCharactersEndBesideEachOther) {
  // One text of all that the short way may take; each character is then followed by another of them.
  std::string text;
  forEachScalar([&](char32_t character) {
    const auto value = static_cast<UChar32>(character);
    const int kind = u_getIntPropertyValue(value, UCHAR_GRAPHEME_CLUSTER_BREAK);
    if (character < 0x10000 && (kind == U_GCB_OTHER || kind == U_GCB_LV || kind == U_GCB_LVT)) {
      text += utf8(character);
    }
  });
  EXPECT_EQ(graphemeCount(text), graphemeEnds(text).size());
}

TEST(Unicode, LongTextsAreAsTheirCharactersOneByOne) {
  std::mt19937 random(41);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    std::string collapsed;
    bool blankDue = false;
    for (auto pieces = random() % 60; pieces > 0; --pieces) {
      const bool isSpace = random() % 3 == 0;
      if (isSpace) {
        constexpr std::array spaces{" ", " ", " ", " ", "  ", "\n", "\r\n", "\u2003"};
        text += spaces[random() % spaces.size()];
        blankDue = true;
        continue;
      }
      constexpr std::array words{"a", "of", "the", "word", "~", "\x7F", "\u00E9", "e\u0301", "characters"};
      const std::string word = words[random() % words.size()];
      text += word;
      collapsed += (blankDue && !collapsed.empty() ? " " : "") + word;
      blankDue = false;
    }
    ASSERT_EQ(collapseWhitespace(text), collapsed) << testing::PrintToString(text);
    const auto ends = graphemeEnds(text);
    ASSERT_EQ(graphemeCount(text), ends.size()) << testing::PrintToString(text);
    const auto count = ends.empty() ? 0 : 1 + random() % ends.size();
    ASSERT_EQ(graphemePrefix(text, count).size(), count == 0 ? 0 : ends[count - 1])
        << testing::PrintToString(text);
  }
}

// The plain rule, byte by byte, to compare with.
bool isValidByTable(std::string_view bytes) {
  std::int32_t index = 0;
  const auto size = static_cast<std::int32_t>(bytes.size());
  while (index < size) {
    UChar32 character = 0;
    U8_NEXT(reinterpret_cast<const std::uint8_t*>(bytes.data()), index, size, character);
    if (character < 0) {
      return false;
    }
  }
  return true;
}

std::string repairedByTable(std::string_view bytes) {
  std::string result;
  std::int32_t index = 0;
  const auto size = static_cast<std::int32_t>(bytes.size());
  while (index < size) {
    UChar32 character = 0;
    U8_NEXT_OR_FFFD(reinterpret_cast<const std::uint8_t*>(bytes.data()), index, size, character);
    appendCharacter(result, static_cast<char32_t>(character));
  }
  return result;
}

TEST(Unicode, ValidityIsThatOfTheStandardForEveryPairAtEveryBlockEdge) {
  for (int first = 0x00; first < 0x100; ++first) {
    for (int second = 0x00; second < 0x100; second += second < 0x7C || second > 0xC4 ? 4 : 1) {
      const std::string pair = {static_cast<char>(first), static_cast<char>(second)};
      for (const std::size_t at : {0U, 31U, 63U, 126U}) {
        std::string text(128, 'x');
        text.replace(at, 2, pair);
        ASSERT_EQ(isValidUTF8(text), isValidByTable(text)) << first << ' ' << second << ' ' << at;
      }
    }
  }
}

TEST(Unicode, ValidityAndRepairAgreeWithTheTablesOnRandomBytes) {
  const std::vector<std::string> pieces = {"a",
                                           "plain ascii text that fills a whole block of thirty-two bytes",
                                           "\u00E9",
                                           "\u3042",
                                           "\uFFFD",
                                           "\U0001F600",
                                           "\x80",
                                           "\xBF",
                                           "\xC0",
                                           "\xC2",
                                           "\xE0",
                                           "\xE0\x9F",
                                           "\xE0\xA0",
                                           "\xED\xA0\x80",
                                           "\xED\x9F",
                                           "\xF0",
                                           "\xF0\x8F",
                                           "\xF0\x90\x80",
                                           "\xF4\x8F\xBF",
                                           "\xF4\x90",
                                           "\xF5",
                                           "\xFF"};
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    const int count = static_cast<int>(random() % 12);
    // Mostly good pieces, so that valid texts occur as well.
    for (int index = 0; index < count; ++index) {
      text += pieces[random() % 8 == 0 ? random() % pieces.size() : random() % 6];
    }
    ASSERT_EQ(isValidUTF8(text), isValidByTable(text));
    ASSERT_EQ(repairUTF8(text), repairedByTable(text));
    text.resize(text.size() - std::min<std::size_t>(text.size(), random() % 3));
    ASSERT_EQ(isValidUTF8(text), isValidByTable(text));
    ASSERT_EQ(repairUTF8(text), repairedByTable(text));
  }
}

TEST(Unicode, ComparingIgnoresCaseInTheLocaleOfCToo) {
  const LocaleGuard posix("en_US_POSIX");
  EXPECT_EQ(localizedCaseInsensitiveCompare("Alpha", "alpha"), 0);
  EXPECT_LT(localizedCaseInsensitiveCompare("deep", "Work"), 0);
}

TEST(Unicode, ComparingAndFindingIgnoreCaseButNotDiacritics) {
  const LocaleGuard english("en_US");
  EXPECT_EQ(localizedCaseInsensitiveCompare("Alpha", "alpha"), 0);
  EXPECT_LT(localizedCaseInsensitiveCompare("alpha", "Beta"), 0);
  EXPECT_GT(localizedCaseInsensitiveCompare("\u00E9clair", "Eclair"), 0);
  EXPECT_TRUE(localizedCaseInsensitiveContains("Hello World", "o wOR"));
  EXPECT_FALSE(localizedCaseInsensitiveContains("Hello", ""));
  EXPECT_FALSE(localizedCaseInsensitiveContains("", "a"));
  EXPECT_TRUE(localizedCaseInsensitiveContains("CAF\u00C9", "af\u00E9"));
  EXPECT_TRUE(localizedCaseInsensitiveContains("cafe\u0301!", "F\u00C9"));
  EXPECT_FALSE(localizedCaseInsensitiveContains("caf\u00E9", "cafe"));
  EXPECT_TRUE(localizedCaseInsensitiveContains("caf\u00E9 cafe", "cafe"));
  EXPECT_TRUE(localizedCaseInsensitiveContains("Stra\u00DFe", "STRASSE"));
  // A syllable is not held where the text has it with a vowel sign or a final consonant.
  EXPECT_FALSE(localizedCaseInsensitiveContains("각", "가"));
  EXPECT_TRUE(localizedCaseInsensitiveContains("각가", "가"));
  EXPECT_TRUE(localizedCaseInsensitiveContains("\u1100\u1161\u11A8", "각"));
  EXPECT_FALSE(localizedCaseInsensitiveContains("कि", "क"));
  EXPECT_TRUE(localizedCaseInsensitiveContains("किताब", "कि"));
  EXPECT_TRUE(localizedCaseInsensitiveContains("I \u2764\uFE0F it", "\u2764"));
}

TEST(Unicode, TurkishHasTwoLettersI) {
  const LocaleGuard turkish("tr_TR");
  EXPECT_TRUE(localizedCaseInsensitiveContains("\u0130stanbul", "istanbul"));
  EXPECT_FALSE(localizedCaseInsensitiveContains("ISPARTA", "isparta"));
}

}  // namespace
}  // namespace tidewrack
