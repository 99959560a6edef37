#include "classify/tokenizer.h"

#include <algorithm>
#include <utility>

#include "platform/alphanumerics.h"
#include "platform/normalization.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

bool endsStretch(char byte) {
  const bool isOfWord = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                        (byte >= '0' && byte <= '9') || static_cast<unsigned char>(byte) >= 0x80;
  // The others can stand between a Greek sigma and the letter that decides its form (Unicode Standard 3.13,
  // Final_Sigma).
  return !isOfWord && byte != '\'' && byte != '.' && byte != ':' && byte != '^' && byte != '`';
}

// Adds a word of which eight bytes can be read.
void addRoomy(std::vector<std::string>& words, std::string word) {
  word.reserve(std::max(word.size(), sizeof(std::uint64_t)));
  words.push_back(std::move(word));
}

}  // namespace

bool Tokenizer::hasTwoCharacters(std::string_view word) {
  return word.size() > 1 && graphemePrefix(word, 1).size() < word.size();
}

Tokenizer::Stretch Tokenizer::stretchAround(std::string_view text, std::size_t begin, std::size_t end,
                                            std::size_t floor) {
  while (begin > floor && !endsStretch(text[begin - 1])) {
    --begin;
  }
  while (end < text.size() && !endsStretch(text[end])) {
    ++end;
  }
  return {begin, end};
}

const std::vector<std::string>& Tokenizer::wordsOf(std::string_view stretch) {
  auto& words = stretches_.emplace_back();
  const std::string folded = lowercase(foldDiacritics(stretch));
  for (std::size_t at = 0; at < folded.size();) {
    const auto word = nextAlphanumericRun(folded, at);
    if (hasTwoCharacters(word)) {
      addRoomy(words, canonicallyComposed(word));
    }
  }
  return words;
}

std::string_view Tokenizer::composed(std::string_view word) {
  std::string result = canonicallyComposed(word);
  if (result == word) {
    return word;
  }
  auto& kept = stretches_.emplace_back();
  addRoomy(kept, std::move(result));
  return kept.front();
}

void Tokenizer::begin(std::size_t size) {
  stretches_.clear();
  // Room for a block behind the text, and for the longest character behind the last word.
  if (lower_.size() < size + wordBlock) {
    lower_.resize(size + wordBlock);
  }
}

}  // namespace tidewrack
