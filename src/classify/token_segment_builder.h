#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "classify/token_hash.h"
#include "classify/token_segment.h"

namespace tidewrack {

/// Collects tokens message by message. One thread at a time.
class TokenSegmentBuilder {
 public:
  TokenSegmentBuilder();

  /// Opens the next message; its tokens follow.
  void beginMessage(const Text& id);
  /// A token of the open message, not empty; one seen before in it is ignored.
  void addToken(std::string_view token);
  /// Puts everything that `next` has collected behind this builder's messages; `next` is spent.
  void append(TokenSegmentBuilder& next);
  /// The segment; the builder is spent.
  [[nodiscard]] std::shared_ptr<const TokenSegment> finish();

 private:
  /// One place of the hash table. What decides about most tokens lies here, so that a token which the message
  /// has had already costs one look into memory.
  struct Slot {
    std::uint64_t beginning = 0;  // The first bytes of the token, all of them up to eight,
    std::uint64_t ending = 0;     // and the last eight of a longer one.
    std::uint32_t size = 0;       // Of the token; 0 in an empty place.
    std::uint32_t hash = 0;
    std::uint32_t entry = 0;  // In entries_.
    std::uint32_t seen = 0;   // Number of the last message that holds the token.
  };
  struct Entry {
    std::size_t token = 0;   // Where its bytes begin in tokenBytes_,
    std::uint32_t size = 0;  // and their number.
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::string rest;  // The numbers behind the first, as differences.
  };
  struct Key {
    std::uint64_t beginning;
    std::uint64_t ending;
    std::uint32_t hash;
  };

  [[nodiscard]] Key keyOf(std::string_view token) const {
    const auto beginning = beginningOf(token);
    const auto ending =
        token.size() > hashWord ? loadBytes(token.data() + token.size() - hashWord, hashWord) : 0;
    return {beginning, ending, hashOf(token, beginning, seed_)};
  }
  [[nodiscard]] std::string_view tokenOf(const Entry& entry) const {
    return std::string_view(tokenBytes_).substr(entry.token, entry.size);
  }
  /// The place of the token, or the empty one where it belongs.
  [[nodiscard]] Slot& slotFor(std::string_view token, Key key);
  Entry& insert(Slot& slot, std::string_view token, Key key, std::uint32_t number);
  void addNumber(Entry& entry, std::uint32_t number);
  void grow();

  std::uint64_t seed_;  // Nobody can make mail whose words all meet in one place of the table.
  std::vector<Slot> slots_;
  std::vector<Entry> entries_;
  std::string tokenBytes_;
  std::vector<Text> messageIDs_;
  std::uint64_t pairCount_ = 0;
};

inline TokenSegmentBuilder::Slot& TokenSegmentBuilder::slotFor(std::string_view token, Key key) {
  const auto mask = slots_.size() - 1;
  for (std::size_t place = key.hash & mask;; place = (place + 1) & mask) {
    Slot& slot = slots_[place];
    if (slot.size == 0 || (slot.hash == key.hash && slot.size == token.size() &&
                           slot.beginning == key.beginning && slot.ending == key.ending &&
                           (token.size() <= 2 * hashWord || tokenOf(entries_[slot.entry]) == token))) {
      return slot;
    }
  }
}

inline void TokenSegmentBuilder::addToken(std::string_view token) {
  const auto number = static_cast<std::uint32_t>(messageIDs_.size() - 1);
  const Key key = keyOf(token);
  Slot& slot = slotFor(token, key);
  if (slot.size == 0) {
    insert(slot, token, key, number);
  } else if (slot.seen != number) {
    slot.seen = number;
    addNumber(entries_[slot.entry], number);
  }
}

}  // namespace tidewrack
