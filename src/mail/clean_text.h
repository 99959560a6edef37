#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The parser works on clean text: valid UTF-8 whose lines end with LF alone. Most mail already is; the rest
/// is copied once. Everything is linear; the functions are safe from any thread.
namespace tidewrack {

[[nodiscard]] bool isCleanText(std::string_view bytes) noexcept;

/// Clean text out of any bytes: each maximal subpart of an ill-formed sequence becomes U+FFFD, CRLF and every
/// other CR become LF.
[[nodiscard]] std::string cleanText(std::string_view bytes);

/// The text with CRLF and every other CR as LF; the rest stays.
[[nodiscard]] std::string withLineFeeds(std::string_view text);

/// Finds the raw bytes behind places of the clean text that was made from them, so that a slice of an archive
/// can be cleaned again later by itself. Moves forward only; one pass serves all places of a message.
class RawOffsets {
 public:
  /// `raw` must outlive this.
  explicit RawOffsets(std::string_view raw);

  /// Where the raw bytes of the character at `offset` of the clean text begin (or where they all end). Must
  /// not be below the offset asked for before.
  std::size_t rawOffset(std::size_t offset);

 private:
  std::string_view raw_;
  bool isValidUTF8_;
  std::size_t rawPosition_ = 0;
  std::size_t position_ = 0;  // of the same place in the clean text
  std::size_t lineEnd_;       // the next CR at or behind rawPosition_
};

}  // namespace tidewrack
