#include "platform/unicode.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

#include <unicode/brkiter.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/coll.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utext.h>

#include "platform/byte_word.h"
#include "platform/utf8.h"

namespace tidewrack {
namespace {

// ICU counts in 32 bits. Longer texts are worked on in pieces, cut between characters.
template <typename Work>
void forEachPiece(std::string_view text, const Work& work) {
  constexpr std::size_t most = std::size_t{1} << 29U;
  while (!text.empty()) {
    std::size_t size = std::min(text.size(), most);
    while (size < text.size() && isTrailByte(text[size])) {
      --size;
    }
    work(text.substr(0, size));
    text.remove_prefix(size);
  }
}

bool usesLatinGreekOrCyrillic(char32_t character) noexcept {
  UErrorCode status = U_ZERO_ERROR;
  switch (uscript_getScript(static_cast<UChar32>(character), &status)) {
    case USCRIPT_LATIN:
    case USCRIPT_GREEK:
    case USCRIPT_CYRILLIC:
      return true;
    default:
      return false;
  }
}

// The letter under the diacritics of a Latin, Greek or Cyrillic letter; 0 for any other character.
char32_t baseLetter(char32_t character) {
  const auto code = static_cast<UChar32>(character);
  if (!u_isalpha(code) || !usesLatinGreekOrCyrillic(character)) {
    return 0;
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* canonical = icu::Normalizer2::getNFDInstance(status);
  icu::UnicodeString parts;
  if (U_FAILURE(status) || !canonical->getDecomposition(code, parts)) {
    return character;
  }
  return static_cast<char32_t>(parts.char32At(0));
}

// All three scripts have their composed letters below this.
constexpr char32_t tableSize = 0x2200;

const std::vector<char32_t>& baseLetters() {
  static const std::vector<char32_t> table = [] {
    std::vector<char32_t> letters(tableSize);
    for (char32_t character = 0; character < tableSize; ++character) {
      letters[character] = baseLetter(character);
    }
    return letters;
  }();
  return table;
}

bool isMark(char32_t character) noexcept {
  return character >= 0x300 && u_charType(static_cast<UChar32>(character)) == U_NON_SPACING_MARK;
}

// Walks over the ends of user-perceived characters. One a thread.
class GraphemeBreaker {
 public:
  GraphemeBreaker() {
    UErrorCode status = U_ZERO_ERROR;
    iterator_.reset(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  }
  ~GraphemeBreaker() { utext_close(&text_); }
  GraphemeBreaker(const GraphemeBreaker&) = delete;
  GraphemeBreaker& operator=(const GraphemeBreaker&) = delete;

  // Moves over at most `count` characters; gives their number and their bytes.
  std::pair<std::size_t, std::size_t> walk(std::string_view text, std::size_t count) {
    UErrorCode status = U_ZERO_ERROR;
    utext_openUTF8(&text_, text.data(), static_cast<std::int64_t>(text.size()), &status);
    iterator_->setText(&text_, status);
    std::size_t characters = 0;
    std::int32_t end = 0;
    while (characters < count) {
      const std::int32_t next = iterator_->next();
      if (next == icu::BreakIterator::DONE) {
        break;
      }
      end = next;
      ++characters;
    }
    return {characters, static_cast<std::size_t>(end)};
  }

  static GraphemeBreaker& ofThread() {
    thread_local GraphemeBreaker breaker;
    return breaker;
  }

 private:
  std::unique_ptr<icu::BreakIterator> iterator_;
  UText text_ = UTEXT_INITIALIZER;
};

// Whether the character joins with no neighbour that stands alone, too (UAX #29, Grapheme_Cluster_Break:
// what is Other, and a whole Hangul syllable).
bool standsAlone(char32_t character) noexcept {
  if (character < 0x7F) {
    return character >= 0x20;
  }
  // The letters and signs of most languages written in Latin, Greek and Cyrillic, but for the soft hyphen.
  if ((character >= 0xA0 && character < 0x300) || (character >= 0x370 && character < 0x483)) {
    return character != 0xAD;
  }
  const auto kind = u_getIntPropertyValue(static_cast<UChar32>(character), UCHAR_GRAPHEME_CLUSTER_BREAK);
  return kind == U_GCB_OTHER || kind == U_GCB_LV || kind == U_GCB_LVT;
}

// Moves over at most `count` user-perceived characters; gives their number and their bytes.
std::pair<std::size_t, std::size_t> walkGraphemes(std::string_view text, std::size_t count) {
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  const char* position = begin;
  const char* last = begin;  // where the last character that stands alone begins
  std::size_t characters = 0;
  while (position != end) {
    const bool roomForWord =
        static_cast<std::size_t>(end - position) >= byteWordSize && count - characters >= byteWordSize;
    if (roomForWord && isPrintable(loadWord(position))) {
      position += byteWordSize;
      characters += byteWordSize;
      last = position - 1;
      continue;
    }
    const char* next = position;
    if (!standsAlone(nextCharacter(next))) {
      break;
    }
    if (characters == count) {
      return {count, static_cast<std::size_t>(position - begin)};
    }
    last = position;
    position = next;
    ++characters;
  }
  if (position == end) {
    return {characters, text.size()};
  }
  // What comes now may belong to the character before it.
  characters -= characters > 0 ? 1 : 0;
  std::size_t size = static_cast<std::size_t>(last - begin);
  forEachPiece(text.substr(size), [&](std::string_view piece) {
    if (characters < count) {
      const auto [walked, bytes] = GraphemeBreaker::ofThread().walk(piece, count - characters);
      characters += walked;
      size += bytes;
    }
  });
  return {characters, size};
}

// The collator of the current locale that ignores case. One a thread.
const icu::Collator& caseInsensitiveCollator() {
  thread_local std::string localeName;
  thread_local std::unique_ptr<icu::Collator> collator;
  const icu::Locale& current = icu::Locale::getDefault();
  if (collator == nullptr || localeName != current.getName()) {
    UErrorCode status = U_ZERO_ERROR;
    // The locale of "C" orders by code point, capitals first; what ignores case takes the root order there.
    const bool isPOSIX = std::string_view(current.getVariant()) == "POSIX";
    std::unique_ptr<icu::Collator> made(
        icu::Collator::createInstance(isPOSIX ? icu::Locale::getRoot() : current, status));
    made->setStrength(icu::Collator::SECONDARY);
    collator = std::move(made);
    localeName = current.getName();
  }
  return *collator;  // NOLINT(clang-analyzer-cplusplus.NewDelete): the new one stands where the old one was.
}

bool currentLanguageIsTurkic() {
  const std::string_view language = icu::Locale::getDefault().getLanguage();
  return language == "tr" || language == "az";
}

// The form in which texts that differ in case, or are canonically equivalent, are equal. Composed first,
// since the Turkish dotted capital I folds as a whole.
icu::UnicodeString caseFolded(std::string_view text, bool turkic) {
  UErrorCode status = U_ZERO_ERROR;
  auto folded = icu::Normalizer2::getNFCInstance(status)->normalize(
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size()))),
      status);
  folded.foldCase(turkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
  return icu::Normalizer2::getNFDInstance(status)->normalize(folded, status);
}

// Whether the eight bytes here and the one behind them are of ASCII, with no white space but single blanks.
bool isSinglySpaced(const char* position) noexcept {
  const ByteWord here = loadWord(position);
  const ByteWord next = loadWord(position + 1);
  return isPrintable(here) && isPrintable(next) && (bytesEqualTo(here, ' ') & bytesEqualTo(next, ' ')) == 0;
}

// Whether the white space here is one blank with something else behind it.
bool isSingleBlank(const char* position, const char* end) noexcept {
  return *position == ' ' && position + 1 < end && spaceHint(position[1]) == SpaceHint::none;
}

char lowerASCII(char byte) noexcept {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
}

}  // namespace

bool isWhitespaceOrNewline(char32_t character) noexcept {
  // The categories Z* with the control characters named are exactly the property White_Space.
  return isRegexSpace(character);
}

bool isRegexSpace(char32_t character) noexcept {
  return character < 0x80 ? spaceHint(static_cast<char>(character)) == SpaceHint::space
                          : u_isUWhiteSpace(static_cast<UChar32>(character)) != 0;
}

std::string_view trimWhitespaceAndNewlines(std::string_view text) noexcept {
  const char* begin = text.data();
  const char* end = begin + text.size();
  while (begin < end) {
    const std::size_t length = spaceLength(begin, end);
    if (length == 0) {
      break;
    }
    begin += length;
  }
  while (begin < end) {
    const char* last = end - 1;
    while (last > begin && isTrailByte(*last)) {
      --last;
    }
    if (spaceLength(last, end) == 0) {
      break;
    }
    end = last;
  }
  return {begin, static_cast<std::size_t>(end - begin)};
}

std::string collapseWhitespace(std::string_view text) {
  return collapseWhitespace(text, std::numeric_limits<std::size_t>::max());
}

std::string collapseWhitespace(std::string_view text, std::size_t size) {
  std::string result;
  result.reserve(std::min(text.size(), size < text.size() ? size + 4 : size));
  const char* position = text.data();
  const char* const end = position + text.size();
  bool blankDue = false;
  while (position < end && result.size() < size) {
    if (const std::size_t length = spaceLength(position, end); length != 0) {
      blankDue = !result.empty();
      position += length;
      continue;
    }
    if (blankDue) {
      result.push_back(' ');
      blankDue = false;
    }
    // A run without white space, or only with blanks as they are to be, goes in one piece; it ends after
    // a whole character.
    const std::size_t room = size - result.size();
    const char* const limit = static_cast<std::size_t>(end - position) <= room ? end : position + room;
    const char* run = position + 1;
    while (run < limit) {
      if (static_cast<std::size_t>(limit - run) > byteWordSize && isSinglySpaced(run)) {
        run += byteWordSize;
        continue;
      }
      if (spaceHint(*run) != SpaceHint::none && spaceLength(run, end) != 0 && !isSingleBlank(run, limit)) {
        break;
      }
      ++run;
    }
    while (run < end && isTrailByte(*run)) {
      ++run;
    }
    result.append(position, run);
    position = run;
  }
  return result;
}

std::string lowercase(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  if (isASCII(text)) {
    std::transform(text.begin(), text.end(), std::back_inserter(result), lowerASCII);
    return result;
  }
  icu::StringByteSink<std::string> sink(&result);
  forEachPiece(text, [&sink](std::string_view piece) {
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToLower("", 0, {piece.data(), static_cast<std::int32_t>(piece.size())}, sink, nullptr,
                              status);
  });
  return result;
}

std::string uppercase(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  icu::StringByteSink<std::string> sink(&result);
  forEachPiece(text, [&sink](std::string_view piece) {
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToUpper("", 0, {piece.data(), static_cast<std::int32_t>(piece.size())}, sink, nullptr,
                              status);
  });
  return result;
}

std::string foldDiacritics(std::string_view text) {
  if (isASCII(text)) {
    return std::string(text);
  }
  const auto& letters = baseLetters();
  std::string result;
  result.reserve(text.size());
  const char* position = text.data();
  const char* const end = position + text.size();
  bool dropMarks = false;  // The last character that was no mark is a letter of the three scripts.
  while (position < end) {
    const char* const start = position;
    while (position < end && static_cast<unsigned char>(*position) < 0x80) {
      ++position;
    }
    if (position != start) {
      result.append(start, position);
      dropMarks = u_isalpha(static_cast<UChar32>(position[-1])) != 0;
      continue;
    }
    const char32_t character = nextCharacter(position);
    if (isMark(character)) {
      if (!dropMarks) {
        result.append(start, position);
      }
      continue;
    }
    const char32_t base = character < tableSize ? letters[character] : baseLetter(character);
    dropMarks = base != 0;
    if (base == 0 || base == character) {
      result.append(start, position);
    } else {
      appendCharacter(result, base);
    }
  }
  return result;
}

std::size_t graphemeCount(std::string_view text) {
  return walkGraphemes(text, std::numeric_limits<std::size_t>::max()).first;
}

std::string_view graphemePrefix(std::string_view text, std::size_t count) {
  return text.substr(0, walkGraphemes(text, count).second);
}

int localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) {
  const auto piece = [](std::string_view text) {
    return icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size()));
  };
  UErrorCode status = U_ZERO_ERROR;
  return caseInsensitiveCollator().compareUTF8(piece(a), piece(b), status);
}

