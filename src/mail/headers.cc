#include "mail/headers.h"

#include <algorithm>
#include <array>

#include "mail/ascii.h"
#include "mail/clean_text.h"
#include "mail/encoded_words.h"
#include "mail/header_lines.h"
#include "mail/text_pool.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

// The text without the given ASCII characters at its ends.
std::string_view trimCharacters(std::string_view text, std::string_view characters) noexcept {
  const std::size_t first = text.find_first_not_of(characters);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(characters) + 1 - first);
}

std::string_view trimReference(std::string_view value) noexcept {
  return trimCharacters(value, "<> \"\t\n\r");
}

struct MapReader {
  HeaderMap& headers;
  std::string* current = nullptr;

  void field(std::string_view name, std::string_view value) {
    current = &headers[lowercase(name)];
    *current = value;
  }
  void continuation(std::string_view line) const {
    *current += ' ';
    *current += line;
  }
};

// Whether the piece in lower case begins with the name in lower case and "=".
bool isParameter(std::string_view piece, std::string_view name) {
  const std::string_view head = piece.substr(0, name.size() + 1);
  if (isASCII(head) && isASCII(name)) {
    return head.size() == name.size() + 1 && head.back() == '=' &&
           std::equal(name.begin(), name.end(), head.begin(),
                      [](char a, char b) { return asciiLowercase(a) == asciiLowercase(b); });
  }
  return lowercase(piece).starts_with(lowercase(name) + "=");
}

// The last of at most two parts around "=", where empty parts do not count.
std::optional<std::string_view> lastPart(std::string_view piece) noexcept {
  const std::size_t first = piece.find_first_not_of('=');
  if (first == std::string_view::npos) {
    return std::nullopt;
  }
  const std::size_t separator = piece.find('=', first);
  if (separator == std::string_view::npos || separator + 1 == piece.size()) {
    return piece.substr(first, separator - first);
  }
  return piece.substr(separator + 1);
}

// A decoded mailbox: a name before angle brackets, or an address alone.
EmailAddress mailbox(std::string_view text, TextPool* pool) {
  const std::size_t open = text.find('<');
  const std::size_t close = text.find('>');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
    return {std::nullopt, pooled(text, pool)};
  }
  EmailAddress result;
  const std::string_view name = trimCharacters(text.substr(0, open), "\" ");
  if (!name.empty()) {
    result.name = pooled(name, pool);
  }
  result.address = pooled(trimWhitespaceAndNewlines(text.substr(open + 1, close - open - 1)), pool);
  return result;
}

// Decoding is a copy for almost every text; this saves it.
EmailAddress decodedMailbox(std::string_view text, TextPool* pool) {
  return text.find("=?") == std::string_view::npos ? mailbox(text, pool)
                                                   : mailbox(decodeHeaderText(text), pool);
}

}  // namespace

HeaderMap parseHeaders(std::string_view headerText) {
  HeaderMap headers;
  MapReader reader{headers};
  walkHeaderLines(withLineFeeds(headerText), AtEmptyLine::goOn, reader);
  return headers;
}

std::optional<std::string_view> headerParameter(std::string_view name, std::string_view value) {
  while (true) {
    const std::size_t end = value.find(';');
    const std::string_view piece = trimWhitespaceAndNewlines(value.substr(0, end));
    if (isParameter(piece, name)) {
      const auto part = lastPart(piece);
      return part ? std::optional(trimCharacters(*part, "\"' ")) : std::nullopt;
    }
    if (end == std::string_view::npos) {
      return std::nullopt;
    }
    value.remove_prefix(end + 1);
  }
}

std::optional<EmailAddress> parseSender(std::optional<std::string_view> value, TextPool* pool) {
  const std::string_view text = trimWhitespaceAndNewlines(value.value_or(""));
  return text.empty() ? std::nullopt : std::optional(decodedMailbox(text, pool));
}

std::vector<EmailAddress> parseAddressList(std::optional<std::string_view> value, TextPool* pool) {
  std::vector<EmailAddress> addresses;
  std::string_view rest = value.value_or("");
  while (!rest.empty()) {
    const std::size_t end = rest.find(',');
    const std::string_view entry = trimWhitespaceAndNewlines(rest.substr(0, end));
    if (!entry.empty()) {
      addresses.push_back(decodedMailbox(entry, pool));
    }
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
  addresses.shrink_to_fit();
  return addresses;
}

std::string cleanMessageID(std::optional<std::string_view> value) {
  const auto id = cleanReference(value);
  return id ? std::string(*id) : UUID::make().string();
}

std::optional<std::string_view> cleanReference(std::optional<std::string_view> value) {
  const std::string_view reference = trimReference(value.value_or(""));
  return reference.empty() ? std::nullopt : std::optional(reference);
}

std::vector<Text> parseReferences(std::optional<std::string_view> value, TextPool* pool) {
  std::vector<Text> references;
  const std::string_view text = value.value_or("");
  // The matches of `<([^>]+)>`: from an opening bracket to the next closing one, unless that follows at once.
  for (std::size_t open = text.find('<'); open != std::string_view::npos;) {
    const std::size_t close = text.find('>', open);
    if (close == std::string_view::npos) {
      break;
    }
    if (close > open + 1) {
      references.push_back(pooled(text.substr(open + 1, close - open - 1), pool));
    }
    open = text.find('<', close);
  }
  if (references.empty()) {
    for (std::size_t begin = text.find_first_not_of(' '); begin != std::string_view::npos;) {
      const std::size_t end = std::min(text.find(' ', begin), text.size());
      const std::string_view word = text.substr(begin, end - begin);
      const std::string_view reference = trimReference(word);
      references.push_back(pooled(reference.empty() ? word : reference, pool));
      begin = text.find_first_not_of(' ', end);
    }
  }
  references.shrink_to_fit();
  return references;
}

std::vector<Text> parseLabels(std::optional<std::string_view> value, TextPool* pool) {
  std::vector<Text> labels;
  if (!value) {
    return labels;
  }
  std::string entry;
  const auto finishEntry = [&] {
    const std::string_view label = trimWhitespaceAndNewlines(entry);
    if (label.find("=?") == std::string_view::npos) {
      if (!label.empty()) {
        labels.push_back(pooled(label, pool));
      }
    } else if (const std::string decoded = decodeHeaderText(label); !decoded.empty()) {
      labels.push_back(pooled(decoded, pool));
    }
    entry.clear();
  };
  bool isQuoted = false;
  for (const char character : *value) {
    if (character == '"') {
      isQuoted = !isQuoted;
    } else if (character == ',' && !isQuoted) {
      finishEntry();
    } else {
      entry += character;
    }
  }
  finishEntry();
  labels.shrink_to_fit();
  return labels;
}

std::string normalizedConversationSubject(std::string_view subject) {
  const std::string folded = lowercase(foldDiacritics(trimWhitespaceAndNewlines(subject)));
  std::string_view rest = folded;
  for (bool hasCut = true; hasCut;) {
    hasCut = false;
    for (const std::string_view prefix : {"re:", "fw:", "fwd:"}) {
      if (rest.starts_with(prefix)) {
        rest = trimWhitespaceAndNewlines(rest.substr(prefix.size()));
        hasCut = true;
      }
    }
  }
  return std::string(rest);
}

}  // namespace tidewrack
