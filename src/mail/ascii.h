#pragma once

#include <algorithm>
#include <string_view>

/// Comparisons without regard to the case of ASCII letters, for the names and keywords of mail headers. These
/// equal a comparison in Unicode lower case for every keyword without a "k" (U+212A becomes that letter).
namespace tidewrack {

constexpr char asciiLowercase(char character) noexcept {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

inline bool equalsIgnoringCase(std::string_view text, std::string_view lowerCaseKeyword) noexcept {
  return text.size() == lowerCaseKeyword.size() &&
         std::equal(text.begin(), text.end(), lowerCaseKeyword.begin(),
                    [](char a, char b) { return asciiLowercase(a) == b; });
}

inline bool containsIgnoringCase(std::string_view text, std::string_view lowerCaseKeyword) noexcept {
  return std::search(text.begin(), text.end(), lowerCaseKeyword.begin(), lowerCaseKeyword.end(),
                     [](char a, char b) { return asciiLowercase(a) == b; }) != text.end();
}

}  // namespace tidewrack
