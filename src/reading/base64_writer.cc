#include "reading/base64_writer.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace tidewrack {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The two digits of every 12-bit number: half a group of three bytes at a time.
constexpr auto digitPairs = [] {
  std::array<std::array<char, 2>, 4096> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    pairs[i] = {alphabet[i >> 6U], alphabet[i & 63U]};
  }
  return pairs;
}();

}  // namespace

void writeBase64(std::string_view bytes, char* out) noexcept {
  const auto* in = reinterpret_cast<const std::uint8_t*>(bytes.data());
  std::size_t left = bytes.size();
  for (; left >= 3; left -= 3, in += 3, out += 4) {
    const std::uint32_t group =
        (std::uint32_t{in[0]} << 16U) | (std::uint32_t{in[1]} << 8U) | std::uint32_t{in[2]};
    std::memcpy(out, digitPairs[group >> 12U].data(), 2);
    std::memcpy(out + 2, digitPairs[group & 0xFFFU].data(), 2);
  }
  if (left == 0) {
    return;
  }
  const std::uint32_t rest = (std::uint32_t{in[0]} << 16U) | (left == 2 ? std::uint32_t{in[1]} << 8U : 0U);
  std::memcpy(out, digitPairs[rest >> 12U].data(), 2);
  out[2] = left == 2 ? alphabet[(rest >> 6U) & 63U] : '=';
  out[3] = '=';
}

}  // namespace tidewrack
