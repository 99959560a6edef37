#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tidewrack {

/// What one character beyond ASCII is for the words of a search, told without its neighbours: what is left of
/// it in lower case, without diacritics (platform/unicode.h) and composed, and whether that can be part of a
/// word (the general categories L*, M* and N*).
class WordCharacter {
 public:
  enum class Kind : std::uint8_t {
    unknown,
    letter,  ///< Part of a word. No two of them share a user-perceived character.
    part,    ///< Part of a word, and maybe of the user-perceived character of its neighbours.
    mark,    ///< A mark: goes where takesMarks holds for what it stands on, else stays as a part of a word.
    separator,  ///< No part of a word.
    inContext,  ///< Its neighbours decide.
  };
  static constexpr std::size_t longest = 3;

  constexpr WordCharacter() = default;
  constexpr WordCharacter(Kind kind, bool takesMarks) : bits_(static_cast<std::uint32_t>(kind)) {
    bits_ |= takesMarks ? marksBit : 0;
  }
  /// A letter or part. Its bytes are at most `longest`, and no more than the character itself has.
  WordCharacter(Kind kind, bool takesMarks, const char* bytes, std::size_t size);

  [[nodiscard]] Kind kind() const { return static_cast<Kind>(bits_ & kindMask); }
  /// Whether marks behind it go.
  [[nodiscard]] bool takesMarks() const { return (bits_ & marksBit) != 0; }
  /// Writes the bytes of a letter or part to a place with room for `longest`, and gives the place behind
  /// them.
  char* write(char* place) const {
    place[0] = static_cast<char>(bits_ >> 8U);
    place[1] = static_cast<char>(bits_ >> 16U);
    place[2] = static_cast<char>(bits_ >> 24U);
    return place + (bits_ >> sizeShift & longest);
  }

 private:
  static constexpr std::uint32_t kindMask = 7;
  static constexpr std::uint32_t marksBit = 8;
  static constexpr unsigned sizeShift = 4;

  std::uint32_t bits_ = 0;
};

namespace detail {
inline constexpr std::size_t knownWordCharacters = 0x10000;
extern std::array<std::atomic<WordCharacter>, knownWordCharacters> wordCharacters;
/// Looks into the Unicode tables.
WordCharacter findWordCharacter(char32_t character) noexcept;
}  // namespace detail

/// Never of kind unknown. Safe from any thread.
inline WordCharacter wordCharacter(char32_t character) noexcept {
  if (character < detail::knownWordCharacters) {
    const auto known = detail::wordCharacters[character].load(std::memory_order_relaxed);
    if (known.kind() != WordCharacter::Kind::unknown) {
      return known;
    }
  }
  return detail::findWordCharacter(character);
}

}  // namespace tidewrack
