#include "classify/token_segment_builder.h"

#include <algorithm>
#include <random>
#include <utility>

#include "classify/variable_numbers.h"

namespace tidewrack {
namespace {

constexpr std::size_t firstSlots = 1024;

}  // namespace

TokenSegmentBuilder::TokenSegmentBuilder() : seed_(std::random_device()()), slots_(firstSlots) {
  seed_ = seed_ << 32U | std::random_device()();
}

void TokenSegmentBuilder::grow() {
  HugePageVector<Slot> old(slots_.size() * 2);
  old.swap(slots_);
  const auto mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (slot.size != 0) {
      std::size_t place = slot.hash & mask;
      while (slots_[place].size != 0) {
        place = (place + 1) & mask;
      }
      slots_[place] = slot;
    }
  }
}

TokenSegmentBuilder::Slot& TokenSegmentBuilder::slotFor(std::string_view token, const Key& key) {
  const auto mask = slots_.size() - 1;
  for (std::size_t place = key.hash & mask;; place = (place + 1) & mask) {
    Slot& slot = slots_[place];
    if (slot.size == 0 || (slot.hash == key.hash && slot.size == token.size() &&
                           slot.ends.beginning == key.ends.beginning && slot.ends.ending == key.ends.ending &&
                           (token.size() <= 2 * hashWord || tokenOf(slot.entry) == token))) {
      return slot;
    }
  }
}

// The list of the numbers of the new entry is the caller's to add.
void TokenSegmentBuilder::insert(Slot& slot, std::string_view token, const Key& key, std::uint32_t number) {
  slot = {key.ends, static_cast<std::uint32_t>(token.size()), key.hash,
          static_cast<std::uint32_t>(tokenEnds_.size()), number};
  tokenBytes_ += token;
  tokenEnds_.push_back(tokenBytes_.size());
  if (tokenEnds_.size() * 4 > slots_.size() * 3) {
    grow();
  }
}

void TokenSegmentBuilder::beginMessage(const Text& id) {
  settle();
  messageIDs_.push_back(id);
}

void TokenSegmentBuilder::settle() {
  const auto number = static_cast<std::uint32_t>(messageIDs_.size() - 1);
  std::array<std::uint32_t, mostWaiting> grown;
  std::size_t grownCount = 0;
  for (std::size_t i = 0; i < waitingCount_; ++i) {
    const Waiting& waiting = waiting_[i];
    const std::string_view token(waiting.token, waiting.size);
    Slot& slot = slotFor(token, waiting.key);
    if (slot.size == 0) {
      insert(slot, token, waiting.key, number);
      numbers_.addList(number);
      ++pairCount_;
      continue;
    }
    // Whether the message has had the token is anybody's guess, so there is no branch for it.
    grown[grownCount] = slot.entry;
    grownCount += slot.seen != number ? 1 : 0;
    slot.seen = number;
    numbers_.prefetch(slot.entry);
  }
  waitingCount_ = 0;
  for (std::size_t i = 0; i < grownCount; ++i) {
    numbers_.add(grown[i], number);
  }
  pairCount_ += grownCount;
}

std::vector<std::uint32_t> TokenSegmentBuilder::sortedEntries() const {
  // Most tokens differ in their first bytes, which stand here in the order that makes their numbers ascend
  // as they do.
  struct Place {
    std::uint64_t beginning;
    std::uint32_t entry;
  };
  std::vector<Place> order(tokenEnds_.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    const auto token = tokenOf(i);
    order[i].entry = static_cast<std::uint32_t>(i);
    for (std::size_t at = 0; at < hashWord; ++at) {
      const auto byte = at < token.size() ? static_cast<unsigned char>(token[at]) : 0U;
      order[i].beginning = order[i].beginning << 8U | byte;
    }
  }
  std::ranges::sort(order, [this](const Place& a, const Place& b) {
    return a.beginning != b.beginning ? a.beginning < b.beginning : tokenOf(a.entry) < tokenOf(b.entry);
  });
  std::vector<std::uint32_t> entries(order.size());
  std::ranges::transform(order, entries.begin(), &Place::entry);
  return entries;
}

std::shared_ptr<const TokenSegment> TokenSegmentBuilder::finish() {
  TokenSegmentBuilder nothing;
  return finishWith(nothing);
}

std::shared_ptr<const TokenSegment> TokenSegmentBuilder::finishWith(TokenSegmentBuilder& behind) {
  settle();
  behind.settle();
  // The entries of this builder come first, then those that only the other one has.
  constexpr auto none = static_cast<std::uint32_t>(-1);
  const std::size_t ownEntries = tokenEnds_.size();
  std::vector<std::uint32_t> entryBehind(ownEntries, none);
  for (std::uint32_t entry = 0; entry < behind.tokenEnds_.size(); ++entry) {
    const auto token = behind.tokenOf(entry);
    const Key key = keyOf(token, endsOf(token));
    Slot& slot = slotFor(token, key);
    if (slot.size == 0) {
      insert(slot, token, key, 0);
      entryBehind.push_back(entry);
    } else {
      entryBehind[slot.entry] = entry;
    }
  }
  slots_.clear();
  const auto base = static_cast<std::uint32_t>(messageIDs_.size());
  auto segment = std::make_shared<TokenSegment>();
  segment->messageIDs_ = std::move(messageIDs_);
  segment->messageIDs_.insert(segment->messageIDs_.end(), behind.messageIDs_.begin(),
                              behind.messageIDs_.end());
  segment->pairCount_ = pairCount_ + behind.pairCount_;
  segment->tokenBytes_.reserve(tokenBytes_.size());
  segment->tokenEnds_.reserve(tokenEnds_.size());
  segment->postingEnds_.reserve(tokenEnds_.size());
  auto& postings = segment->postings_;
  postings.reserve(segment->pairCount_ + tokenEnds_.size() * longestNumber);  // Most numbers take one byte.
  for (const auto entry : sortedEntries()) {
    segment->tokenBytes_ += tokenOf(entry);
    segment->tokenEnds_.push_back(segment->tokenBytes_.size());
    std::uint32_t last = 0;
    if (entry < ownEntries) {
      appendNumber(postings, numbers_.first(entry));
      numbers_.writeRest(entry, postings);
      last = numbers_.last(entry);
    }
    if (const auto other = entryBehind[entry]; other != none) {
      appendNumber(postings, base + behind.numbers_.first(other) - last);
      behind.numbers_.writeRest(other, postings);
    }
    segment->postingEnds_.push_back(postings.size());
  }
  postings.shrink_to_fit();
  return segment;
}

}  // namespace tidewrack
