#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace tidewrack::bench {

struct PassResult {
  std::uint64_t lines = 0;
  std::uint64_t checksum = 0;  ///< Over the places of the line ends, so that each is really found.
  bool isValidUTF8 = true;
};

enum class PassKind {
  plain,  ///< Portable C++: the C library's memchr, and UTF-8 by words of eight ASCII bytes.
  vector  ///< Both by hand in AVX2, as fast as memory comes; like `plain` where the processor has none.
};

/// The yardstick of parsing: one thread goes once over the bytes, finds every line end and validates
/// UTF-8.
PassResult referencePass(std::string_view bytes, PassKind kind = PassKind::plain);
/// The same over a file, mapped for this one pass.
PassResult referencePass(const std::filesystem::path& file, PassKind kind = PassKind::plain);

}  // namespace tidewrack::bench
