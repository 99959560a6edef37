#include "mail/encoded_words.h"

#include <optional>

#include "mail/charsets.h"
#include "mail/transfer_decoding.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

struct EncodedWord {
  std::size_t begin;
  std::size_t end;
  std::string_view charset;
  char encoding;  // 'b' or 'q'
  std::string_view payload;
};

// The first encoded word at or behind a position. Each of the three inner fields reaches up to the next
// "?", so that only question marks have to be looked at, and each of them a bounded number of times.
std::optional<EncodedWord> findEncodedWord(std::string_view text, std::size_t from) {
  constexpr std::size_t none = std::string_view::npos;
  for (std::size_t begin = text.find("=?", from); begin != none; begin = text.find("=?", begin + 1)) {
    const std::size_t charset = begin + 2;
    const std::size_t charsetEnd = text.find('?', charset);
    if (charsetEnd == none) {
      return std::nullopt;
    }
    if (charsetEnd == charset || text.size() - charsetEnd < 3 || text[charsetEnd + 2] != '?') {
      continue;
    }
    const auto encoding = static_cast<char>(text[charsetEnd + 1] | 0x20);
    if (encoding != 'b' && encoding != 'q') {
      continue;
    }
    const std::size_t payload = charsetEnd + 3;
    const std::size_t payloadEnd = text.find('?', payload);
    if (payloadEnd == none) {
      return std::nullopt;
    }
    if (text.substr(payloadEnd).starts_with("?=")) {
      return EncodedWord{begin, payloadEnd + 2, text.substr(charset, charsetEnd - charset), encoding,
                         text.substr(payload, payloadEnd - payload)};
    }
  }
  return std::nullopt;
}

// The bytes of a payload, or nothing for broken Base64.
std::optional<std::string> decodePayload(const EncodedWord& word) {
  if (word.encoding == 'b') {
    return decodeBase64(word.payload);
  }
  std::string spaced(word.payload);
  for (char& byte : spaced) {
    byte = byte == '_' ? ' ' : byte;
  }
  return decodeQuotedPrintable(spaced);
}

}  // namespace

std::string decodeHeaderText(std::string_view text) {
  auto word = findEncodedWord(text, 0);
  if (!word) {
    return std::string(text);
  }
  std::string result;
  std::size_t cursor = 0;
  for (; word; word = findEncodedWord(text, cursor)) {
    const auto gap = text.substr(cursor, word->begin - cursor);
    if (!trimWhitespaceAndNewlines(gap).empty()) {
      result += gap;
    }
    if (const auto bytes = decodePayload(*word)) {
      result += decodeText(*bytes, word->charset);
    } else {
      result += text.substr(word->begin, word->end - word->begin);
    }
    cursor = word->end;
  }
  result += text.substr(cursor);
  return collapseWhitespace(result);
}

}  // namespace tidewrack
