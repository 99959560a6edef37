#include "platform/word_scan.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tidewrack {

WordBits plain::scanWords(const char* block, char* lower) noexcept {
  WordBits bits;
  for (std::size_t i = 0; i < wordBlock; ++i) {
    const auto byte = static_cast<unsigned char>(block[i]);
    const bool isUpper = byte >= 'A' && byte <= 'Z';
    const bool isWord = isUpper || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9');
    lower[i] = static_cast<char>(isUpper ? byte + ('a' - 'A') : byte);
    bits.alphanumeric |= std::uint64_t{isWord} << i;
    bits.beyondASCII |= std::uint64_t{byte >= 0x80} << i;
  }
  return bits;
}

#if defined(__SSE2__)
WordBits scanWords(const char* block, char* lower) noexcept {
  constexpr std::size_t width = 16;
  constexpr char caseBit = 'a' - 'A';
  WordBits bits;
  for (std::size_t at = 0; at < wordBlock; at += width) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + at));
    // The comparisons are signed: bytes beyond ASCII are below everything.
    const auto isBetween = [](__m128i values, char first, char last) {
      return _mm_and_si128(_mm_cmpgt_epi8(values, _mm_set1_epi8(static_cast<char>(first - 1))),
                           _mm_cmplt_epi8(values, _mm_set1_epi8(static_cast<char>(last + 1))));
    };
    const __m128i small = _mm_or_si128(bytes, _mm_set1_epi8(caseBit));
    const __m128i letters = isBetween(small, 'a', 'z');
    const __m128i words = _mm_or_si128(letters, isBetween(bytes, '0', '9'));
    const __m128i lowered = _mm_or_si128(bytes, _mm_and_si128(letters, _mm_set1_epi8(caseBit)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lower + at), lowered);
    bits.alphanumeric |= std::uint64_t{static_cast<std::uint32_t>(_mm_movemask_epi8(words))} << at;
    bits.beyondASCII |= std::uint64_t{static_cast<std::uint32_t>(_mm_movemask_epi8(bytes))} << at;
  }
  return bits;
}
#else
WordBits scanWords(const char* block, char* lower) noexcept {
  return plain::scanWords(block, lower);
}
#endif

}  // namespace tidewrack
