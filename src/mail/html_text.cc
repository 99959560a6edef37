#include "mail/html_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#include "platform/utf8.h"

namespace tidewrack {
namespace {

// What the text loop stops at.
enum class ByteKind : std::uint8_t { plain, space, maybeSpace, angle, ampersand };

constexpr auto byteKinds = [] {
  std::array<ByteKind, 256> kinds{};
  for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
    const SpaceHint hint = spaceHint(static_cast<char>(byte));
    kinds[byte] = hint == SpaceHint::space   ? ByteKind::space
                  : hint == SpaceHint::maybe ? ByteKind::maybeSpace
                                             : ByteKind::plain;
  }
  kinds['<'] = ByteKind::angle;
  kinds['&'] = ByteKind::ampersand;
  return kinds;
}();

bool isPlain(char byte) {
  return byteKinds[static_cast<unsigned char>(byte)] == ByteKind::plain;
}

// Finds what the three removals remove. Scripts go first, so that styles are sought in a text without
// scripts, and tags in one without both: each search steps over what the earlier removals take out.
// Where a closing piece is not found, there is none for what begins further behind either; that place is
// remembered, and so no part of the text is searched more than a few times.
class MarkupFinder {
 public:
  explicit MarkupFinder(std::string_view html)
      : end_(html.data() + html.size()), scriptsAreOver_(end_), stylesAreOver_(end_), tagsAreOver_(end_) {}

  // The end of the script, style or tag that begins with the "<" at `position`, or null if none does.
  const char* markupEnd(const char* position) {
    if (const char* end = elementEnd(position)) {
      return end;
    }
    if (position >= tagsAreOver_ || position + 1 == end_ || position[1] == '>') {
      return nullptr;
    }
    const char* close = findTagClose(position + 1, [this](const char* at) { return elementEnd(at); });
    if (close == nullptr) {
      tagsAreOver_ = position;
      return nullptr;
    }
    return close + 1;
  }

 private:
  const char* elementEnd(const char* position) {
    const char* end = scriptEnd(position);
    return end != nullptr ? end : styleEnd(position);
  }

  const char* scriptEnd(const char* position) {
    const char* name = position >= scriptsAreOver_ ? nullptr : match(position, "<script");
    if (name == nullptr) {
      return nullptr;
    }
    const char* end = find(name, '>');
    for (end = end == nullptr ? nullptr : find(end, '<'); end != nullptr; end = find(end + 1, '<')) {
      if (const char* behind = match(end, "</script>")) {
        return behind;
      }
    }
    scriptsAreOver_ = position;
    return nullptr;
  }

  const char* styleEnd(const char* position) {
    const char* name = position >= stylesAreOver_ ? nullptr : match(position, "<style");
    if (name == nullptr) {
      return nullptr;
    }
    const char* end = findTagClose(name, [this](const char* at) { return scriptEnd(at); });
    end = end == nullptr ? nullptr : find(end, '<');
    while (end != nullptr) {
      if (const char* script = scriptEnd(end)) {
        end = find(script, '<');
      } else if (const char* behind = match(end, "</style>")) {
        return behind;
      } else {
        end = find(end + 1, '<');
      }
    }
    stylesAreOver_ = position;
    return nullptr;
  }

  // The first ">" that does not stand within something that begins with "<" and has an end.
  template <typename EndOf>
  const char* findTagClose(const char* position, const EndOf& endOf) {
    const char* close = find(position, '>');
    while (close != nullptr) {
      const auto* inner =
          static_cast<const char*>(std::memchr(position, '<', static_cast<std::size_t>(close - position)));
      if (inner == nullptr) {
        return close;
      }
      const char* innerEnd = endOf(inner);
      position = innerEnd == nullptr ? inner + 1 : innerEnd;
      close = position <= close ? close : find(position, '>');
    }
    return nullptr;
  }

  const char* find(const char* position, char byte) const {
    return static_cast<const char*>(std::memchr(position, byte, static_cast<std::size_t>(end_ - position)));
  }

  [[nodiscard]] bool startsWith(const char* position, std::string_view text) const {
    return std::string_view(position, static_cast<std::size_t>(end_ - position)).starts_with(text);
  }

  // The end of the lower-case pattern at `position`, in any case, or null. Case folding (Unicode Standard
  // 5.18) also makes an s of the long s, and an st of two ligatures.
  const char* match(const char* position, std::string_view pattern) const {
    for (std::size_t index = 0; index < pattern.size(); ++index) {
      if (position == end_) {
        return nullptr;
      }
      const char wanted = pattern[index];
      const bool isLetter = wanted >= 'a' && wanted <= 'z';
      if (*position == wanted || (isLetter && (*position | 0x20) == wanted)) {
        ++position;
      } else if (wanted == 's' && startsWith(position, "\u017F")) {
        position += 2;
      } else if (pattern.substr(index).starts_with("st") &&
                 (startsWith(position, "\uFB05") || startsWith(position, "\uFB06"))) {
        position += 3;
        ++index;
      } else {
        return nullptr;
      }
    }
    return position;
  }

