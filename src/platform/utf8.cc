// Validation and repair of UTF-8 (declared in platform/unicode.h).

#include "platform/utf8.h"

#include <array>
#include <cstring>
#include <string_view>

#include "platform/unicode.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tidewrack {
namespace {

UTF8Sequence sequenceAt(const unsigned char* bytes, std::size_t left) noexcept {
  const unsigned char lead = bytes[0];
  if (lead < 0x80) {
    return {1, true};
  }
  // Unicode Standard, table 3-7: the lead byte bounds the second byte; all further ones are 80..BF.
  std::size_t length = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    low = lead == 0xE0 ? 0xA0 : low;
    high = lead == 0xED ? 0x9F : high;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    low = lead == 0xF0 ? 0x90 : low;
    high = lead == 0xF4 ? 0x8F : high;
  } else {
    return {1, false};
  }
  for (std::size_t index = 1; index < length; ++index) {
    if (index == left || bytes[index] < low || bytes[index] > high) {
      return {index, false};
    }
    low = 0x80;
    high = 0xBF;
  }
  return {length, true};
}

// The number of well-formed bytes at the beginning.
std::size_t wellFormedPrefix(const unsigned char* bytes, std::size_t size) noexcept {
  std::size_t position = 0;
  while (position < size) {
    std::uint64_t word = 0;
    if (size - position >= sizeof word) {
      std::memcpy(&word, bytes + position, sizeof word);
      if ((word & 0x8080808080808080U) == 0) {
        position += sizeof word;
        continue;
      }
    }
    const auto sequence = sequenceAt(bytes + position, size - position);
    if (!sequence.isWellFormed) {
      break;
    }
    position += sequence.length;
  }
  return position;
}

#if defined(__x86_64__)

// Classifies every pair of neighbouring bytes with three table look-ups, one bit for each kind of error
// (Keiser and Lemire, "Validating UTF-8 In Less Than One Instruction Per Byte", 2020).
class WideValidator {
 public:
  [[gnu::target("avx2")]] static bool isValid(const unsigned char* bytes, std::size_t size) noexcept {
    __m256i error = _mm256_setzero_si256();
    __m256i previous = _mm256_setzero_si256();
    std::size_t position = 0;
    while (size - position >= 64) {
      const __m256i first = load(bytes + position);
      const __m256i second = load(bytes + position + 32);
      if (_mm256_movemask_epi8(_mm256_or_si256(first, second)) == 0) {
        error = _mm256_or_si256(error, unfinished(previous));
      } else {
        error = _mm256_or_si256(error, pairErrors(first, previous));
        error = _mm256_or_si256(error, pairErrors(second, first));
      }
      previous = second;
      position += 64;
    }
    // Zeros behind the end make an unfinished character an error.
    std::array<unsigned char, 96> tail{};
    std::memcpy(tail.data(), bytes + position, size - position);
    for (std::size_t offset = 0; offset < tail.size(); offset += 32) {
      const __m256i block = load(tail.data() + offset);
      error = _mm256_or_si256(error, pairErrors(block, previous));
      previous = block;
    }
    return _mm256_testz_si256(error, error) != 0;
  }

