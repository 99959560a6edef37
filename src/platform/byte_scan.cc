#include "platform/byte_scan.h"

#include <cstdint>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tidewrack {

std::size_t plain::findLineStart(std::string_view bytes, char first, char second, std::size_t from) noexcept {
  std::size_t position = from > 0 ? from : 1;
  while (position + 1 < bytes.size()) {
    position = bytes.find(first, position);
    if (position == std::string_view::npos || position + 1 >= bytes.size()) {
      break;
    }
    const char before = bytes[position - 1];
    if ((before == '\n' || before == '\r') && bytes[position + 1] == second) {
      return position;
    }
    ++position;
  }
  return std::string_view::npos;
}

#if defined(__x86_64__)
namespace {

[[gnu::target("avx2")]] __m256i load(const char* bytes) noexcept {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

[[gnu::target("avx2")]] std::size_t wideFindLineStart(std::string_view bytes, char first, char second,
                                                      std::size_t from) noexcept {
  constexpr std::size_t width = 32;
  const __m256i lineFeed = _mm256_set1_epi8('\n');
  const __m256i carriageReturn = _mm256_set1_epi8('\r');
  const __m256i firsts = _mm256_set1_epi8(first);
  const __m256i seconds = _mm256_set1_epi8(second);
  std::size_t position = from > 0 ? from : 1;
  for (; position + width < bytes.size(); position += width) {
    const __m256i before = load(bytes.data() + position - 1);
    const __m256i ends =
        _mm256_or_si256(_mm256_cmpeq_epi8(before, lineFeed), _mm256_cmpeq_epi8(before, carriageReturn));
    const __m256i pairs = _mm256_and_si256(_mm256_cmpeq_epi8(load(bytes.data() + position), firsts),
                                           _mm256_cmpeq_epi8(load(bytes.data() + position + 1), seconds));
    const auto found = static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_and_si256(ends, pairs)));
    if (found != 0) {
      return position + static_cast<std::size_t>(__builtin_ctz(found));
    }
  }
  return plain::findLineStart(bytes, first, second, position);
}

}  // namespace

std::size_t findLineStart(std::string_view bytes, char first, char second, std::size_t from) noexcept {
  return __builtin_cpu_supports("avx2") != 0 ? wideFindLineStart(bytes, first, second, from)
                                             : plain::findLineStart(bytes, first, second, from);
}
#else
std::size_t findLineStart(std::string_view bytes, char first, char second, std::size_t from) noexcept {
  return plain::findLineStart(bytes, first, second, from);
}
#endif

}  // namespace tidewrack
