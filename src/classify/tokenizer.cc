#include "classify/tokenizer.h"

#include <array>
#include <cstdint>

#include "classify/token_hash.h"
#include "platform/alphanumerics.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

// Words that come again are short; a text without blanks may be of any length.
constexpr std::size_t longestKnownStretch = 64;

enum class ByteKind : std::uint8_t { endsStretch, endsWord, word };

constexpr auto byteKinds = [] {
  std::array<ByteKind, 256> kinds{};
  for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
    const bool isWord = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                        (byte >= '0' && byte <= '9') || byte >= 0x80;
    kinds[byte] = isWord ? ByteKind::word : ByteKind::endsStretch;
  }
  // These can stand between a Greek sigma and the letter that decides its form (Unicode Standard 3.13,
  // Final_Sigma).
  for (const unsigned char byte : {'\'', '.', ':', '^', '`'}) {
    kinds[byte] = ByteKind::endsWord;
  }
  return kinds;
}();

ByteKind kindOf(char byte) {
  return byteKinds[static_cast<unsigned char>(byte)];
}

bool hasTwoCharacters(std::string_view word) {
  return word.size() > 1 && graphemePrefix(word, 1).size() < word.size();
}

std::vector<std::string> cut(std::string_view stretch) {
  std::vector<std::string> words;
  const std::string folded = lowercase(foldDiacritics(stretch));
  for (std::size_t at = 0; at < folded.size();) {
    const auto word = nextAlphanumericRun(folded, at);
    if (hasTwoCharacters(word)) {
      words.emplace_back(word);
    }
  }
  return words;
}

}  // namespace

Tokenizer::Stretch Tokenizer::stretchAround(std::string_view text, std::size_t position, std::size_t floor) {
  Stretch stretch{position, position, 0};
  while (stretch.begin > floor && kindOf(text[stretch.begin - 1]) != ByteKind::endsStretch) {
    --stretch.begin;
  }
  while (stretch.end < text.size() && kindOf(text[stretch.end]) != ByteKind::endsStretch) {
    ++stretch.end;
  }
  std::size_t size = 0;
  for (std::size_t at = stretch.begin; at < position; ++at) {
    if (kindOf(text[at]) == ByteKind::word) {
      ++size;
    } else {
      stretch.wordsBefore += size > 1 ? 1 : 0;
      size = 0;
    }
  }
  return stretch;
}

const std::vector<std::string>& Tokenizer::wordsOf(std::string_view stretch) {
  if (stretch.size() > longestKnownStretch) {
    words_ = cut(stretch);
    return words_;
  }
  if (known_.empty()) {
    known_.resize(knownPlaces);
  }
  Known& known = known_[hashOf(stretch, beginningOf(stretch), 0) % knownPlaces];
  if (known.stretch != stretch) {
    known.words = cut(stretch);
    known.stretch = stretch;
  }
  return known.words;
}

}  // namespace tidewrack
