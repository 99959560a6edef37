#pragma once

#include <cstddef>
#include <string_view>

#include "platform/utf8.h"

/// Searches without regard to case for ASCII words in lower case, as a regular expression with the
/// case-insensitive option makes them. That folds by Unicode (CaseFolding.txt, C and F), so besides the
/// capitals the long s stands for "s", the Kelvin sign for "k", and the ligatures U+FB05 and U+FB06 for
/// "st". No other character has only ASCII letters as its folding that our words hold.
namespace tidewrack {

inline constexpr std::size_t notFound = std::string_view::npos;

inline char asciiLower(char byte) noexcept {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

/// Where the word that stands at `position` ends, or notFound when another text stands there.
inline std::size_t endOfWord(std::string_view text, std::size_t position, std::string_view word) noexcept {
  for (std::size_t i = 0; i < word.size(); ++i) {
    const std::string_view rest = text.substr(position);
    if (!rest.empty() && asciiLower(rest.front()) == word[i]) {
      ++position;
    } else if (word[i] == 's' && i + 1 < word.size() && word[i + 1] == 't' &&
               (rest.starts_with("\uFB05") || rest.starts_with("\uFB06"))) {
      position += 3;
      ++i;
    } else if (word[i] == 's' && rest.starts_with("\u017F")) {
      position += 2;
    } else if (word[i] == 'k' && rest.starts_with("\u212A")) {
      position += 3;
    } else {
      return notFound;
    }
  }
  return position;
}

/// A word in the text: where it begins and ends.
struct WordPlace {
  std::size_t begin = notFound;
  std::size_t end = notFound;
  explicit operator bool() const noexcept { return begin != notFound; }
};

/// The first place of a word at or behind `from`.
inline WordPlace findWord(std::string_view text, std::string_view word, std::size_t from) noexcept {
  for (std::size_t position = from; position < text.size(); ++position) {
    if (const auto end = endOfWord(text, position, word); end != notFound) {
      return {position, end};
    }
  }
  return {};
}

/// The same for a word that begins with "<", and faster.
inline WordPlace findTag(std::string_view text, std::string_view tag, std::size_t from) noexcept {
  for (auto position = text.find('<', from); position != notFound; position = text.find('<', position + 1)) {
    if (const auto end = endOfWord(text, position, tag); end != notFound) {
      return {position, end};
    }
  }
  return {};
}

inline bool startsWithIgnoringCase(std::string_view text, std::string_view word) noexcept {
  return endOfWord(text, 0, word) != notFound;
}

/// The position behind the white space (`\s*`) that stands at `position`.
inline std::size_t skipSpaces(std::string_view text, std::size_t position) noexcept {
  const char* const end = text.data() + text.size();
  while (position < text.size()) {
    const std::size_t length = spaceLength(text.data() + position, end);
    if (length == 0) {
      break;
    }
    position += length;
  }
  return position;
}

}  // namespace tidewrack