 private:
  [[gnu::target("avx2")]] static __m256i load(const unsigned char* bytes) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
  }

  [[gnu::target("avx2")]] static __m256i table(std::array<unsigned char, 16> values) noexcept {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(values.data())));
  }

  // The block as it was `count` bytes before.
  template <int count>
  [[gnu::target("avx2")]] static __m256i shifted(__m256i block, __m256i previous) noexcept {
    return _mm256_alignr_epi8(block, _mm256_permute2x128_si256(previous, block, 0x21), 16 - count);
  }

  // Not zero where the last bytes of a block begin a character that goes on behind it.
  [[gnu::target("avx2")]] static __m256i unfinished(__m256i block) noexcept {
    const __m256i limits = _mm256_setr_epi8(
        -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
        -1, -1, -1, -1, static_cast<char>(0xEF), static_cast<char>(0xDF), static_cast<char>(0xBF));
    return _mm256_subs_epu8(block, limits);
  }

  [[gnu::target("avx2")]] static __m256i pairErrors(__m256i block, __m256i previous) noexcept {
    constexpr unsigned char tooShort = 1U << 0U;                // a lead byte without its trail byte
    constexpr unsigned char tooLong = 1U << 1U;                 // a trail byte behind ASCII
    constexpr unsigned char overlong3 = 1U << 2U;               // E0 80..9F
    constexpr unsigned char tooLarge = 1U << 3U;                // F4 90..BF, F5.. 90..BF
    constexpr unsigned char surrogate = 1U << 4U;               // ED A0..BF
    constexpr unsigned char overlong2 = 1U << 5U;               // C0, C1
    constexpr unsigned char farTooLargeOrOverlong4 = 1U << 6U;  // F5.. 80..8F, F0 80..8F
    constexpr unsigned char twoTrails = 1U << 7U;               // fine behind E0.. and F0.., see below
    constexpr unsigned char carry = tooShort | tooLong | twoTrails;
    constexpr unsigned char large = carry | tooLarge | farTooLargeOrOverlong4;
    constexpr unsigned char trail = tooLong | overlong2 | twoTrails;

    const __m256i byFirstHigh =
        table({tooLong, tooLong, tooLong, tooLong, tooLong, tooLong, tooLong, tooLong, twoTrails, twoTrails,
               twoTrails, twoTrails, tooShort | overlong2, tooShort, tooShort | overlong3 | surrogate,
               tooShort | tooLarge | farTooLargeOrOverlong4});
    const __m256i byFirstLow = table({carry | overlong3 | overlong2 | farTooLargeOrOverlong4,
                                      carry | overlong2, carry, carry, carry | tooLarge, large, large, large,
                                      large, large, large, large, large, large | surrogate, large, large});
    const __m256i bySecondHigh = table(
        {tooShort, tooShort, tooShort, tooShort, tooShort, tooShort, tooShort, tooShort,
         trail | overlong3 | farTooLargeOrOverlong4, trail | overlong3 | tooLarge,
         trail | surrogate | tooLarge, trail | surrogate | tooLarge, tooShort, tooShort, tooShort, tooShort});

    const __m256i nibble = _mm256_set1_epi8(0x0F);
    const __m256i before1 = shifted<1>(block, previous);
    const __m256i errors = _mm256_and_si256(
        _mm256_and_si256(
            _mm256_shuffle_epi8(byFirstHigh, _mm256_and_si256(_mm256_srli_epi16(before1, 4), nibble)),
            _mm256_shuffle_epi8(byFirstLow, _mm256_and_si256(before1, nibble))),
        _mm256_shuffle_epi8(bySecondHigh, _mm256_and_si256(_mm256_srli_epi16(block, 4), nibble)));
    // Two trail bytes in a row are right exactly where a lead byte of three or four stands before them.
    const __m256i third =
        _mm256_subs_epu8(shifted<2>(block, previous), _mm256_set1_epi8(static_cast<char>(0xE0 - 0x80)));
    const __m256i fourth =
        _mm256_subs_epu8(shifted<3>(block, previous), _mm256_set1_epi8(static_cast<char>(0xF0 - 0x80)));
    const __m256i expected =
        _mm256_and_si256(_mm256_or_si256(third, fourth), _mm256_set1_epi8(static_cast<char>(0x80)));
    return _mm256_xor_si256(expected, errors);
  }
};

#endif

}  // namespace

UTF8Sequence firstSequence(std::string_view bytes) noexcept {
  return sequenceAt(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

bool isASCII(std::string_view bytes) noexcept {
  constexpr std::size_t step = 32;
  std::size_t position = 0;
  for (; bytes.size() - position >= step; position += step) {
    std::array<std::uint64_t, step / 8> words;
    std::memcpy(words.data(), bytes.data() + position, step);
    if (((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080U) != 0) {
      return false;
    }
  }
  unsigned char all = 0;
  for (; position < bytes.size(); ++position) {
    all |= static_cast<unsigned char>(bytes[position]);
  }
  return all < 0x80;
}

bool isValidUTF8(std::string_view bytes) noexcept {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
#if defined(__x86_64__)
  if (bytes.size() >= 64 && __builtin_cpu_supports("avx2")) {
    return WideValidator::isValid(data, bytes.size());
  }
#endif
  return wellFormedPrefix(data, bytes.size()) == bytes.size();
}

std::string repairUTF8(std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size());
  while (!bytes.empty()) {
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t good = wellFormedPrefix(data, bytes.size());
    result.append(bytes, 0, good);
    bytes.remove_prefix(good);
    if (!bytes.empty()) {
      result += "\uFFFD";
      bytes.remove_prefix(sequenceAt(data + good, bytes.size()).length);
    }
  }
  return result;
}

}  // namespace tidewrack
