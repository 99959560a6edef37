#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Hashes of short texts, for tables that are asked millions of times a second.
namespace tidewrack {

inline constexpr std::size_t hashWord = sizeof(std::uint64_t);

inline std::uint64_t loadBytes(const char* bytes, std::size_t size) noexcept {
  std::uint64_t value = 0;
  std::memcpy(&value, bytes, size);
  return value;
}

/// The first eight bytes of a text that is not empty; for a shorter one a number that tells, together with
/// its size, all of its bytes.
inline std::uint64_t beginningOf(std::string_view text) noexcept {
  const auto size = text.size();
  if (size >= hashWord) {
    return loadBytes(text.data(), hashWord);
  }
  if (size >= 4) {
    return loadBytes(text.data(), 4) | loadBytes(text.data() + size - 4, 4) << 32U;
  }
  const auto byte = [&text](std::size_t index) {
    return static_cast<std::uint64_t>(static_cast<unsigned char>(text[index]));
  };
  return byte(0) | byte(size / 2) << 8U | byte(size - 1) << 16U;
}

/// Spreads every bit over all. The odd multipliers are fractional parts of the golden ratio and the root
/// of 3.
inline std::uint64_t mixBits(std::uint64_t value) noexcept {
  value *= 0x9E3779B97F4A7C15;
  value ^= value >> 32U;
  value *= 0xBB67AE8584CAA73B;
  return value ^ value >> 29U;
}

/// The hash of a text that is not empty and begins with `beginning`. Another seed gives another hash, so that
/// nobody can make texts whose hashes meet.
inline std::uint32_t hashOf(std::string_view text, std::uint64_t beginning, std::uint64_t seed) noexcept {
  auto hash = mixBits(beginning ^ seed ^ text.size());
  if (text.size() > hashWord) {
    for (std::size_t at = hashWord; at + hashWord < text.size(); at += hashWord) {
      hash = mixBits(hash ^ loadBytes(text.data() + at, hashWord));
    }
    hash = mixBits(hash ^ loadBytes(text.data() + text.size() - hashWord, hashWord));
  }
  return static_cast<std::uint32_t>(hash);
}

}  // namespace tidewrack
