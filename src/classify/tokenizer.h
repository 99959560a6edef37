#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/word_scan.h"

namespace tidewrack {

/// Cuts text into search words: diacritics folded, lower case, split at everything but letters, marks and
/// digits of any script; words of one user-perceived character are dropped. ASCII, the bulk of all mail, is
/// cut 64 bytes at a time; only stretches with other characters go through the Unicode tables, and the words
/// of short ones are remembered. Keeps its buffers, so one thread at a time.
class Tokenizer {
 public:
  /// Calls `visit` with each word, in order, repeats included. The view lives until the next word.
  template <typename Visit>
  void forEachToken(std::string_view text, Visit visit);

 private:
  /// A piece of text between ASCII characters that can neither be part of a word nor change how their
  /// neighbours fold or change case, with some characters beyond ASCII.
  struct Stretch {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t wordsBefore = 0;  // Words at its beginning that are pure ASCII, and were visited as such.
  };
  /// The words of one stretch. A later stretch with the same place takes over.
  struct Known {
    std::string stretch;
    std::vector<std::string> words;
  };
  static constexpr std::size_t knownPlaces = 8192;

  /// The stretch around the character at `position`; text before `floor` is done with.
  static Stretch stretchAround(std::string_view text, std::size_t position, std::size_t floor);
  /// The words of a stretch. Valid until the next call.
  const std::vector<std::string>& wordsOf(std::string_view stretch);
  /// Visits words from `position` on, until it meets a character beyond ASCII, and gives its place, or the
  /// end of the text. The word that this character stands in or follows on is not visited.
  template <typename Visit>
  std::size_t visitASCII(std::string_view text, std::size_t position, Visit& visit);

  std::string lower_;
  std::vector<Known> known_;
  std::vector<std::string> words_;
};

template <typename Visit>
std::size_t Tokenizer::visitASCII(std::string_view text, std::size_t position, Visit& visit) {
  char* const lower = lower_.data();
  std::size_t word = 0;      // Where the open word begins.
  std::uint64_t isOpen = 0;  // 1 when the block before ended within a word.
  for (; position < text.size(); position += wordBlock) {
    std::array<char, wordBlock> last;
    const char* block = text.data() + position;
    if (text.size() - position < wordBlock) {
      last.fill(' ');
      text.copy(last.data(), wordBlock, position);
      block = last.data();
    }
    const WordBits bits = scanWords(block, lower + position);
    const auto known = static_cast<std::size_t>(std::countr_zero(bits.beyondASCII));
    // Every place where a word begins or ends.
    auto edges = bits.alphanumeric ^ (bits.alphanumeric << 1U | isOpen);
    if (known < wordBlock) {
      edges &= (std::uint64_t{1} << known) - 1;
    }
    while (edges != 0) {
      if (isOpen == 0) {
        word = position + static_cast<std::size_t>(std::countr_zero(edges));
        edges &= edges - 1;
        isOpen = 1;
        if (edges == 0) {
          break;
        }
      }
      const std::size_t end = position + static_cast<std::size_t>(std::countr_zero(edges));
      edges &= edges - 1;
      isOpen = 0;
      if (end - word > 1) {
        visit(std::string_view(lower + word, end - word));
      }
    }
    if (known < wordBlock) {
      return position + known;
    }
  }
  if (isOpen != 0 && text.size() - word > 1) {
    visit(std::string_view(lower + word, text.size() - word));
  }
  return text.size();
}

template <typename Visit>
void Tokenizer::forEachToken(std::string_view text, Visit visit) {
  if (lower_.size() < text.size() + wordBlock) {
    lower_.resize(text.size() + wordBlock);
  }
  std::size_t done = 0;
  for (std::size_t found = 0; (found = visitASCII(text, done, visit)) < text.size();) {
    const auto stretch = stretchAround(text, found, done);
    const auto& words = wordsOf(text.substr(stretch.begin, stretch.end - stretch.begin));
    for (std::size_t i = stretch.wordsBefore; i < words.size(); ++i) {
      visit(std::string_view(words[i]));
    }
    done = stretch.end;
  }
}

}  // namespace tidewrack
