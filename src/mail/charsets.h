#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Bytes of mail to text, by a charset name that mail supplied: it may be wrong, quoted or unknown.
/// Nothing here fails; the result is always valid UTF-8. Safe from any thread.
namespace tidewrack {

/// Decodes strictly as the charset says and, where that is not possible, as decodeWithFallback does.
/// The name may be quoted and in any case.
std::string decodeText(std::string_view bytes, std::optional<std::string_view> charset);

/// UTF-8 when the bytes are valid UTF-8, otherwise ISO Latin 1.
std::string decodeWithFallback(std::string_view bytes);

/// Which bytes decodeText gives back unchanged, so that they need no copy.
enum class UnchangedBytes {
  validUTF8,  ///< All valid UTF-8.
  ascii,      ///< Those that hold only bytes below 0x80.
  none,       ///< No text can be relied on.
};

/// The rule for a charset; costs a comparison with a few names for the usual ones.
UnchangedBytes unchangedBytes(std::optional<std::string_view> charset);

/// Whether decodeText(bytes, charset) is known to equal the bytes. May say no although they are equal.
bool decodesUnchanged(std::string_view bytes, std::optional<std::string_view> charset);

}  // namespace tidewrack
