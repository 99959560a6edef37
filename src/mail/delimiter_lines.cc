#include "mail/delimiter_lines.h"

#include <algorithm>
#include <utility>

#include "platform/byte_scan.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

// Lines for which memory is kept for the next text.
constexpr std::size_t keptLines = 4096;

}  // namespace

void DelimiterLines::collect(std::string_view text, std::size_t begin) {
  text_ = text;
  if (lines_.capacity() > keptLines) {
    lines_ = {};
  }
  lines_.clear();
  std::size_t position =
      text.substr(begin).starts_with("--") ? begin : findLineStart(text, '-', '-', begin + 1);
  while (position != std::string_view::npos) {
    const std::size_t end = std::min(text.find('\n', position), text.size());
    lines_.push_back({position, end - position});
    position = findLineStart(text, '-', '-', end);
  }
  std::sort(lines_.begin(), lines_.end(), [this](const Line& a, const Line& b) {
    const int order = textOf(a).compare(textOf(b));
    return order != 0 ? order < 0 : a.offset < b.offset;
  });
}

DelimiterLines::Iterator DelimiterLines::find(std::string_view line, std::size_t begin) const {
  return std::partition_point(lines_.begin(), lines_.end(), [&](const Line& other) {
    const int order = textOf(other).compare(line);
    return order != 0 ? order < 0 : other.offset < begin;
  });
}

MultipartCursor::MultipartCursor(const DelimiterLines& lines, TextRange body, std::string_view boundary)
    : lines_(&lines), body_(body) {
  std::string closing = "--";
  closing += boundary;
  openingLength_ = closing.size();
  closing += "--";
  const std::string_view opening = std::string_view(closing).substr(0, openingLength_);

  opening_ = lines.find(opening, body.begin);
  openingEnd_ = lines.find(opening, body.end);
  const auto close = lines.find(closing, body.begin);
  if (close != lines.lines_.end() && close->offset + closing.size() <= body.end &&
      lines.textOf(*close) == closing) {
    close_ = close->offset;
    return;
  }
  // The body is trimmed, so its last line may have lost blanks and have become a delimiter by that. As the
  // last line it ends a part in either form, for what an opening one begins is never ended.
  const std::string_view text = lines.text_;
  if (body.end < text.size() && text[body.end] != '\n') {
    for (const std::string_view delimiter : {opening, std::string_view(closing)}) {
      if (!body.in(text).ends_with(delimiter)) {
        continue;
      }
      const std::size_t begin = body.end - delimiter.size();
      if (begin == body.begin || text[begin - 1] == '\n') {
        close_ = begin;
      }
    }
  }
}

std::optional<TextRange> MultipartCursor::nextPart() {
  for (; opening_ != openingEnd_ && opening_->offset + openingLength_ <= close_.value_or(body_.end);) {
    const std::size_t offset = opening_->offset;
    ++opening_;
    const auto begin = std::exchange(partBegin_, offset + openingLength_ + 1);
    if (begin) {
      const TextRange part = trimmed(*begin, offset);
      if (!part.isEmpty()) {
        return part;
      }
    }
  }
  const auto begin = std::exchange(partBegin_, std::nullopt);
  const TextRange part = begin && close_ ? trimmed(*begin, *close_) : TextRange();
  return part.isEmpty() ? std::nullopt : std::optional(part);
}

TextRange MultipartCursor::trimmed(std::size_t begin, std::size_t end) const {
  const std::string_view part = trimWhitespaceAndNewlines(lines_->text_.substr(begin, end - begin));
  if (part.empty()) {
    return {};
  }
  const auto offset = static_cast<std::size_t>(part.data() - lines_->text_.data());
  return {offset, offset + part.size()};
}

}  // namespace tidewrack
