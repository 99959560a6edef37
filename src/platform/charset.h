#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Conversion from a named charset (through ICU). Safe from any thread; each thread keeps the converters
/// that it has used.
namespace tidewrack {

/// Which texts a charset leaves byte for byte as they are when they become UTF-8.
enum class CharsetKind {
  unknown,        ///< Nobody knows the name.
  utf8,           ///< Valid UTF-8 stays as it is.
  asciiSuperset,  ///< Bytes below 0x80 are ASCII, wherever they stand alone.
  other,          ///< Every text must be converted (UTF-16, ISO-2022-JP, EBCDIC, ...).
};

/// What is known about a charset of that name or alias (IANA character sets, and the further aliases of
/// ICU; case, hyphens and underscores do not matter).
CharsetKind charsetKind(std::string_view name);

/// The bytes as valid UTF-8, or nothing when the name is unknown, a byte sequence is ill-formed or has no
/// character, or the text ends within a character. A byte order mark stays in the text as U+FEFF; that of
/// UTF-16 and UTF-32 also decides their byte order, which without one is big-endian (RFC 2781, section 4.3).
std::optional<std::string> decodeCharset(std::string_view bytes, std::string_view name);

/// ISO Latin 1 as UTF-8. Every byte has a character (U+0000 to U+00FF).
std::string decodeLatin1(std::string_view bytes);

}  // namespace tidewrack
