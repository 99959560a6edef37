#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tidewrack {

/// Reduces an HTML body to one line of plain text. The result is that of these replacements, each over the
/// whole text, though they are made in one pass and in linear time:
///   `<script[^>]*>[\s\S]*?</script>`, `<style[^>]*>[\s\S]*?</style>` (both in any case) and `<[^>]+>`
///   become a blank; `&nbsp;` a blank, then `&amp;` an ampersand, then `&lt;` and `&gt;` angle brackets;
///   every run of white space one blank; both ends are trimmed.
/// Other entities stay as they stand. Takes and gives valid UTF-8; never fails. Safe from any thread.
class HTMLTextExtractor {
 public:
  HTMLTextExtractor() = delete;

  static std::string extractText(std::string_view html);

  /// Writes blanks over everything that extractText replaces, and over the entities that it resolves: the
  /// words that are left are those of the text, without the cost of making it.
  static void blankMarkup(std::string& html);

  /// A beginning of the text, for previews.
  struct Beginning {
    std::string text;
    bool isWhole = false;  ///< `text` is all that extractText gives; when false, more may follow.
  };
  /// Reads only as far as needed for a beginning of at least `size` bytes (ended after a whole character),
  /// or for the whole text if that is shorter.
  static Beginning extractBeginning(std::string_view html, std::size_t size);
};

}  // namespace tidewrack
