#include "platform/word_characters.h"

#include <string>

#include <unicode/uchar.h>

#include "platform/normalization.h"
#include "platform/unicode.h"
#include "platform/utf8.h"

namespace tidewrack {
namespace {

using Kind = WordCharacter::Kind;

// The one character whose lower case depends on what stands around it (Unicode Standard 3.13, Final_Sigma).
constexpr char32_t capitalSigma = 0x03A3;

bool isAlphanumeric(char32_t character) {
  return (U_GET_GC_MASK(static_cast<UChar32>(character)) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) != 0;
}

WordCharacter describe(char32_t character) {
  if (u_charType(static_cast<UChar32>(character)) == U_NON_SPACING_MARK) {
    return {Kind::mark, false};
  }
  std::string text;
  appendCharacter(text, character);
  const std::string folded = foldDiacritics(text);
  const bool takesMarks = foldDiacritics(text + "\u0301") == folded;
  const std::string lower = canonicallyComposed(lowercase(folded));
  const char* end = lower.data();
  const char32_t result = nextCharacter(end);
  if (character == capitalSigma || end != lower.data() + lower.size()) {
    return {Kind::inContext, false};
  }
  if (!isAlphanumeric(result)) {
    return {Kind::separator, takesMarks};
  }
  if (lower.size() > text.size() || lower.size() > WordCharacter::longest) {
    return {Kind::inContext, false};
  }
  switch (u_getIntPropertyValue(static_cast<UChar32>(result), UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_OTHER:
    case U_GCB_LV:
    case U_GCB_LVT:
      return {Kind::letter, takesMarks, lower.data(), lower.size()};
    case U_GCB_PREPEND:  // Joins with whatever follows.
      return {Kind::inContext, false};
    default:
      return {Kind::part, takesMarks, lower.data(), lower.size()};
  }
}

}  // namespace

WordCharacter::WordCharacter(Kind kind, bool takesMarks, const char* bytes, std::size_t size)
    : WordCharacter(kind, takesMarks) {
  bits_ |= static_cast<std::uint32_t>(size) << sizeShift;
  for (std::size_t i = 0; i < size; ++i) {
    bits_ |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << (8 * (i + 1));
  }
}

namespace detail {

constinit std::array<std::atomic<WordCharacter>, knownWordCharacters> wordCharacters{};

WordCharacter findWordCharacter(char32_t character) noexcept {
  const WordCharacter found = describe(character);
  if (character < knownWordCharacters) {
    wordCharacters[character].store(found, std::memory_order_relaxed);
  }
  return found;
}

}  // namespace detail
}  // namespace tidewrack
