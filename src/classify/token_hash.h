#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/byte_word.h"

/// Hashes of words, for a table that is asked millions of times a second.
namespace tidewrack {

inline constexpr std::size_t hashWord = byteWordSize;

/// The ends of a token, which may overlap; with its size, all that there is of one of up to 16 bytes.
struct TokenEnds {
  std::uint64_t beginning;  ///< The first eight bytes, or all of them and zeros.
  std::uint64_t ending;     ///< The last eight bytes, or the same as the beginning.
};

/// The ends of a token that is not empty. At least eight bytes from its first one on can be read, whatever
/// its size: no branch depends on the size, which no processor would foresee.
inline TokenEnds endsOfRoomy(std::string_view token) noexcept {
  const std::size_t size = std::min(token.size(), hashWord);
  const std::uint64_t mask = ~std::uint64_t{0} >> (8 * (hashWord - size));
  return {loadWord(token.data()) & mask, loadWord(token.data() + token.size() - size) & mask};
}

/// The ends of any token that is not empty.
inline TokenEnds endsOf(std::string_view token) noexcept {
  if (token.size() >= hashWord) {
    return endsOfRoomy(token);
  }
  char room[hashWord] = {};
  std::memcpy(room, token.data(), token.size());
  return endsOfRoomy({room, token.size()});
}

inline std::uint64_t foldedProduct(std::uint64_t a, std::uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64U);
}

/// The hash of a token with these ends. Another seed gives another hash, so that nobody can make texts whose
/// hashes meet. The odd constants are fractional parts of the golden ratio and the root of 3.
inline std::uint32_t hashOf(std::string_view token, TokenEnds ends, std::uint64_t seed) noexcept {
  constexpr std::uint64_t golden = 0x9E3779B97F4A7C15;
  constexpr std::uint64_t root = 0xBB67AE8584CAA73B;
  auto hash = foldedProduct(ends.beginning ^ seed, ends.ending ^ (seed * root + token.size() * golden));
  for (std::size_t at = hashWord; at + hashWord < token.size(); at += hashWord) {
    hash = foldedProduct(hash ^ seed, loadWord(token.data() + at) ^ root);
  }
  return static_cast<std::uint32_t>(hash ^ hash >> 32U);
}

}  // namespace tidewrack
