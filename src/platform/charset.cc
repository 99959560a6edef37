#include "platform/charset.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <unordered_map>

#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include "platform/unicode.h"

namespace tidewrack {
namespace {

// Only these can stand in a charset name (RFC 2978, section 2.3, and the registered names); the others
// have a meaning of their own to ICU: options behind a comma, paths with a slash.
bool isNameCharacter(char character) {
  constexpr std::string_view marks = "!#$%&'+-^_`{}~.:()";
  return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
         (character >= 'a' && character <= 'z') || marks.find(character) != std::string_view::npos;
}

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using ConverterHandle = std::unique_ptr<UConverter, CloseConverter>;

ConverterHandle openStrict(const char* name) {
  UErrorCode status = U_ZERO_ERROR;
  ConverterHandle converter(ucnv_open(name, &status));
  if (U_SUCCESS(status)) {
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  }
  return U_SUCCESS(status) ? std::move(converter) : nullptr;
}

// The bytes in UTF-8, or nothing at the first that has no character.
std::optional<std::string> convert(UConverter* converter, std::string_view bytes) {
  ucnv_resetToUnicode(converter);
  std::string result;
  result.reserve(bytes.size() + bytes.size() / 8);
  std::array<UChar, 2048> units;
  std::array<char, 3UL * 2048> text;
  const char* source = bytes.data();
  const char* const sourceEnd = source + bytes.size();
  std::size_t held = 0;  // 1 when the first half of a surrogate pair waits for the second.
  UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
  while (status == U_BUFFER_OVERFLOW_ERROR) {
    status = U_ZERO_ERROR;
    UChar* target = units.data() + held;
    ucnv_toUnicode(converter, &target, units.data() + units.size(), &source, sourceEnd, nullptr, 1, &status);
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR) {
      return std::nullopt;
    }
    auto count = static_cast<std::size_t>(target - units.data());
    held = status == U_BUFFER_OVERFLOW_ERROR && count > 0 && U16_IS_LEAD(units[count - 1]) ? 1 : 0;
    count -= held;
    std::int32_t size = 0;
    UErrorCode utf8Status = U_ZERO_ERROR;
    u_strToUTF8(text.data(), static_cast<std::int32_t>(text.size()), &size, units.data(),
                static_cast<std::int32_t>(count), &utf8Status);
    if (U_FAILURE(utf8Status)) {  // a surrogate without its other half
      return std::nullopt;
    }
    result.append(text.data(), static_cast<std::size_t>(size));
    units[0] = held == 1 ? units[count] : units[0];
  }
  return result;
}

// Whether every ASCII byte, each behind the others, stays what it is. Escape sequences and shifted
// states show here, since ESC, SO, "+" and "~" are among the bytes.
bool keepsASCII(UConverter* converter) {
  switch (ucnv_getType(converter)) {
    case UCNV_SBCS:
    case UCNV_MBCS:
    case UCNV_LATIN_1:
    case UCNV_US_ASCII:
      break;
    default:
      return false;
  }
  std::string ascii;
  for (int byte = 0; byte < 0x80; ++byte) {
    ascii.push_back(static_cast<char>(byte));
  }
  return convert(converter, ascii) == ascii;
}

struct Charset {
  CharsetKind kind = CharsetKind::unknown;
  ConverterHandle converter;
  // Converters that ICU would let swallow a byte order mark: the mark picks one of two that keep it.
  ConverterHandle littleEndian;
  std::string_view littleEndianMark;
};

Charset openCharset(const std::string& name) {
  Charset charset;
  UErrorCode status = U_ZERO_ERROR;
  if (ucnv_countAliases(name.c_str(), &status) == 0 || U_FAILURE(status)) {
    return charset;
  }
  charset.converter = openStrict(name.c_str());
  if (charset.converter == nullptr) {
    return charset;
  }
  const std::string_view canonical = ucnv_getName(charset.converter.get(), &status);
  const std::string_view family = canonical.substr(0, canonical.find(','));
  if (family == "UTF-8") {
    charset.kind = CharsetKind::utf8;
    charset.converter.reset();
    return charset;
  }
  charset.kind = CharsetKind::other;
  using std::string_view_literals::operator""sv;
  if (family == "UTF-16") {
    charset.converter = openStrict("UTF-16BE");
    charset.littleEndian = openStrict("UTF-16LE");
    charset.littleEndianMark = "\xFF\xFE"sv;
  } else if (family == "UTF-32") {
    charset.converter = openStrict("UTF-32BE");
    charset.littleEndian = openStrict("UTF-32LE");
    charset.littleEndianMark = "\xFF\xFE\0\0"sv;
  } else if (family.starts_with("UTF-16") || family.starts_with("UTF-32")) {
    charset.converter = openStrict(std::string(family).c_str());
  } else if (keepsASCII(charset.converter.get())) {
    charset.kind = CharsetKind::asciiSuperset;
  }
  return charset;
}

// The charset of a name in this thread, or nothing for a text that can be no name.
const Charset* charsetOfThread(std::string_view name) {
  constexpr std::size_t longestName = 60;  // ICU's UCNV_MAX_CONVERTER_NAME_LENGTH
  if (name.empty() || name.size() >= longestName) {
    return nullptr;
  }
  std::string key;
  for (const char character : name) {
    if (!isNameCharacter(character)) {
      return nullptr;
    }
    key.push_back(character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character);
  }
  // Mail may name any number of charsets; the few that it really uses are found again at once.
  constexpr std::size_t mostCharsets = 64;
  thread_local std::unordered_map<std::string, Charset> charsets;
  if (const auto known = charsets.find(key); known != charsets.end()) {
    return &known->second;
  }
  if (charsets.size() >= mostCharsets) {
    charsets.clear();
  }
  auto charset = openCharset(key);
  return &charsets.emplace(std::move(key), std::move(charset)).first->second;
}

}  // namespace

