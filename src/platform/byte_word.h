#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Eight bytes of a text at a time, as a number. What is said of single bytes holds on any machine.
namespace tidewrack {

using ByteWord = std::uint64_t;
inline constexpr std::size_t byteWordSize = sizeof(ByteWord);
/// A one in each byte.
inline constexpr ByteWord eachByte = 0x0101010101010101U;

inline ByteWord loadWord(const char* bytes) noexcept {
  ByteWord word = 0;
  std::memcpy(&word, bytes, byteWordSize);
  return word;
}

/// The highest bit of each byte that is this one; no other bits.
constexpr ByteWord bytesEqualTo(ByteWord word, char byte) noexcept {
  constexpr ByteWord low = eachByte * 0x7F;
  const ByteWord different = word ^ (eachByte * static_cast<unsigned char>(byte));
  return ~(((different & low) + low) | different | low);
}

/// Whether each byte is a blank or a visible character of ASCII, 0x20 to 0x7E.
constexpr bool isPrintable(ByteWord word) noexcept {
  constexpr ByteWord high = eachByte * 0x80;
  // Where no byte has its highest bit, the first byte below 0x20 borrows into its own.
  return ((word | (word - eachByte * 0x20) | (word + eachByte)) & high) == 0;
}

}  // namespace tidewrack
