#include "mail/base64.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tidewrack {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t noDigit = 0xFF;

constexpr auto digitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(noDigit);
  for (std::size_t index = 0; index < alphabet.size(); ++index) {
    values[static_cast<unsigned char>(alphabet[index])] = static_cast<std::uint8_t>(index);
  }
  return values;
}();

std::uint8_t digitValue(char digit) noexcept {
  return digitValues[static_cast<unsigned char>(digit)];
}

// Decoding has two steps that stay in the nearest cache: gather a block of digits without what stands
// between them, then turn the block into bytes.
constexpr std::size_t blockSize = 4096;
constexpr std::size_t slack = 32;  // Wide stores may write this far behind what they mean.
using DigitBlock = std::array<char, blockSize + slack>;
using ByteBlock = std::array<char, blockSize / 4 * 3 + slack>;

// What is left of a text.
struct Scan {
  const char* position;
  const char* end;
};

// Moves digits into the block from `count` on, until it is full, the text ends, or "=" follows. Gives the
// number of digits in the block.
std::size_t gather(Scan& scan, DigitBlock& block, std::size_t count) noexcept {
  for (; scan.position < scan.end && count < blockSize && *scan.position != '='; ++scan.position) {
    block[count] = *scan.position;
    count += digitValue(*scan.position) != noDigit ? 1 : 0;
  }
  return count;
}

// Turns whole groups of four digits into bytes; gives their number.
std::size_t convert(const char* digits, std::size_t count, char* bytes) noexcept {
  for (std::size_t index = 0; index < count; index += 4) {
    const std::uint32_t group = static_cast<std::uint32_t>(digitValue(digits[index])) << 18U |
                                static_cast<std::uint32_t>(digitValue(digits[index + 1])) << 12U |
                                static_cast<std::uint32_t>(digitValue(digits[index + 2])) << 6U |
                                digitValue(digits[index + 3]);
    *bytes++ = static_cast<char>(group >> 16U);
    *bytes++ = static_cast<char>(group >> 8U);
    *bytes++ = static_cast<char>(group);
  }
  return count / 4 * 3;
}

#if defined(__x86_64__)

bool hasWideRegisters() noexcept {
  return __builtin_cpu_supports("avx2") != 0;
}

// One bit for each of 32 bytes that is a digit: the two halves of a byte look up sets of bits that have
// none in common exactly for the digits (Mula and Lemire, "Faster Base64 Encoding and Decoding Using AVX2
// Instructions", 2018; so is the conversion below).
[[gnu::target("avx2")]] std::uint32_t digitMask(__m256i text) noexcept {
  const __m256i nibble = _mm256_set1_epi8(0x0F);
  const __m256i byHigh = _mm256_broadcastsi128_si256(_mm_setr_epi8(
      0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
  const __m256i byLow = _mm256_broadcastsi128_si256(_mm_setr_epi8(
      0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
  const __m256i high = _mm256_shuffle_epi8(byHigh, _mm256_and_si256(_mm256_srli_epi16(text, 4), nibble));
  const __m256i low = _mm256_shuffle_epi8(byLow, _mm256_and_si256(text, nibble));
  const __m256i isDigit = _mm256_cmpeq_epi8(_mm256_and_si256(high, low), _mm256_setzero_si256());
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(isDigit));
}

[[gnu::target("avx2")]] __m256i load(const char* bytes) noexcept {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

[[gnu::target("avx2")]] void store(char* bytes, __m256i value) noexcept {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), value);
}

[[gnu::target("avx2")]] std::size_t gatherWide(Scan& scan, DigitBlock& block, std::size_t count) noexcept {
  while (scan.end - scan.position >= 32 && count + 32 <= blockSize) {
    const __m256i text = load(scan.position);
    store(block.data() + count, text);
    const auto digits = static_cast<std::size_t>(std::countr_one(digitMask(text)));
    count += digits;
    scan.position += digits;
    if (digits < 32) {
      if (*scan.position == '=') {
        return count;
      }
      ++scan.position;
    }
  }
  // The end of the text, or of the block.
  return gather(scan, block, count);
}

[[gnu::target("avx2")]] std::size_t convertWide(const char* digits, std::size_t count, char* bytes) noexcept {
  const __m256i nibble = _mm256_set1_epi8(0x0F);
  const __m256i offsets =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0));
  const __m256i order =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
  std::size_t index = 0;
  std::size_t size = 0;
  for (; count - index >= 32; index += 32, size += 24) {
    const __m256i text = load(digits + index);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi16(text, 4), nibble);
    const __m256i isSlash = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('/'));
    const __m256i values =
        _mm256_add_epi8(text, _mm256_shuffle_epi8(offsets, _mm256_add_epi8(isSlash, high)));
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i packed = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, order),
                                                       _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    store(bytes + size, packed);
  }
  return size + convert(digits + index, count - index, bytes + size);
}

