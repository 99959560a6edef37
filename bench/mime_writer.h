#pragma once

#include <string>
#include <string_view>

#include "archive_words.h"

namespace tidewrack::bench {

/// Appends `bytes` in Base64 (RFC 2045, section 6.8), in lines of 76 characters.
void appendBase64Lines(std::string& out, std::string_view bytes);
/// Appends `count` random bytes in the same form, without making the bytes first.
void appendRandomBase64Lines(std::string& out, std::uint64_t count, Random& random);
/// Appends `bytes` in quoted-printable (RFC 2045, section 6.7); LF are line ends.
void appendQuotedPrintable(std::string& out, std::string_view bytes);
/// Appends `bytes`, which are in `charset`, as one encoded word (RFC 2047).
void appendEncodedWord(std::string& out, std::string_view bytes, const char* charset, bool base64);

}  // namespace tidewrack::bench
