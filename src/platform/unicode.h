#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Text operations that need the Unicode tables (through ICU). All take and give valid UTF-8, never fail,
/// run in linear time and are safe from any thread.
namespace tidewrack {

/// White space and newlines in the sense of trimming: the general categories Z*, tab, U+000A to U+000D
/// and U+0085.
bool isWhitespaceOrNewline(char32_t character) noexcept;
/// What `\s` of a regular expression matches (the property White_Space, UTS #18).
bool isRegexSpace(char32_t character) noexcept;

/// The text without white space and newlines at both ends. The result points into the argument.
std::string_view trimWhitespaceAndNewlines(std::string_view text) noexcept;

/// Every run of `\s` becomes one blank, and both ends are trimmed.
std::string collapseWhitespace(std::string_view text);
/// The same, but ends after the first whole character that makes the result at least `size` bytes long.
std::string collapseWhitespace(std::string_view text, std::size_t size);

/// Lower case, independent of the locale (Unicode Standard 3.13, full mapping).
std::string lowercase(std::string_view text);
/// Upper case, likewise.
std::string uppercase(std::string_view text);

/// Diacritics go from Latin, Greek and Cyrillic letters; marks of other scripts stay. Case stays.
std::string foldDiacritics(std::string_view text);

/// Number of user-perceived characters (extended grapheme clusters, UAX #29).
std::size_t graphemeCount(std::string_view text);
/// The longest beginning of at most `count` user-perceived characters. The result points into the argument.
std::string_view graphemePrefix(std::string_view text, std::size_t count);

/// Whether every byte is below 0x80. Any bytes are allowed.
bool isASCII(std::string_view bytes) noexcept;
/// Whether the bytes are valid UTF-8 (Unicode Standard 3.9, table 3-7). Any bytes are allowed.
bool isValidUTF8(std::string_view bytes) noexcept;
/// Valid UTF-8 out of any bytes: each maximal subpart of an ill-formed sequence becomes U+FFFD
/// (Unicode Standard 3.9, "U+FFFD Substitution of Maximal Subparts").
std::string repairUTF8(std::string_view bytes);

/// Ascending order of user texts without regard to case, under the current locale: below, at or above zero.
int localizedCaseInsensitiveCompare(std::string_view a, std::string_view b);
/// Whether `text` holds `part`, without regard to case, under the current locale. An empty part is not held.
bool localizedCaseInsensitiveContains(std::string_view text, std::string_view part);

}  // namespace tidewrack