namespace {

int graphemeBreakOf(UChar32 character) {
  return u_getIntPropertyValue(character, UCHAR_GRAPHEME_CLUSTER_BREAK);
}

// Whether a character is a mark, vowel sign or letter of a syllable that goes on with what stands before it
// (UAX #29, rules GB6 to GB9a). Selectors of a variant and other characters without a look change nothing.
bool goesOnWith(UChar32 before, UChar32 character) {
  switch (graphemeBreakOf(character)) {
    case U_GCB_EXTEND:
    case U_GCB_SPACING_MARK:
      return u_hasBinaryProperty(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) == 0;
    case U_GCB_V:
    case U_GCB_T: {
      const auto kind = graphemeBreakOf(before);
      return kind == U_GCB_L || kind == U_GCB_V || kind == U_GCB_T || kind == U_GCB_LV || kind == U_GCB_LVT;
    }
    default:
      return false;
  }
}

}  // namespace

bool localizedCaseInsensitiveContains(std::string_view text, std::string_view part) {
  if (part.empty()) {
    return false;
  }
  const bool turkic = currentLanguageIsTurkic();
  if (!turkic && isASCII(text) && isASCII(part)) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char a, char b) { return lowerASCII(a) == lowerASCII(b); }) != text.end();
  }
  const auto wanted = caseFolded(part, turkic);
  bool isHeld = false;
  forEachPiece(text, [&](std::string_view piece) {
    const auto whole = caseFolded(piece, turkic);
    for (std::int32_t at = whole.indexOf(wanted); at >= 0 && !isHeld; at = whole.indexOf(wanted, at + 1)) {
      // A letter is not held where the text has the letter with a mark.
      const std::int32_t behind = at + wanted.length();
      isHeld = behind == whole.length() || !goesOnWith(whole.char32At(behind - 1), whole.char32At(behind));
    }
  });
  return isHeld;
}

}  // namespace tidewrack
