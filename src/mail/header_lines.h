#pragma once

#include <cstddef>
#include <string_view>

#include "platform/unicode.h"

namespace tidewrack {

/// What to do at an empty line of a header block.
enum class AtEmptyLine {
  stop,  ///< The block ends there: the text is a whole message or MIME part.
  goOn,  ///< The text is a header block alone; empty lines say nothing.
};

/// Walks the header lines of clean text (valid UTF-8, lines ended by LF). For each header it calls
/// `field(name, value)`, both trimmed, and for each line that continues the header before it
/// `continuation(line)`, trimmed. Returns where the body begins; that is the end of the text when there is no
/// empty line. The first line may be empty and does not end the block, for only two LF in a row do.
template <typename Visitor>
std::size_t walkHeaderLines(std::string_view text, AtEmptyLine atEmptyLine, Visitor& visitor) {
  bool hasCurrent = false;
  std::size_t position = 0;
  while (position < text.size()) {
    std::size_t end = text.find('\n', position);
    if (end == std::string_view::npos) {
      end = text.size();
    }
    const std::string_view line = text.substr(position, end - position);
    if (line.empty()) {
      if (position > 0 && atEmptyLine == AtEmptyLine::stop) {
        return end + 1;
      }
    } else if (line.front() == ' ' || line.front() == '\t') {
      if (hasCurrent) {
        visitor.continuation(trimWhitespaceAndNewlines(line));
      }
    } else if (const std::size_t colon = line.find(':'); colon != std::string_view::npos) {
      visitor.field(trimWhitespaceAndNewlines(line.substr(0, colon)),
                    trimWhitespaceAndNewlines(line.substr(colon + 1)));
      hasCurrent = true;
    }
    position = end + 1;
  }
  return text.size();
}

}  // namespace tidewrack
