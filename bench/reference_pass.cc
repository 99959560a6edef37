#include "reference_pass.h"

#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/unicode.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tidewrack::bench {
namespace {

PassResult plainPass(std::string_view bytes) {
  PassResult result;
  const char* const begin = bytes.data();
  const char* const end = begin + bytes.size();
  for (const char* line = begin; line < end;) {
    const void* found = std::memchr(line, '\n', static_cast<std::size_t>(end - line));
    if (found == nullptr) {
      break;
    }
    line = static_cast<const char*>(found) + 1;
    ++result.lines;
    result.checksum += static_cast<std::uint64_t>(line - begin);
  }
  result.isValidUTF8 = tidewrack::isValidUTF8(bytes);
  return result;
}

#if defined(__x86_64__)

// The lookup algorithm of Keiser and Lemire ("Validating UTF-8 In Less Than One Instruction Per Byte", 2021):
// three table lookups by nibbles of neighbouring bytes leave a bit for each kind of error.
constexpr char tooShort = 1 << 0;
constexpr char tooLong = 1 << 1;
constexpr char overlong3 = 1 << 2;
constexpr char tooLarge = 1 << 3;
constexpr char surrogate = 1 << 4;
constexpr char overlong2 = 1 << 5;
constexpr char tooLarge1000 = 1 << 6;
constexpr char overlong4 = 1 << 6;
constexpr char twoContinuations = static_cast<char>(1 << 7);
constexpr char carry = tooShort | tooLong | twoContinuations;

__attribute__((target("avx2"))) __m256i table(char c0, char c1, char c2, char c3, char c4, char c5, char c6,
                                              char c7, char c8, char c9, char c10, char c11, char c12,
                                              char c13, char c14, char c15) {
  return _mm256_setr_epi8(c0, c1, c2, c3, c4, c5, c6, c7, c8, c9, c10, c11, c12, c13, c14, c15,  //
                          c0, c1, c2, c3, c4, c5, c6, c7, c8, c9, c10, c11, c12, c13, c14, c15);
}

template <int Count>
__attribute__((target("avx2"))) __m256i previous(__m256i input, __m256i before) {
  return _mm256_alignr_epi8(input, _mm256_permute2x128_si256(before, input, 0x21), 16 - Count);
}

__attribute__((target("avx2"))) __m256i highNibble(__m256i bytes) {
  return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0F));
}

__attribute__((target("avx2"))) __m256i errorsOf(__m256i input, __m256i before) {
  const __m256i byte1High =
      table(tooLong, tooLong, tooLong, tooLong, tooLong, tooLong, tooLong, tooLong, twoContinuations,
            twoContinuations, twoContinuations, twoContinuations, tooShort | overlong2, tooShort,
            tooShort | overlong3 | surrogate, tooShort | tooLarge | tooLarge1000 | overlong4);
  const char large = carry | tooLarge | tooLarge1000;
  const __m256i byte1Low =
      table(carry | overlong3 | overlong2 | overlong4, carry | overlong2, carry, carry, carry | tooLarge,
            large, large, large, large, large, large, large, large, large | surrogate, large, large);
  const char lowTrail = tooLong | overlong2 | twoContinuations | overlong3 | tooLarge1000 | overlong4;
  const char middleTrail = tooLong | overlong2 | twoContinuations | overlong3 | tooLarge;
  const char highTrail = tooLong | overlong2 | twoContinuations | surrogate | tooLarge;
  const __m256i byte2High =
      table(tooShort, tooShort, tooShort, tooShort, tooShort, tooShort, tooShort, tooShort, lowTrail,
            middleTrail, highTrail, highTrail, tooShort, tooShort, tooShort, tooShort);
  const __m256i previous1 = previous<1>(input, before);
  const __m256i special = _mm256_and_si256(
      _mm256_and_si256(_mm256_shuffle_epi8(byte1High, highNibble(previous1)),
                       _mm256_shuffle_epi8(byte1Low, _mm256_and_si256(previous1, _mm256_set1_epi8(0x0F)))),
      _mm256_shuffle_epi8(byte2High, highNibble(input)));
  const __m256i third =
      _mm256_subs_epu8(previous<2>(input, before), _mm256_set1_epi8(static_cast<char>(0xE0 - 0x80)));
  const __m256i fourth =
      _mm256_subs_epu8(previous<3>(input, before), _mm256_set1_epi8(static_cast<char>(0xF0 - 0x80)));
  const __m256i mustContinue =
      _mm256_and_si256(_mm256_or_si256(third, fourth), _mm256_set1_epi8(static_cast<char>(0x80)));
  return _mm256_xor_si256(mustContinue, special);
}

/// Non-zero where a character begun in the last bytes of a block is not finished.
__attribute__((target("avx2"))) __m256i unfinished(__m256i input) {
  const auto all = static_cast<char>(0xFF);
  const __m256i greatest =
      _mm256_setr_epi8(all, all, all, all, all, all, all, all, all, all, all, all, all, all, all, all, all,
                       all, all, all, all, all, all, all, all, all, all, all, all,
                       static_cast<char>(0xF0 - 1), static_cast<char>(0xE0 - 1), static_cast<char>(0xC0 - 1));
  return _mm256_subs_epu8(input, greatest);
}

__attribute__((target("avx2,bmi"))) PassResult vectorPass(std::string_view bytes) {
  PassResult result;
  __m256i before = _mm256_setzero_si256();
  __m256i open = _mm256_setzero_si256();
  __m256i errors = _mm256_setzero_si256();
  const __m256i lineFeed = _mm256_set1_epi8('\n');
  const auto block = [&](__m256i input, std::size_t place) __attribute__((target("avx2,bmi"))) {
    if (_mm256_movemask_epi8(input) == 0) {
      errors = _mm256_or_si256(errors, open);
      open = _mm256_setzero_si256();
    } else {
      errors = _mm256_or_si256(errors, errorsOf(input, before));
      open = unfinished(input);
    }
    before = input;
    auto ends = static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(input, lineFeed)));
    while (ends != 0) {
      ++result.lines;
      result.checksum += place + static_cast<std::size_t>(__builtin_ctz(ends)) + 1;
      ends &= ends - 1;
    }
  };
  std::size_t place = 0;
  for (; place + 32 <= bytes.size(); place += 32) {
    block(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes.data() + place)), place);
  }
  alignas(32) char rest[32] = {};
  std::memcpy(rest, bytes.data() + place, bytes.size() - place);
  block(_mm256_load_si256(reinterpret_cast<const __m256i*>(rest)), place);
  errors = _mm256_or_si256(errors, open);
  result.isValidUTF8 = _mm256_testz_si256(errors, errors) == 1;
  return result;
}

#endif

}  // namespace

PassResult referencePass(std::string_view bytes) {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi")) {
    return vectorPass(bytes);
  }
#endif
  return plainPass(bytes);
}

PassResult referencePass(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat information {};
  if (descriptor < 0 || fstat(descriptor, &information) != 0) {
    throw std::runtime_error("cannot read " + file.string());
  }
  const auto size = static_cast<std::size_t>(information.st_size);
  void* bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
  close(descriptor);
  if (bytes == MAP_FAILED) {
    throw std::runtime_error("cannot map " + file.string());
  }
  madvise(bytes, size, MADV_SEQUENTIAL);
  const auto result = referencePass(std::string_view(static_cast<const char*>(bytes), size));
  munmap(bytes, size);
  return result;
}

}  // namespace tidewrack::bench
