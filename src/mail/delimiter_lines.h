#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidewrack {

/// Half-open range of offsets in a text.
struct TextRange {
  std::size_t begin = 0;
  std::size_t end = 0;

  [[nodiscard]] bool isEmpty() const noexcept { return begin == end; }
  [[nodiscard]] std::string_view in(std::string_view text) const noexcept {
    return text.substr(begin, end - begin);
  }
};

/// All lines of a clean text that begin with "--", found in one pass and sorted by their text. Every
/// multipart of a message looks its delimiters up here, so that a line is not read again for each level of
/// nesting.
class DelimiterLines {
 public:
  /// `text` must outlive this. Lines before `begin`, which is the beginning of a line, are left out.
  void collect(std::string_view text, std::size_t begin);

 private:
  friend class MultipartCursor;
  struct Line {
    std::size_t offset;
    std::size_t length;
  };
  using Iterator = std::vector<Line>::const_iterator;

  [[nodiscard]] std::string_view textOf(const Line& line) const noexcept {
    return text_.substr(line.offset, line.length);
  }
  /// The first line equal to `line` that stands at or behind `begin`, or what follows in the order.
  [[nodiscard]] Iterator find(std::string_view line, std::size_t begin) const;

  std::string_view text_;
  std::vector<Line> lines_;
};

/// Goes through the parts of one multipart (RFC 2046, section 5.1.1). Delimiter lines are compared whole. A
/// part ends only at a delimiter; the first closing delimiter ends the multipart; parts are trimmed and empty
/// ones left out. Its memory does not depend on the size of the multipart.
class MultipartCursor {
 public:
  /// `lines` must outlive this and hold those of `body`, which begins at the beginning of a line.
  /// `boundary` is not empty and is used here only.
  MultipartCursor(const DelimiterLines& lines, TextRange body, std::string_view boundary);

  std::optional<TextRange> nextPart();

 private:
  [[nodiscard]] TextRange trimmed(std::size_t begin, std::size_t end) const;

  const DelimiterLines* lines_;
  DelimiterLines::Iterator opening_;     // the next opening delimiter
  DelimiterLines::Iterator openingEnd_;  // behind the last one in the body
  std::size_t openingLength_;            // of such a line
  TextRange body_;
  std::optional<std::size_t> close_;  // where the line stands that ends the last part
  std::optional<std::size_t> partBegin_;
};

}  // namespace tidewrack
