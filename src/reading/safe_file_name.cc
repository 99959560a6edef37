#include "reading/safe_file_name.h"

#include <cstdint>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace tidewrack {
namespace {

constexpr std::size_t maximumBytes = 200;  // File systems allow 255; a number may follow.
constexpr std::size_t maximumEndingBytes = 20;
constexpr const char* fallback = "attachment";

bool isUnwanted(UChar32 character) {
  // Format characters turn the reading order over or cannot be seen, except those that join letters.
  constexpr UChar32 zeroWidthNonJoiner = 0x200C;
  constexpr UChar32 zeroWidthJoiner = 0x200D;
  if (character == zeroWidthNonJoiner || character == zeroWidthJoiner) {
    return false;
  }
  constexpr std::uint32_t unwanted = U_GC_CC_MASK | U_GC_CF_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK | U_GC_CN_MASK;
  return (U_GET_GC_MASK(character) & unwanted) != 0;
}

// The longest beginning of at most `length` bytes that ends at a character.
std::string_view prefix(std::string_view text, std::size_t length) {
  if (text.size() <= length) {
    return text;
  }
  while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
    --length;
  }
  return text.substr(0, length);
}

}  // namespace

std::string safeFileName(std::string_view name) {
  std::string safe;
  safe.reserve(name.size());
  const auto length = static_cast<std::int32_t>(name.size() < 4096 ? name.size() : 4096);
  for (std::int32_t position = 0; position < length;) {
    const std::int32_t begin = position;
    UChar32 character = 0;
    U8_NEXT(name.data(), position, length, character);
    if (character == '/' || character == '\\') {
      safe += '_';
    } else if (character >= 0 && !isUnwanted(character)) {
      safe.append(name.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(position - begin)));
    }
  }
  safe.erase(0, safe.find_first_not_of(". "));
  while (!safe.empty() && safe.back() == ' ') {
    safe.pop_back();
  }
  if (safe.size() > maximumBytes) {
    const std::size_t dot = safe.rfind('.');
    const bool hasEnding = dot != std::string::npos && safe.size() - dot <= maximumEndingBytes;
    const std::string ending = hasEnding ? safe.substr(dot) : std::string();
    safe = std::string(prefix(safe, maximumBytes - ending.size())) + ending;
  }
  return safe.empty() ? fallback : safe;
}

}  // namespace tidewrack
