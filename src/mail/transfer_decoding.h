#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "mail/base64.h"

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
/// The same behind a text.
void appendTransfer(std::string& text, std::string_view body, TransferEncoding encoding);

/// The number of bytes that decodeTransfer gives, without making them.
std::uint64_t decodedSize(std::string_view body, TransferEncoding encoding) noexcept;

/// "=" and two hexadecimal digits in either case become one byte; "=" before LF or CRLF vanishes with the
/// line end; any other "=" and every other byte stay, also blanks before a line end.
std::string decodeQuotedPrintable(std::string_view text);

}  // namespace tidewrack