CharsetKind charsetKind(std::string_view name) {
  const Charset* charset = charsetOfThread(name);
  return charset == nullptr ? CharsetKind::unknown : charset->kind;
}

std::optional<std::string> decodeCharset(std::string_view bytes, std::string_view name) {
  const Charset* charset = charsetOfThread(name);
  if (charset == nullptr || charset->kind == CharsetKind::unknown) {
    return std::nullopt;
  }
  if (charset->kind == CharsetKind::utf8) {
    return isValidUTF8(bytes) ? std::optional(std::string(bytes)) : std::nullopt;
  }
  const bool isLittle = charset->littleEndian != nullptr && bytes.starts_with(charset->littleEndianMark);
  UConverter* converter = (isLittle ? charset->littleEndian : charset->converter).get();
  return converter == nullptr ? std::nullopt : convert(converter, bytes);
}

std::string decodeLatin1(std::string_view bytes) {
  std::string result;
  result.resize(2 * bytes.size() + 8);  // A step may write eight bytes and keep fewer.
  char* out = result.data();
  while (!bytes.empty()) {
    if (bytes.size() >= 8) {
      std::uint64_t word = 0;
      std::memcpy(&word, bytes.data(), 8);
      std::memcpy(out, &word, 8);
      static_assert(std::endian::native == std::endian::little);
      const auto plain = static_cast<std::size_t>(std::countr_zero(word & 0x8080808080808080U)) / 8;
      out += plain;
      bytes.remove_prefix(plain);
      if (plain == 8) {
        continue;
      }
    }
    const auto value = static_cast<unsigned char>(bytes.front());
    if (value < 0x80) {
      *out++ = bytes.front();
    } else {
      *out++ = static_cast<char>(0xC0U | (value >> 6U));
      *out++ = static_cast<char>(0x80U | (value & 0x3FU));
    }
    bytes.remove_prefix(1);
  }
  result.resize(static_cast<std::size_t>(out - result.data()));
  return result;
}

}  // namespace tidewrack
