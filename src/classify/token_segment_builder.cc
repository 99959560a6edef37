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

void TokenSegmentBuilder::beginMessage(std::uint32_t number) {
  settle();
  number_ = number;
}

void TokenSegmentBuilder::settle() {
  const auto number = number_;
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
                      begin, static_cast<std::uint32_t>(size), static_cast<std::uint32_t>(entry)};
    begin = tokenEnds_[entry];
  }
  std::ranges::sort(sorted_,
                    [this](const Sorted& a, const Sorted& b) { return std::is_lt(compare(a, *this, b)); });
  isSorted_ = true;
}

std::strong_ordering TokenSegmentBuilder::compare(const Sorted& own, const TokenSegmentBuilder& other,
                                                  const Sorted& others) const {
  if (own.first != others.first) {
    return own.first <=> others.first;
  }
  if (own.second != others.second) {
    return own.second <=> others.second;
  }
  if (std::max(own.size, others.size) <= 2 * hashWord) {
    return std::strong_ordering::equal;
  }
  return restOf(own) <=> other.restOf(others);
}

void TokenSegmentBuilder::appendToken(const Sorted& sorted, std::string& bytes) const {
  if (sorted.size > 2 * hashWord) {
    bytes.append(tokenBytes_, sorted.begin, sorted.size);
    return;
  }
  const std::array<std::uint64_t, 2> start = {__builtin_bswap64(sorted.first),
                                              __builtin_bswap64(sorted.second)};
  bytes.append(reinterpret_cast<const char*>(start.data()), sorted.size);
}

void TokenSegmentBuilder::join(std::span<const Sorted> own, const TokenSegmentBuilder& other,
                               std::span<const Sorted> others, TokenSegment& segment) const {
  TokenNumbers::Room room;
  while (!own.empty() || !others.empty()) {
    const auto order = others.empty() ? std::strong_ordering::less
                       : own.empty()  ? std::strong_ordering::greater
                                      : compare(own.front(), other, others.front());
    const bool isOwn = std::is_lteq(order);
    const bool isOthers = std::is_gteq(order);
    if (isOwn) {
      appendToken(own.front(), segment.tokenBytes_);
    } else {
      other.appendToken(others.front(), segment.tokenBytes_);
    }
    segment.tokenEnds_.push_back(segment.tokenBytes_.size());
    if (isOwn && isOthers) {
      numbers_.writeWith(own.front().entry, other.numbers_, others.front().entry, room, segment.postings_);
    } else if (isOwn) {
      numbers_.write(own.front().entry, 0, segment.postings_);
    } else {
      other.numbers_.write(others.front().entry, 0, segment.postings_);
    }
    segment.postingEnds_.push_back(segment.postings_.size());
    own = own.subspan(isOwn ? 1 : 0);
    others = others.subspan(isOthers ? 1 : 0);
  }
}

std::shared_ptr<const TokenSegment> TokenSegmentBuilder::finish(std::vector<Text> messageIDs) {
  TokenSegmentBuilder nothing;
  return finishWith(nothing, std::move(messageIDs));
}

std::shared_ptr<const TokenSegment> TokenSegmentBuilder::finishWith(TokenSegmentBuilder& other,
                                                                    std::vector<Text> messageIDs) {
  for (auto* builder : {this, &other}) {
    if (!builder->isSorted_) {
      builder->sort();
    }
  }
  auto segment = std::make_shared<TokenSegment>();
  const auto reserve = [&](TokenSegment& part, std::size_t divisor) {
    const auto tokens = tokenEnds_.size() + other.tokenEnds_.size();
    part.tokenBytes_.reserve((tokenBytes_.size() + other.tokenBytes_.size()) / divisor);
    part.tokenEnds_.reserve(tokens / divisor);
    part.postingEnds_.reserve(tokens / divisor);
    // Most numbers take one byte.
    part.postings_.reserve((pairCount_ + other.pairCount_ + tokens * longestNumber) / divisor);
  };
  reserve(*segment, 1);
  const std::span<const Sorted> own(sorted_);
  const std::span<const Sorted> others(other.sorted_);
  constexpr std::size_t worthTwoThreads = 4096;
  if (own.size() < worthTwoThreads) {
    join(own, other, others, *segment);
  } else {
    // The words below one from the middle, and the rest.
    const auto ownMiddle = own.size() / 2;
    const auto cut = std::ranges::partition_point(
        others, [&](const Sorted& each) { return std::is_gt(compare(own[ownMiddle], other, each)); });
    const auto othersMiddle = static_cast<std::size_t>(cut - others.begin());
    TokenSegment rest;
    reserve(rest, 2);
    doTogether([&] { join(own.first(ownMiddle), other, others.first(othersMiddle), *segment); },
               [&] { join(own.subspan(ownMiddle), other, others.subspan(othersMiddle), rest); });
    segment->append(rest);
  }
  segment->messageIDs_ = std::move(messageIDs);
  segment->pairCount_ = pairCount_ + other.pairCount_;
  segment->shrinkToFit();
  return segment;
}

}  // namespace tidewrack
