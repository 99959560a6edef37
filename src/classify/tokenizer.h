#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/utf8.h"
#include "platform/word_characters.h"
#include "platform/word_scan.h"

namespace tidewrack {

/// Cuts text into search words: diacritics folded, lower case, split at everything but letters, marks and
/// digits of any script; words of one user-perceived character are dropped, and the others come in
/// normalization form C (UAX #15), so that equivalent words are equal. 64 bytes at a time are told apart into
/// runs, those of ASCII alone are words as they stand, and the others are folded character by character
/// through a table. Keeps its buffers, so one thread at a time.
class Tokenizer {
 public:
  /// Calls `visit` with each word, in order, repeats included. The text is valid UTF-8. The views live until
  /// the next call, and of each at least eight bytes can be read, whatever its size.
  template <typename Visit>
  void forEachToken(std::string_view text, Visit visit);

 private:
  /// A piece of text between ASCII characters that can neither be part of a word nor change how their
  /// neighbours change case.
  struct Stretch {
    std::size_t begin = 0;
    std::size_t end = 0;
  };
  static Stretch stretchAround(std::string_view text, std::size_t begin, std::size_t end, std::size_t floor);
  /// The words of a stretch by the tables of whole texts. They stay until the next text.
  const std::vector<std::string>& wordsOf(std::string_view stretch);
  static bool hasTwoCharacters(std::string_view word);
  /// The word in normalization form C. It stays until the next text.
  std::string_view composed(std::string_view word);
  void begin(std::size_t size);

  /// Visits words from `position` on; gives the place to go on from, which is the end of the text or that of
  /// a stretch whose words needed a look at their neighbours.
  template <typename Visit>
  std::size_t visitFrom(std::string_view text, std::size_t position, Visit& visit);
  /// Visits the words of a run with characters beyond ASCII; gives its end, or that of the stretch around it.
  template <typename Visit>
  std::size_t visitRun(std::string_view text, std::size_t begin, std::size_t end, std::size_t floor,
                       Visit& visit);

  std::string lower_;  // The text in lower case; words of several bytes a character move to their beginning.
  std::vector<std::vector<std::string>> stretches_;
};

template <typename Visit>
std::size_t Tokenizer::visitRun(std::string_view text, std::size_t begin, std::size_t end, std::size_t floor,
                                Visit& visit) {
  using Kind = WordCharacter::Kind;
  const char* in = text.data() + begin;
  const char* const stop = text.data() + end;
  // No character grows, so that the words can be written over the run; what is written of a character may
  // reach one byte behind it, and so the run itself is read from the text.
  char* out = lower_.data() + begin;
  char* word = out;
  std::size_t letters = 0;
  bool hasParts = false;
  bool dropMarks = false;
  std::size_t visited = 0;
  // Captures nothing that changes with each character, as that would have to live in memory.
  const auto closeWord = [this, &visit, &visited](std::string_view whole, std::size_t count, bool mixes) {
    if (count > 1 || (mixes && hasTwoCharacters(whole))) {
      visit(mixes ? composed(whole) : whole);  // Letters alone are composed.
      ++visited;
    }
  };
  while (in < stop) {
    if (static_cast<unsigned char>(*in) < 0x80) {
      const char byte = *in++;
      const bool isUpper = byte >= 'A' && byte <= 'Z';
      *out++ = isUpper ? static_cast<char>(byte | 0x20) : byte;
      ++letters;
      dropMarks = byte >= 'A';
      continue;
    }
    const char* const character = in;
    const WordCharacter known = wordCharacter(nextCharacter(in));
    switch (known.kind()) {
      case Kind::letter:
        ++letters;
        out = known.write(out);
        dropMarks = known.takesMarks();
        break;
      case Kind::part:
        hasParts = true;
        out = known.write(out);
        dropMarks = known.takesMarks();
        break;
      case Kind::mark:
        if (!dropMarks) {
          hasParts = true;
          for (const char* byte = character; byte != in; ++byte) {
            *out++ = *byte;
          }
        }
        break;
      case Kind::separator:
        closeWord(std::string_view(word, static_cast<std::size_t>(out - word)), letters, hasParts);
        word = out;
        letters = 0;
        hasParts = false;
        dropMarks = known.takesMarks();
        break;
      case Kind::inContext:
      case Kind::unknown: {
        const auto stretch = stretchAround(text, begin, end, floor);
        // What stands before the run in its stretch was visited, and so were the first words of the run.
        const auto before = text.substr(stretch.begin, begin - stretch.begin);
        const auto done = before.empty() ? visited : visited + wordsOf(before).size();
        const auto& words = wordsOf(text.substr(stretch.begin, stretch.end - stretch.begin));
        for (std::size_t i = done; i < words.size(); ++i) {
          visit(std::string_view(words[i]));
        }
        return stretch.end;
      }
    }
  }
  closeWord(std::string_view(word, static_cast<std::size_t>(out - word)), letters, hasParts);
  return end;
}

template <typename Visit>
std::size_t Tokenizer::visitFrom(std::string_view text, std::size_t position, Visit& visit) {
  const std::size_t floor = position;
  char* const lower = lower_.data();
  std::size_t word = 0;      // Where the open run begins.
  std::uint64_t isOpen = 0;  // 1 when the block before ended within a run,
  bool isASCII = true;       // which has had nothing beyond ASCII.
  for (; position < text.size(); position += wordBlock) {
    std::array<char, wordBlock> last;
    const char* block = text.data() + position;
    if (text.size() - position < wordBlock) {
      last.fill(' ');
      text.copy(last.data(), wordBlock, position);
      block = last.data();
    }
    const WordBits bits = scanWords(block, lower + position);
    const auto inRun = bits.alphanumeric | bits.beyondASCII;
    auto beyond = bits.beyondASCII;  // Of the runs that have not been visited.
    // Every place where a run begins or ends.
    auto edges = inRun ^ (inRun << 1U | isOpen);
    while (edges != 0) {
      if (isOpen == 0) {
        word = position + static_cast<std::size_t>(std::countr_zero(edges));
        edges &= edges - 1;
        isOpen = 1;
        if (edges == 0) {
          break;
        }
      }
      const auto edge = std::countr_zero(edges);
      const std::size_t end = position + static_cast<std::size_t>(edge);
      const auto ofRun = beyond & ((std::uint64_t{1} << static_cast<unsigned>(edge)) - 1);
      edges &= edges - 1;
      isOpen = 0;
      if (ofRun == 0 && isASCII) {
        if (end - word > 1) {
          visit(std::string_view(lower + word, end - word));
        }
        continue;
      }
      beyond ^= ofRun;
      isASCII = true;
      if (const auto next = visitRun(text, word, end, floor, visit); next != end) {
        return next;
      }
    }
    isASCII = isASCII && beyond == 0;
  }
  if (isOpen == 0) {
    return text.size();
  }
  if (!isASCII) {
    return visitRun(text, word, text.size(), floor, visit);
  }
  if (text.size() - word > 1) {
    visit(std::string_view(lower + word, text.size() - word));
  }
  return text.size();
}

template <typename Visit>
void Tokenizer::forEachToken(std::string_view text, Visit visit) {
  begin(text.size());
  for (std::size_t position = 0; position < text.size();) {
    position = visitFrom(text, position, visit);
  }
}

}  // namespace tidewrack
