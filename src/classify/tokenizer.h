#pragma once

#include <string>
#include <string_view>

#include "platform/alphanumerics.h"
#include "platform/unicode.h"

namespace tidewrack {

/// Cuts text into search words: diacritics folded, lower case, split at everything but letters, marks and
/// digits of any script; words of one user-perceived character are dropped. ASCII, the bulk of all mail, is
/// cut byte by byte; only stretches with other characters go through the Unicode tables. Keeps its buffers,
/// so one thread at a time.
class Tokenizer {
 public:
  /// Calls `visit` with each word, in order, repeats included. The view lives until the next word.
  template <typename Visit>
  void forEachToken(std::string_view text, Visit visit);

 private:
  /// A stretch is what lies between ASCII characters that can neither be part of a word nor change how their
  /// neighbours fold or change case.
  static bool endsStretch(unsigned char byte) noexcept;
  static bool isWordByte(unsigned char byte) noexcept;
  static char lower(unsigned char byte) noexcept;

  std::string word_;
};

inline bool Tokenizer::isWordByte(unsigned char byte) noexcept {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}

inline bool Tokenizer::endsStretch(unsigned char byte) noexcept {
  // An apostrophe, full stop, colon, circumflex or grave accent can stand between a Greek sigma and the
  // letter that decides its form (Unicode Standard 3.13, Final_Sigma), so they do not end a stretch.
  return byte < 0x80 && !isWordByte(byte) && byte != '\'' && byte != '.' && byte != ':' && byte != '^' &&
         byte != '`';
}

inline char Tokenizer::lower(unsigned char byte) noexcept {
  return static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
}

template <typename Visit>
void Tokenizer::forEachToken(std::string_view text, Visit visit) {
  const auto byteAt = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  std::size_t position = 0;
  while (position < text.size()) {
    if (endsStretch(byteAt(position))) {
      ++position;
      continue;
    }
    const std::size_t begin = position;
    bool ascii = true;
    while (position < text.size() && !endsStretch(byteAt(position))) {
      ascii = ascii && byteAt(position) < 0x80;
      ++position;
    }
    const auto stretch = text.substr(begin, position - begin);
    if (!ascii) {
      const std::string folded = lowercase(foldDiacritics(stretch));
      for (std::size_t at = 0; at < folded.size();) {
        const auto word = nextAlphanumericRun(folded, at);
        if (word.size() > 1 && graphemeCount(word) > 1) {
          visit(word);
        }
      }
      continue;
    }
    word_.clear();
    for (const char character : stretch) {
      const auto byte = static_cast<unsigned char>(character);
      if (isWordByte(byte)) {
        word_.push_back(lower(byte));
        continue;
      }
      if (word_.size() > 1) {
        visit(std::string_view(word_));
      }
      word_.clear();
    }
    if (word_.size() > 1) {
      visit(std::string_view(word_));
    }
  }
}

}  // namespace tidewrack
