#include "mail/charsets.h"

#include "platform/charset.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

// The charsets of most mail are known by name here. The others are ICU's.
enum class Encoding { fallback, utf8, latin1, ascii, windows1252, named };

struct CharsetName {
  Encoding encoding = Encoding::fallback;
  std::string name;  // lower case, without quotes; for `named`
};

CharsetName resolve(std::optional<std::string_view> charset) {
  if (!charset) {
    return {};
  }
  constexpr std::string_view trimmed = "\"' \t\r\n";
  const std::size_t first = charset->find_first_not_of(trimmed);
  if (first == std::string_view::npos) {
    return {};
  }
  std::string name = lowercase(charset->substr(first, charset->find_last_not_of(trimmed) + 1 - first));
  auto encoding = Encoding::named;
  if (name == "utf-8" || name == "utf8") {
    encoding = Encoding::utf8;
  } else if (name == "iso-8859-1" || name == "latin1" || name == "latin-1") {
    encoding = Encoding::latin1;
  } else if (name == "us-ascii") {
    encoding = Encoding::ascii;
  } else if (name == "windows-1252" || name == "cp1252") {
    encoding = Encoding::windows1252;
  }
  return {encoding, std::move(name)};
}

UnchangedBytes unchangedBytesOf(const CharsetName& charset) {
  switch (charset.encoding) {
    case Encoding::fallback:
    case Encoding::utf8:
    case Encoding::ascii:  // What is not ASCII falls back.
      return UnchangedBytes::validUTF8;
    case Encoding::latin1:
    case Encoding::windows1252:
      return UnchangedBytes::ascii;
    case Encoding::named:
      break;
  }
  switch (charsetKind(charset.name)) {
    case CharsetKind::unknown:
    case CharsetKind::utf8:
      return UnchangedBytes::validUTF8;
    case CharsetKind::asciiSuperset:
      return UnchangedBytes::ascii;
    case CharsetKind::other:
      break;
  }
  return UnchangedBytes::none;
}

bool holdsFor(UnchangedBytes rule, std::string_view bytes) {
  return (rule == UnchangedBytes::validUTF8 && isValidUTF8(bytes)) ||
         (rule == UnchangedBytes::ascii && isASCII(bytes));
}

}  // namespace

std::string decodeText(std::string_view bytes, std::optional<std::string_view> charset) {
  const CharsetName resolved = resolve(charset);
  const UnchangedBytes rule = unchangedBytesOf(resolved);
  if (holdsFor(rule, bytes)) {
    return std::string(bytes);
  }
  if (rule == UnchangedBytes::validUTF8 || resolved.encoding == Encoding::latin1) {
    return decodeLatin1(bytes);
  }
  auto text = decodeCharset(bytes, resolved.name);
  return text ? std::move(*text) : decodeWithFallback(bytes);
}

std::string decodeWithFallback(std::string_view bytes) {
  return isValidUTF8(bytes) ? std::string(bytes) : decodeLatin1(bytes);
}

UnchangedBytes unchangedBytes(std::optional<std::string_view> charset) {
  return unchangedBytesOf(resolve(charset));
}

bool decodesUnchanged(std::string_view bytes, std::optional<std::string_view> charset) {
  return holdsFor(unchangedBytes(charset), bytes);
}

}  // namespace tidewrack
