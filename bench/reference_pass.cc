#include "reference_pass.h"

#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tidewrack::bench {
namespace {

/// The number of bytes of the well-formed character at the beginning, or 0 (Unicode Standard, table 3-7).
std::size_t characterLength(const unsigned char* bytes, std::size_t left) {
  const unsigned char lead = bytes[0];
  const auto continues = [&](std::size_t place, unsigned char low, unsigned char high) {
    return place < left && bytes[place] >= low && bytes[place] <= high;
  };
  if (lead < 0x80) {
    return 1;
  }
  if (lead >= 0xC2 && lead <= 0xDF) {
    return continues(1, 0x80, 0xBF) ? 2 : 0;
  }
  if (lead >= 0xE0 && lead <= 0xEF) {
    return continues(1, lead == 0xE0 ? 0xA0 : 0x80, lead == 0xED ? 0x9F : 0xBF) && continues(2, 0x80, 0xBF)
               ? 3
               : 0;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    return continues(1, lead == 0xF0 ? 0x90 : 0x80, lead == 0xF4 ? 0x8F : 0xBF) && continues(2, 0x80, 0xBF) &&
                   continues(3, 0x80, 0xBF)
               ? 4
               : 0;
  }
  return 0;
}

bool isWellFormed(std::string_view text) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  for (std::size_t place = 0; place < text.size();) {
    std::uint64_t word = 0x80;
    if (text.size() - place >= sizeof word) {
      std::memcpy(&word, bytes + place, sizeof word);
    }
    if ((word & 0x8080808080808080U) == 0) {
      place += sizeof word;
      continue;
    }
    const std::size_t length = characterLength(bytes + place, text.size() - place);
    if (length == 0) {
      return false;
    }
    place += length;
  }
  return true;
}

PassResult plainPass(std::string_view bytes) {
  constexpr std::size_t blockSize = 256U << 10U;
  PassResult result;
  for (std::size_t begin = 0; begin < bytes.size();) {
    // Block by block, so that the bytes come from memory once. No character goes over a line feed.
    std::string_view block = bytes.substr(begin, blockSize);
    if (const auto last = block.rfind('\n'); last != std::string_view::npos) {
      block = block.substr(0, last + 1);
    } else {
      block = bytes.substr(begin, bytes.find('\n', begin) - begin);
    }
    for (std::size_t line = 0; line < block.size();) {
      const void* found = std::memchr(block.data() + line, '\n', block.size() - line);
      if (found == nullptr) {
        break;
      }
      line = static_cast<std::size_t>(static_cast<const char*>(found) - block.data()) + 1;
      ++result.lines;
      result.checksum += begin + line;
    }
    result.isValidUTF8 = isWellFormed(block) && result.isValidUTF8;
    begin += block.size();
  }
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

PassResult referencePass(std::string_view bytes, PassKind kind) {
#if defined(__x86_64__)
  if (kind == PassKind::vector && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi")) {
    return vectorPass(bytes);
  }
#endif
  return plainPass(bytes);
}

PassResult referencePass(const std::filesystem::path& file, PassKind kind) {
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
  const auto result = referencePass(std::string_view(static_cast<const char*>(bytes), size), kind);
  munmap(bytes, size);
  return result;
}

}  // namespace tidewrack::bench
