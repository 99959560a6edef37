#include "platform/alphanumerics.h"

#include <cstdint>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace tidewrack {
namespace {

bool isAlphanumeric(UChar32 character) {
  return (U_GET_GC_MASK(character) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) != 0;
}

UChar32 decodeAt(std::string_view text, std::size_t& position) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto size = static_cast<std::int64_t>(text.size());
  auto index = static_cast<std::int64_t>(position);
  UChar32 character = 0;
  U8_NEXT(bytes, index, size, character);
  position = static_cast<std::size_t>(index);
  return character;
}

}  // namespace

std::string_view nextAlphanumericRun(std::string_view text, std::size_t& position) noexcept {
  std::size_t begin = position;
  while (position < text.size()) {
    begin = position;
    if (isAlphanumeric(decodeAt(text, position))) {
      break;
    }
    begin = position;
  }
  while (position < text.size()) {
    std::size_t next = position;
    if (!isAlphanumeric(decodeAt(text, next))) {
      break;
    }
    position = next;
  }
  return text.substr(begin, position - begin);
}

}  // namespace tidewrack
