#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Base64 (RFC 4648, section 4). Linear; safe from any thread.
namespace tidewrack {

/// Every byte that is neither a digit of the alphabet nor "=" is ignored. Nothing when the padding is
/// missing or incomplete (digits and "=" together make no whole groups of four), when a digit stands alone
/// in its group, or when a digit follows an "=". No digits and no padding give no bytes.
std::optional<std::string> decodeBase64(std::string_view text);

/// The number of bytes that decodeBase64 gives, without making them.
std::optional<std::uint64_t> decodedBase64Size(std::string_view text) noexcept;

/// With padding, without line ends.
std::string encodeBase64(std::string_view bytes);
/// The same behind a text.
void appendBase64(std::string& text, std::string_view bytes);

}  // namespace tidewrack
