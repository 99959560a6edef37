#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Numbers of variable length: seven bits a byte, low bits first, the high bit set on all bytes but the last.
namespace tidewrack {

/// Bytes of the longest number.
inline constexpr std::size_t longestNumber = 5;

/// Writes a number to a place with room for the longest one, and gives the place behind it.
inline char* writeNumber(char* place, std::uint32_t number) noexcept {
  while (number >= 0x80) {
    *place++ = static_cast<char>(number | 0x80U);
    number >>= 7U;
  }
  *place++ = static_cast<char>(number);
  return place;
}

inline void appendNumber(std::string& bytes, std::uint32_t number) {
  char place[longestNumber];
  bytes.append(place, static_cast<std::size_t>(writeNumber(place, number) - place));
}

/// Reads the number at `position`, which then stands behind it. The bytes come from appendNumber.
inline std::uint32_t readNumber(std::string_view bytes, std::size_t& position) {
  std::uint32_t number = 0;
  for (unsigned shift = 0;; shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes[position++]);
    number |= static_cast<std::uint32_t>(byte & 0x7FU) << shift;
    if (byte < 0x80) {
      return number;
    }
  }
}

}  // namespace tidewrack