[[gnu::target("avx2,popcnt")]] std::uint64_t countDigitsWide(Scan& scan) noexcept {
  std::uint64_t count = 0;
  const __m256i padding = _mm256_set1_epi8('=');
  while (scan.end - scan.position >= 32) {
    const __m256i text = load(scan.position);
    if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(text, padding)) != 0) {
      break;
    }
    count += static_cast<std::uint64_t>(_mm_popcnt_u32(digitMask(text)));
    scan.position += 32;
  }
  return count;
}

#else

bool hasWideRegisters() noexcept {
  return false;
}
std::size_t gatherWide(Scan& scan, DigitBlock& block, std::size_t count) noexcept {
  return gather(scan, block, count);
}
std::size_t convertWide(const char* digits, std::size_t count, char* bytes) noexcept {
  return convert(digits, count, bytes);
}
std::uint64_t countDigitsWide(Scan&) noexcept {
  return 0;
}

#endif

// Whether the digits so far and the padding at the scan's position make a whole. `scan` is at the first
// "=", or at the end.
bool endsWell(const Scan& scan, std::uint64_t digits) noexcept {
  std::uint64_t padding = 0;
  for (const char* position = scan.position; position < scan.end; ++position) {
    if (*position == '=') {
      ++padding;
    } else if (digitValue(*position) != noDigit) {
      return false;
    }
  }
  return (digits + padding) % 4 == 0 && digits % 4 != 1;
}

}  // namespace

std::optional<std::string> decodeBase64(std::string_view text) {
  const auto gatherBlock = hasWideRegisters() ? gatherWide : gather;
  const auto convertBlock = hasWideRegisters() ? convertWide : convert;
  Scan scan{text.data(), text.data() + text.size()};
  DigitBlock digits;
  ByteBlock bytes;
  std::string result;
  result.reserve(text.size() / 4 * 3 + 3);
  std::uint64_t total = 0;
  std::size_t count = 0;  // digits in the block
  while (true) {
    const std::size_t before = count;
    count = gatherBlock(scan, digits, count);
    total += count - before;
    if (count < blockSize) {
      break;
    }
    result.append(bytes.data(), convertBlock(digits.data(), count, bytes.data()));
    count = 0;
  }
  if (!endsWell(scan, total)) {
    return std::nullopt;
  }
  // The last group may lack digits; as zeros they only make bytes that are left out.
  std::fill_n(digits.begin() + static_cast<std::ptrdiff_t>(count), 3, 'A');
  convertBlock(digits.data(), (count + 3) / 4 * 4, bytes.data());
  result.append(bytes.data(), count * 3 / 4);
  return result;
}

std::optional<std::uint64_t> decodedBase64Size(std::string_view text) noexcept {
  Scan scan{text.data(), text.data() + text.size()};
  std::uint64_t digits = hasWideRegisters() ? countDigitsWide(scan) : 0;
  for (; scan.position < scan.end && *scan.position != '='; ++scan.position) {
    digits += digitValue(*scan.position) != noDigit ? 1 : 0;
  }
  return endsWell(scan, digits) ? std::optional(digits / 4 * 3 + digits % 4 * 3 / 4) : std::nullopt;
}

std::string encodeBase64(std::string_view bytes) {
  std::string result;
  appendBase64(result, bytes);
  return result;
}

void appendBase64(std::string& text, std::string_view bytes) {
  static constexpr auto pairs = [] {
    std::array<std::array<char, 2>, 4096> table{};
    for (std::size_t index = 0; index < table.size(); ++index) {
      table[index] = {alphabet[index / 64], alphabet[index % 64]};
    }
    return table;
  }();
  const std::size_t before = text.size();
  text.resize(before + (bytes.size() + 2) / 3 * 4);
  char* out = text.data() + before;
  const auto at = [bytes](std::size_t index) {
    return static_cast<unsigned>(static_cast<unsigned char>(bytes[index]));
  };
  std::size_t index = 0;
  for (; bytes.size() - index >= 3; index += 3, out += 4) {
    const unsigned group = at(index) << 16U | at(index + 1) << 8U | at(index + 2);
    std::memcpy(out, pairs[group >> 12U].data(), 2);
    std::memcpy(out + 2, pairs[group & 0xFFFU].data(), 2);
  }
  if (const std::size_t left = bytes.size() - index; left != 0) {
    const unsigned group = at(index) << 16U | (left == 2 ? at(index + 1) << 8U : 0);
    std::memcpy(out, pairs[group >> 12U].data(), 2);
    out[2] = left == 2 ? alphabet[group >> 6U & 0x3FU] : '=';
    out[3] = '=';
  }
}

}  // namespace tidewrack