  const char* end_;
  // From here on none of its kind has an end.
  const char* scriptsAreOver_;
  const char* stylesAreOver_;
  const char* tagsAreOver_;
};

struct Entity {
  std::size_t length;  // bytes of the text, at least 1
  char byte;
};

// What the "&" at the beginning stands for. Ampersands are made before angle brackets, so that these two
// may be escaped twice.
Entity entityAt(std::string_view text) {
  std::size_t length = 1;
  if (text.starts_with("&nbsp;")) {
    return {6, ' '};
  }
  if (text.starts_with("&amp;")) {
    length = 5;
  }
  const auto behind = text.substr(length);
  if (behind.starts_with("lt;")) {
    return {length + 3, '<'};
  }
  if (behind.starts_with("gt;")) {
    return {length + 3, '>'};
  }
  return {length, '&'};
}

// Collects text with its white space collapsed and its ends trimmed.
class LineWriter {
 public:
  explicit LineWriter(std::size_t capacity) { text_.reserve(capacity); }

  void addSpace() { blankIsDue_ = !text_.empty(); }
  void addText(const char* begin, const char* end) {
    if (blankIsDue_) {
      text_.push_back(' ');
      blankIsDue_ = false;
    }
    text_.append(begin, end);
  }
  [[nodiscard]] std::size_t size() const { return text_.size(); }
  std::string take() { return std::move(text_); }

 private:
  std::string text_;
  bool blankIsDue_ = false;
};

}  // namespace

std::string HTMLTextExtractor::extractText(std::string_view html) {
  return extractBeginning(html, std::numeric_limits<std::size_t>::max()).text;
}

void HTMLTextExtractor::blankMarkup(std::string& html) {
  MarkupFinder markup(html);
  char* position = html.data();
  char* const end = position + html.size();
  const auto find = [](char* from, char* to, char byte) {
    auto* found = static_cast<char*>(std::memchr(from, byte, static_cast<std::size_t>(to - from)));
    return found == nullptr ? to : found;
  };
  // What lies ahead is as it was, and the finder looks nowhere else.
  while (position != end) {
    char* const angle = find(position, end, '<');
    for (char* at = find(position, angle, '&'); at != angle; at = find(at, angle, '&')) {
      const auto length = entityAt({at, static_cast<std::size_t>(end - at)}).length;
      at = std::fill_n(at, length, ' ');
    }
    const char* const behind = angle == end ? nullptr : markup.markupEnd(angle);
    position = behind == nullptr ? angle + (angle != end ? 1 : 0) : html.data() + (behind - html.data());
    std::fill(angle, position, ' ');
  }
}

HTMLTextExtractor::Beginning HTMLTextExtractor::extractBeginning(std::string_view html, std::size_t size) {
  MarkupFinder markup(html);
  LineWriter line(std::min(html.size(), size) / 2);
  const char* position = html.data();
  const char* const end = position + html.size();
  while (position != end && line.size() < size) {
    switch (byteKinds[static_cast<unsigned char>(*position)]) {
      case ByteKind::space:
        line.addSpace();
        ++position;
        continue;
      case ByteKind::angle:
        if (const char* behind = markup.markupEnd(position)) {
          line.addSpace();
          position = behind;
          continue;
        }
        break;
      case ByteKind::ampersand: {
        const auto entity = entityAt({position, static_cast<std::size_t>(end - position)});
        if (entity.byte == ' ') {
          line.addSpace();
        } else {
          line.addText(&entity.byte, &entity.byte + 1);
        }
        position += entity.length;
        continue;
      }
      case ByteKind::maybeSpace:
        if (const std::size_t length = spaceLength(position, end)) {
          line.addSpace();
          position += length;
          continue;
        }
        break;
      case ByteKind::plain:
        break;
    }
    // A run of plain bytes with single blanks between them, ended after a whole character.
    const std::size_t room = size - line.size();
    const char* const limit = static_cast<std::size_t>(end - position) <= room ? end : position + room;
    const char* run = position + 1;
    while (run < limit && (isPlain(*run) || (*run == ' ' && run + 1 < limit && isPlain(run[1])))) {
      ++run;
    }
    while (run < end && isTrailByte(*run)) {
      ++run;
    }
    line.addText(position, run);
    position = run;
  }
  return {line.take(), position == end};
}

}  // namespace tidewrack
