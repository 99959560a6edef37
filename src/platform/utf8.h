#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The small change of valid UTF-8: single characters. Text operations are in platform/unicode.h.
namespace tidewrack {

/// Reads the character at `text`, which must be valid UTF-8, and moves behind it.
inline char32_t nextCharacter(const char*& text) noexcept {
  const auto lead = static_cast<unsigned char>(*text++);
  if (lead < 0x80) {
    return lead;
  }
  const auto trail = [&text] { return static_cast<char32_t>(static_cast<unsigned char>(*text++) & 0x3FU); };
  if (lead < 0xE0) {
    return ((lead & 0x1FU) << 6U) | trail();
  }
  if (lead < 0xF0) {
    const char32_t high = ((lead & 0x0FU) << 12U) | (trail() << 6U);
    return high | trail();
  }
  const char32_t high = ((lead & 0x07U) << 18U) | (trail() << 12U);
  const char32_t middle = high | (trail() << 6U);
  return middle | trail();
}

/// Whether the byte goes on with a character rather than beginning one.
inline bool isTrailByte(char byte) noexcept {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

inline void appendCharacter(std::string& text, char32_t character) {
  const auto byte = [&text](char32_t value) { text.push_back(static_cast<char>(value)); };
  if (character < 0x80) {
    byte(character);
  } else if (character < 0x800) {
    byte(0xC0U | (character >> 6U));
    byte(0x80U | (character & 0x3FU));
  } else if (character < 0x10000) {
    byte(0xE0U | (character >> 12U));
    byte(0x80U | ((character >> 6U) & 0x3FU));
    byte(0x80U | (character & 0x3FU));
  } else {
    byte(0xF0U | (character >> 18U));
    byte(0x80U | ((character >> 12U) & 0x3FU));
    byte(0x80U | ((character >> 6U) & 0x3FU));
    byte(0x80U | (character & 0x3FU));
  }
}

/// What may begin at a byte of valid UTF-8, for loops that look for white space.
enum class SpaceHint : std::uint8_t { none, space, maybe };

namespace detail {
inline constexpr auto spaceHints = [] {
  std::array<SpaceHint, 256> hints{};
  for (const unsigned char byte : {'\t', '\n', '\v', '\f', '\r', ' '}) {
    hints[static_cast<std::size_t>(byte)] = SpaceHint::space;
  }
  for (const int byte : {0xC2, 0xE1, 0xE2, 0xE3}) {
    hints[static_cast<std::size_t>(byte)] = SpaceHint::maybe;
  }
  return hints;
}();
}  // namespace detail

/// The hint for a byte: ASCII white space, a lead byte that some other white space has, or neither.
constexpr SpaceHint spaceHint(char byte) noexcept {
  return detail::spaceHints[static_cast<unsigned char>(byte)];
}

/// The number of bytes of the white space character (property White_Space) at `text`, or 0.
inline std::size_t spaceLength(const char* text, const char* end) noexcept {
  const auto at = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const auto left = static_cast<std::size_t>(end - text);
  switch (spaceHint(*text)) {
    case SpaceHint::none:
      return 0;
    case SpaceHint::space:
      return 1;
    case SpaceHint::maybe:
      break;
  }
  if (at(0) == 0xC2) {  // U+0085, U+00A0
    return left >= 2 && (at(1) == 0x85 || at(1) == 0xA0) ? 2 : 0;
  }
  if (left < 3) {
    return 0;
  }
  bool isSpace = false;
  if (at(0) == 0xE1) {
    isSpace = at(1) == 0x9A && at(2) == 0x80;  // U+1680
  } else if (at(0) == 0xE3) {
    isSpace = at(1) == 0x80 && at(2) == 0x80;  // U+3000
  } else if (at(1) == 0x80) {                  // U+2000 to U+200A, U+2028, U+2029, U+202F
    isSpace = at(2) <= 0x8A || at(2) == 0xA8 || at(2) == 0xA9 || at(2) == 0xAF;
  } else {
    isSpace = at(1) == 0x81 && at(2) == 0x9F;  // U+205F
  }
  return isSpace ? 3 : 0;
}

/// The beginning of some bytes: a well-formed character, or the maximal subpart of an ill-formed one.
struct UTF8Sequence {
  std::size_t length;  ///< At least 1.
  bool isWellFormed;
};

/// Reads the sequence at the beginning of any bytes, which are not empty (Unicode Standard 3.9, table 3-7).
UTF8Sequence firstSequence(std::string_view bytes) noexcept;

}  // namespace tidewrack
