#pragma once

#include <cstddef>
#include <cstdint>

namespace tidewrack {

/// What 64 bytes of a text are, one bit a byte, the first byte the lowest bit.
struct WordBits {
  std::uint64_t alphanumeric = 0;  ///< ASCII letters and digits.
  std::uint64_t beyondASCII = 0;
};
inline constexpr std::size_t wordBlock = 64;

/// Looks at 64 bytes and writes them to `lower` with ASCII letters in lower case. Safe from any thread.
WordBits scanWords(const char* block, char* lower) noexcept;

namespace plain {
/// The same in plain C++, which the fast scan must equal.
WordBits scanWords(const char* block, char* lower) noexcept;
}  // namespace plain

}  // namespace tidewrack
