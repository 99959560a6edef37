#include "classify/token_segment_builder.h"

#include <algorithm>
#include <random>
#include <utility>

#include "classify/variable_numbers.h"
#include "platform/two_threads.h"

namespace tidewrack {
namespace {

constexpr std::size_t firstSlots = 1024;

// The first bytes of a text, up to eight, as a number that is ordered as they are. Eight can be read.
std::uint64_t startOf(const char* text, std::size_t size) {
  const auto spare = 8 * (hashWord - std::min(size, hashWord));
  return __builtin_bswap64(loadWord(text)) >> spare << spare;
}

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

void TokenSegmentBuilder::sort() {
  settle();
  slots_ = {};
  // So that sixteen bytes can be read at each token.
  tokenBytes_.append(2 * hashWord, '\0');
  sorted_.resize(tokenEnds_.size());
  std::size_t begin = 0;
  for (std::size_t entry = 0; entry < sorted_.size(); ++entry) {
    const char* const token = &tokenBytes_[begin];
    const std::size_t size = tokenEnds_[entry] - begin;
    sorted_[entry] = {startOf(token, size), size > hashWord ? startOf(token + hashWord, size - hashWord) : 0,
                      static_cast<std::uint32_t>(entry)};
    begin = tokenEnds_[entry];
  }
  std::ranges::sort(sorted_,
                    [this](const Sorted& a, const Sorted& b) { return std::is_lt(compare(a, *this, b)); });
  isSorted_ = true;
}

std::strong_ordering TokenSegmentBuilder::compare(const Sorted& own, const TokenSegmentBuilder& behind,
                                                  const Sorted& other) const {
  if (own.first != other.first) {
    return own.first <=> other.first;
  }
  if (own.second != other.second) {
    return own.second <=> other.second;
  }
  return tokenOf(own.entry) <=> behind.tokenOf(other.entry);
}

void TokenSegmentBuilder::join(std::span<const Sorted> own, const TokenSegmentBuilder& behind,
                               std::span<const Sorted> others, TokenSegment& segment) const {
  const auto base = static_cast<std::uint32_t>(messageIDs_.size());
  auto& postings = segment.postings_;
  while (!own.empty() || !others.empty()) {
    const auto order = others.empty() ? std::strong_ordering::less
                       : own.empty()  ? std::strong_ordering::greater
                                      : compare(own.front(), behind, others.front());
    segment.tokenBytes_ +=
        std::is_lteq(order) ? tokenOf(own.front().entry) : behind.tokenOf(others.front().entry);
    segment.tokenEnds_.push_back(segment.tokenBytes_.size());
    std::uint32_t last = 0;
    if (std::is_lteq(order)) {
      const auto entry = own.front().entry;
      appendNumber(postings, numbers_.first(entry));
      numbers_.writeRest(entry, postings);
      last = numbers_.last(entry);
      own = own.subspan(1);
    }
    if (std::is_gteq(order)) {
      const auto entry = others.front().entry;
      appendNumber(postings, base + behind.numbers_.first(entry) - last);
      behind.numbers_.writeRest(entry, postings);
      others = others.subspan(1);
    }
    segment.postingEnds_.push_back(postings.size());
  }
}

std::shared_ptr<const TokenSegment> TokenSegmentBuilder::finish() {
  TokenSegmentBuilder nothing;
  return finishWith(nothing);
}

std::shared_ptr<const TokenSegment> TokenSegmentBuilder::finishWith(TokenSegmentBuilder& behind) {
  for (auto* builder : {this, &behind}) {
    if (!builder->isSorted_) {
      builder->sort();
    }
  }
  auto segment = std::make_shared<TokenSegment>();
  const auto reserve = [&](TokenSegment& part, std::size_t divisor) {
    const auto tokens = tokenEnds_.size() + behind.tokenEnds_.size();
    part.tokenBytes_.reserve((tokenBytes_.size() + behind.tokenBytes_.size()) / divisor);
    part.tokenEnds_.reserve(tokens / divisor);
    part.postingEnds_.reserve(tokens / divisor);
    // Most numbers take one byte.
    part.postings_.reserve((pairCount_ + behind.pairCount_ + tokens * longestNumber) / divisor);
  };
  reserve(*segment, 1);
  const std::span<const Sorted> own(sorted_);
  const std::span<const Sorted> others(behind.sorted_);
  constexpr std::size_t worthTwoThreads = 4096;
  if (own.size() < worthTwoThreads) {
    join(own, behind, others, *segment);
  } else {
    // The words below one from the middle, and the rest.
    const auto ownMiddle = own.size() / 2;
    const auto cut = std::ranges::partition_point(
        others, [&](const Sorted& other) { return std::is_gt(compare(own[ownMiddle], behind, other)); });
    const auto othersMiddle = static_cast<std::size_t>(cut - others.begin());
    TokenSegment rest;
    reserve(rest, 2);
    doTogether([&] { join(own.first(ownMiddle), behind, others.first(othersMiddle), *segment); },
               [&] { join(own.subspan(ownMiddle), behind, others.subspan(othersMiddle), rest); });
    segment->append(rest);
  }
  segment->messageIDs_ = std::move(messageIDs_);
  segment->messageIDs_.insert(segment->messageIDs_.end(), behind.messageIDs_.begin(),
                              behind.messageIDs_.end());
  segment->pairCount_ = pairCount_ + behind.pairCount_;
  segment->shrinkToFit();
  return segment;
}

}  // namespace tidewrack
