#pragma once

#include <cstddef>
#include <string_view>

namespace tidewrack {

/// Number of characters that Base64 with padding takes for that many bytes (RFC 4648, section 4).
constexpr std::size_t base64Size(std::size_t byteCount) noexcept {
  return (byteCount + 2) / 3 * 4;
}

/// Writes the Base64 of the bytes, with padding and without line breaks, to `out`, which has room for
/// base64Size characters. Runs at the speed of memory, for images of many megabytes.
void writeBase64(std::string_view bytes, char* out) noexcept;

}  // namespace tidewrack
