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

/// The yardstick of parsing: one thread goes once over the bytes, finds every line end and validates
/// UTF-8, both with vector instructions where the processor has AVX2.
PassResult referencePass(std::string_view bytes);
/// The same over a file, mapped for this one pass.
PassResult referencePass(const std::filesystem::path& file);

}  // namespace tidewrack::bench
