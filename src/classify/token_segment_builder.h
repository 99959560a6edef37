#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "classify/token_hash.h"
#include "classify/token_numbers.h"
#include "classify/token_segment.h"
#include "platform/huge_pages.h"

namespace tidewrack {

/// Collects tokens message by message. One thread at a time; two builders can share the messages of a
/// segment.
class TokenSegmentBuilder {
 public:
  TokenSegmentBuilder();

  /// Opens the message with this number, above those before; its tokens follow.
  void beginMessage(std::uint32_t number);
  /// A token of the open message, not empty; one seen before in it is ignored. Its bytes stay until `settle`.
  void addToken(std::string_view token) { wait(token, endsOf(token)); }
  /// The same for a token of which eight bytes can be read, whatever its size.
  void addRoomyToken(std::string_view token) { wait(token, endsOfRoomy(token)); }
  /// Takes the tokens in that were added. They wait so that the memory of several is asked for at once.
  void settle();
  /// Brings the tokens into order; no more come. `finish` does it where this was not called.
  void sort();
  /// The segment of the messages with these ids; the builder is spent.
  [[nodiscard]] std::shared_ptr<const TokenSegment> finish(std::vector<Text> messageIDs);
  /// The same with what `other` has collected of other messages of the segment. Both are spent.
  [[nodiscard]] std::shared_ptr<const TokenSegment> finishWith(TokenSegmentBuilder& other,
                                                               std::vector<Text> messageIDs);

 private:
  /// One place of the hash table. What decides about most tokens lies here, so that a token which the message
  /// has had already costs one look into memory.
  struct Slot {
    TokenEnds ends{};
    std::uint32_t size = 0;  // Of the token; 0 in an empty place.
    std::uint32_t hash = 0;
    std::uint32_t entry = 0;  // The number of the token, in the order in which tokens come.
    std::uint32_t seen = 0;   // Number of the last message that holds the token.
  };
  struct Key {
    TokenEnds ends;
    std::uint32_t hash;
  };
  struct Waiting {
    Key key;
    std::uint32_t size;
    const char* token;
  };

  [[nodiscard]] Key keyOf(std::string_view token, TokenEnds ends) const {
    return {ends, hashOf(token, ends, seed_)};
  }
  void wait(std::string_view token, TokenEnds ends);
  [[nodiscard]] std::string_view tokenOf(std::size_t entry) const {
    const std::size_t begin = entry == 0 ? 0 : tokenEnds_[entry - 1];
    return std::string_view(tokenBytes_).substr(begin, tokenEnds_[entry] - begin);
  }
  /// The place of the token, or the empty one where it belongs.
  [[nodiscard]] Slot& slotFor(std::string_view token, const Key& key);
  void insert(Slot& slot, std::string_view token, const Key& key, std::uint32_t number);
  /// An entry with the beginning of its token, which tells most of them apart.
  struct Sorted {
    std::uint64_t first;   // Eight bytes, the first one highest.
    std::uint64_t second;  // The next eight. Zeros where the token has ended, which are in none.
    std::size_t begin;     // Of the token in tokenBytes_.
    std::uint32_t size;    // Of the token.
    std::uint32_t entry;
  };
  [[nodiscard]] std::strong_ordering compare(const Sorted& own, const TokenSegmentBuilder& other,
                                             const Sorted& others) const;
  /// What is behind the sixteen bytes.
  [[nodiscard]] std::string_view restOf(const Sorted& sorted) const {
    constexpr std::uint32_t known = 2 * hashWord;
    return {&tokenBytes_[sorted.begin] + known, sorted.size < known ? 0 : sorted.size - known};
  }
  /// Appends the token of an entry, without a look at its bytes where `sorted` holds them all.
  void appendToken(const Sorted& sorted, std::string& bytes) const;
  /// Puts these tokens of both builders behind those of the segment.
  void join(std::span<const Sorted> own, const TokenSegmentBuilder& other, std::span<const Sorted> others,
            TokenSegment& segment) const;
  void grow();

  static constexpr std::size_t mostWaiting = 32;

  std::uint64_t seed_;  // Nobody can make mail whose words all meet in one place of the table.
  HugePageVector<Slot> slots_;
  std::string tokenBytes_;
  std::vector<std::size_t> tokenEnds_;
  TokenNumbers numbers_;  // A list for each entry.
  std::vector<Sorted> sorted_;
  bool isSorted_ = false;
  std::uint32_t number_ = 0;  // Of the open message.
  std::uint64_t pairCount_ = 0;
  std::array<Waiting, mostWaiting> waiting_;
  std::size_t waitingCount_ = 0;
};

inline void TokenSegmentBuilder::wait(std::string_view token, TokenEnds ends) {
  const Key key = keyOf(token, ends);
  __builtin_prefetch(&slots_[key.hash & (slots_.size() - 1)], 1);
  waiting_[waitingCount_] = {key, static_cast<std::uint32_t>(token.size()), token.data()};
  if (++waitingCount_ == mostWaiting) {
    settle();
  }
}

}  // namespace tidewrack
