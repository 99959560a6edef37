#include "mime_writer.h"

#include <array>
#include <cstring>

namespace tidewrack::bench {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view hexadecimal = "0123456789ABCDEF";
constexpr std::size_t bytesPerLine = 57;  // make 76 characters

void appendBase64(std::string& out, std::string_view bytes) {
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    const auto a = static_cast<unsigned char>(bytes[i]);
    const auto b = static_cast<unsigned char>(bytes[i + 1]);
    const auto c = static_cast<unsigned char>(bytes[i + 2]);
    const char quad[] = {alphabet[a >> 2], alphabet[(a & 3) << 4 | b >> 4], alphabet[(b & 15) << 2 | c >> 6],
                         alphabet[c & 63]};
    out.append(quad, sizeof quad);
  }
  const auto rest = bytes.size() - i;
  if (rest > 0) {
    const auto a = static_cast<unsigned char>(bytes[i]);
    const auto b = rest == 2 ? static_cast<unsigned char>(bytes[i + 1]) : 0U;
    out += alphabet[a >> 2];
    out += alphabet[(a & 3) << 4 | b >> 4];
    out += rest == 2 ? alphabet[(b & 15) << 2] : '=';
    out += '=';
  }
}

void appendEscape(std::string& out, unsigned char byte) {
  out += '=';
  out += hexadecimal[byte >> 4];
  out += hexadecimal[byte & 15];
}

}  // namespace

void appendBase64Lines(std::string& out, std::string_view bytes) {
  while (!bytes.empty()) {
    appendBase64(out, bytes.substr(0, bytesPerLine));
    out += '\n';
    bytes.remove_prefix(std::min(bytes.size(), bytesPerLine));
  }
}

void appendRandomBase64Lines(std::string& out, std::uint64_t count, Random& random) {
  // Whole lines come straight from random bits, ten characters a number; only the last line is encoded.
  std::array<char, 80> line{};
  for (; count >= bytesPerLine; count -= bytesPerLine) {
    for (std::size_t i = 0; i < 76; i += 10) {
      auto bits = random.next();
      for (std::size_t j = 0; j < 10 && i + j < 76; ++j, bits >>= 6) {
        line[i + j] = alphabet[bits & 63];
      }
    }
    line[76] = '\n';
    out.append(line.data(), 77);
  }
  if (count > 0) {
    std::string rest;
    for (std::uint64_t i = 0; i < count; ++i) {
      rest += static_cast<char>(random.next());
    }
    appendBase64Lines(out, rest);
  }
}

void appendQuotedPrintable(std::string& out, std::string_view bytes) {
  std::size_t column = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte == '\n') {
      out += '\n';
      column = 0;
      continue;
    }
    const bool endsLine = i + 1 == bytes.size() || bytes[i + 1] == '\n';
    const bool plain = (byte > 32 && byte < 127 && byte != '=') || (byte == ' ' && !endsLine);
    const std::size_t width = plain ? 1 : 3;
    if (column + width > 75) {
      out += "=\n";
      column = 0;
    }
    if (plain) {
      out += static_cast<char>(byte);
    } else {
      appendEscape(out, byte);
    }
    column += width;
  }
}

void appendEncodedWord(std::string& out, std::string_view bytes, const char* charset, bool base64) {
  out += "=?";
  out += charset;
  if (base64) {
    out += "?B?";
    appendBase64(out, bytes);
  } else {
    out += "?Q?";
    for (const char c : bytes) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte == ' ') {
        out += '_';
      } else if ((byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                 (byte >= 'a' && byte <= 'z')) {
        out += c;
      } else {
        appendEscape(out, byte);
      }
    }
  }
  out += "?=";
}

}  // namespace tidewrack::bench
