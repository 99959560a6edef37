#include "mail/clean_text.h"

#include <algorithm>
#include <cassert>

#include "platform/unicode.h"
#include "platform/utf8.h"

namespace tidewrack {

bool isCleanText(std::string_view bytes) noexcept {
  return bytes.find('\r') == std::string_view::npos && isValidUTF8(bytes);
}

std::string cleanText(std::string_view bytes) {
  return isValidUTF8(bytes) ? withLineFeeds(bytes) : withLineFeeds(repairUTF8(bytes));
}

std::string withLineFeeds(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (true) {
    const std::size_t end = text.find('\r');
    result.append(text, 0, end);
    if (end == std::string_view::npos) {
      return result;
    }
    result += '\n';
    text.remove_prefix(end + 1);
    if (text.starts_with('\n')) {
      text.remove_prefix(1);
    }
  }
}

RawOffsets::RawOffsets(std::string_view raw)
    : raw_(raw), isValidUTF8_(isValidUTF8(raw)), lineEnd_(std::min(raw.find('\r'), raw.size())) {}

std::size_t RawOffsets::rawOffset(std::size_t offset) {
  assert(offset >= position_);
  while (position_ < offset) {
    if (rawPosition_ == lineEnd_) {
      if (lineEnd_ == raw_.size()) {
        break;
      }
      rawPosition_ += raw_.substr(rawPosition_).starts_with("\r\n") ? 2 : 1;
      ++position_;
      lineEnd_ = std::min(raw_.find('\r', rawPosition_), raw_.size());
    } else if (isValidUTF8_) {
      // Up to the next CR, clean and raw text differ in ill-formed sequences alone.
      const std::size_t step = std::min(lineEnd_ - rawPosition_, offset - position_);
      rawPosition_ += step;
      position_ += step;
    } else {
      const UTF8Sequence sequence = firstSequence(raw_.substr(rawPosition_));
      rawPosition_ += sequence.length;
      position_ += sequence.isWellFormed ? sequence.length : std::string_view("\uFFFD").size();
    }
  }
  return rawPosition_;
}

}  // namespace tidewrack
