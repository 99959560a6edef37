#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidewrack::bench {

/// A small generator of numbers with the same sequence everywhere (splitmix64). The distributions of the
/// standard library differ from one implementation to the next, so they are not used.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  /// From 0 to `count` - 1.
  std::uint64_t below(std::uint64_t count) { return next() % count; }
  /// From `low` to `high`, both included.
  std::uint64_t between(std::uint64_t low, std::uint64_t high) { return low + below(high - low + 1); }
  bool percent(unsigned chance) { return below(100) < chance; }
  template <typename List>
  const auto& pick(const List& list) {
    return list[below(list.size())];
  }

 private:
  std::uint64_t state_;
};

/// A language as it comes up in mail: its words and the charsets in which people write it.
struct Language {
  std::vector<std::string> words;     ///< UTF-8
  std::vector<std::string> names;     ///< UTF-8, given name and family name
  std::vector<const char*> charsets;  ///< names as in a header; the first is the most common
  bool spaced = true;                 ///< words are parted by blanks
  unsigned weight = 1;                ///< share of the messages
  /// words and names in each charset, same order as `charsets`
  std::vector<std::vector<std::string>> encodedWords;
};

/// All languages, with their words converted to each of their charsets.
const std::vector<Language>& languages();

/// Labels of the user and of the system, as they stand decoded in the labels header.
const std::vector<std::string>& systemLabels(bool spanish);
const std::vector<std::string>& userLabels();

/// The text in a charset, by ICU. Throws std::runtime_error when the charset is unknown.
std::string encodeAs(std::string_view text, const char* charset);

}  // namespace tidewrack::bench
