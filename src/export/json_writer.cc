#include "export/json_writer.h"

#include <algorithm>
#include <array>

#include "mail/base64.h"

namespace tidewrack {
namespace {

// Bytes that are encoded at a time: a multiple of three, so that no padding falls between two pieces.
constexpr std::size_t base64Piece = std::size_t{48} << 10U;

// For each byte: 0 where it stands for itself in a string, otherwise the character after the backslash ('u'
// for those that have none of their own).
constexpr std::array<char, 256> makeEscapes() {
  std::array<char, 256> escapes{};
  for (std::size_t control = 0; control < 0x20; ++control) {
    escapes[control] = 'u';
  }
  escapes['\b'] = 'b';
  escapes['\t'] = 't';
  escapes['\n'] = 'n';
  escapes['\f'] = 'f';
  escapes['\r'] = 'r';
  escapes['"'] = '"';
  escapes['\\'] = '\\';
  return escapes;
}
constexpr auto escapes = makeEscapes();

char escapeOf(char character) {
  return escapes[static_cast<unsigned char>(character)];
}

}  // namespace

void JSONWriter::begin(char bracket) {
  text_ += bracket;
  ++level_;
  isEmpty_ = true;
}

void JSONWriter::end(char bracket) {
  --level_;
  if (!isEmpty_) {
    newLine();
  }
  isEmpty_ = false;
  text_ += bracket;
}

void JSONWriter::newLine() {
  text_ += '\n';
  text_.append(level_ * 2, ' ');
}

void JSONWriter::element() {
  if (!isEmpty_) {
    text_ += ',';
  }
  isEmpty_ = false;
  newLine();
}

void JSONWriter::firstElement() {
  isEmpty_ = true;
  element();
}

void JSONWriter::key(std::string_view name) {
  element();
  text_ += '"';
  text_ += name;
  text_ += "\": ";
}

void JSONWriter::string(std::string_view value) {
  static constexpr const char* hexadecimal = "0123456789abcdef";
  text_ += '"';
  while (!value.empty()) {
    const auto* special =
        std::find_if(value.begin(), value.end(), [](char character) { return escapeOf(character) != 0; });
    const auto plain = static_cast<std::size_t>(special - value.begin());
    text_ += value.substr(0, plain);
    value.remove_prefix(plain);
    if (!value.empty()) {
      const char character = value.front();
      text_ += '\\';
      text_ += escapeOf(character);
      if (escapeOf(character) == 'u') {
        text_ += "00";
        text_ += hexadecimal[static_cast<unsigned char>(character) >> 4U];
        text_ += hexadecimal[static_cast<unsigned char>(character) & 0xFU];
      }
      value.remove_prefix(1);
    }
  }
  text_ += '"';
  output_.mayGo();
}

void JSONWriter::base64(std::string_view bytes) {
  text_ += '"';
  for (std::size_t start = 0; start < bytes.size(); start += base64Piece) {
    appendBase64(text_, bytes.substr(start, base64Piece));
    output_.mayGo();
  }
  text_ += '"';
}

}  // namespace tidewrack
