#include "mail/transfer_decoding.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace tidewrack {
namespace {

constexpr auto hexValues = [] {
  std::array<signed char, 256> values{};
  values.fill(-1);
  for (signed char value = 0; value < 16; ++value) {
    values[static_cast<unsigned char>("0123456789ABCDEF"[value])] = value;
    values[static_cast<unsigned char>("0123456789abcdef"[value])] = value;
  }
  return values;
}();

int hexValue(char digit) noexcept {
  return hexValues[static_cast<unsigned char>(digit)];
}

// What an "=" stands for: nothing (a soft line break), one byte, or itself.
struct Escape {
  std::size_t length;  // bytes of the text, 1 to 3
  bool writesByte;
  char byte;
};

Escape escapeAt(const char* equals, const char* end) noexcept {
  const auto behind = end - equals - 1;
  if (behind >= 2) {
    const int high = hexValue(equals[1]);
    const int low = hexValue(equals[2]);
    if ((high | low) >= 0) {
      return {3, true, static_cast<char>(high * 16 + low)};
    }
  }
  if (behind >= 1 && equals[1] == '\n') {
    return {2, false, 0};
  }
  if (behind >= 2 && equals[1] == '\r' && equals[2] == '\n') {
    return {3, false, 0};
  }
  return {1, true, '='};
}

const char* findEquals(const char* position, const char* end) noexcept {
  const void* found = std::memchr(position, '=', static_cast<std::size_t>(end - position));
  return found == nullptr ? end : static_cast<const char*>(found);
}

void appendQuotedPrintable(std::string& result, std::string_view text) {
  const std::size_t before = result.size();
  result.resize(before + text.size());
  char* out = result.data() + before;
  const char* position = text.data();
  const char* const end = position + text.size();
  while (position != end) {
    if (*position != '=') {
      const char* const equals = findEquals(position, end);
      out = std::copy(position, equals, out);
      position = equals;
    }
    // Texts in other scripts have one escape behind the other.
    while (end - position > 2 && *position == '=') {
      const int value = hexValue(position[1]) * 16 | hexValue(position[2]);
      if (value < 0) {
        break;
      }
      *out++ = static_cast<char>(value);
      position += 3;
    }
    while (position != end && *position == '=') {
      const Escape escape = escapeAt(position, end);
      position += escape.length;
      *out = escape.byte;
      out += escape.writesByte ? 1 : 0;
    }
  }
  result.resize(static_cast<std::size_t>(out - result.data()));
}

}  // namespace

TransferEncoding transferEncoding(std::string_view lowerCaseEncoding) noexcept {
  if (lowerCaseEncoding.find("base64") != std::string_view::npos) {
    return TransferEncoding::base64;
  }
  return lowerCaseEncoding.find("quoted-printable") != std::string_view::npos
             ? TransferEncoding::quotedPrintable
             : TransferEncoding::identity;
}

std::string decodeTransfer(std::string_view body, std::string_view lowerCaseEncoding) {
  return decodeTransfer(body, transferEncoding(lowerCaseEncoding));
}

std::string decodeTransfer(std::string_view body, TransferEncoding encoding) {
  std::string decoded;
  appendTransfer(decoded, body, encoding);
  return decoded;
}

void appendTransfer(std::string& text, std::string_view body, TransferEncoding encoding) {
  switch (encoding) {
    case TransferEncoding::base64: {
      // White space is not in the alphabet, so that ignoring what is unknown removes it too.
      std::string decoded = decodeBase64(body).value_or(std::string());
      if (text.empty() && text.capacity() < decoded.size()) {
        text = std::move(decoded);
      } else {
        text += decoded;
      }
      break;
    }
    case TransferEncoding::quotedPrintable:
      appendQuotedPrintable(text, body);
      break;
    case TransferEncoding::identity:
      text += body;
      break;
  }
}

std::uint64_t decodedSize(std::string_view body, TransferEncoding encoding) noexcept {
  if (encoding == TransferEncoding::base64) {
    return decodedBase64Size(body).value_or(0);
  }
  std::uint64_t size = body.size();
  if (encoding == TransferEncoding::quotedPrintable) {
    const char* const end = body.data() + body.size();
    for (const char* equals = findEquals(body.data(), end); equals != end;) {
      const Escape escape = escapeAt(equals, end);
      size -= escape.length - (escape.writesByte ? 1 : 0);
      equals = findEquals(equals + escape.length, end);
    }
  }
  return size;
}

std::string decodeQuotedPrintable(std::string_view text) {
  std::string result;
  appendQuotedPrintable(result, text);
  return result;
}

}  // namespace tidewrack
