#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Content-Transfer-Encoding (RFC 2045, section 6). Everything is linear and safe from any thread.
namespace tidewrack {

enum class TransferEncoding : std::uint8_t {
  identity,  ///< 7bit, 8bit, binary, any unknown name, or none: the bytes of the text.
  base64,
  quotedPrintable,
};

/// The encoding that a header value, in lower case, asks for: one that contains "base64", or else one that
/// contains "quoted-printable".
TransferEncoding transferEncoding(std::string_view lowerCaseEncoding) noexcept;

/// The bytes behind a body text. Base64 that cannot be decoded gives no bytes.
std::string decodeTransfer(std::string_view body, std::string_view lowerCaseEncoding);
std::string decodeTransfer(std::string_view body, TransferEncoding encoding);

/// The number of bytes that decodeTransfer gives, without making them.
std::uint64_t decodedSize(std::string_view body, TransferEncoding encoding) noexcept;

/// "=" and two hexadecimal digits in either case become one byte; "=" before LF or CRLF vanishes with the
/// line end; any other "=" and every other byte stay, also blanks before a line end.
std::string decodeQuotedPrintable(std::string_view text);

/// Base64 (RFC 4648, section 4). Every byte that is neither a digit of the alphabet nor "=" is ignored.
/// Nothing when the padding is missing or incomplete, when a digit stands alone in its group of four, or
/// when a digit follows the padding. No digits and no padding give no bytes.
std::optional<std::string> decodeBase64(std::string_view text);

/// Base64 with padding, without line ends.
std::string encodeBase64(std::string_view bytes);

}  // namespace tidewrack
