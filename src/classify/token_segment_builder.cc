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
  std::vector<Slot> old(slots_.size() * 2);
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

TokenSegmentBuilder::Entry& TokenSegmentBuilder::insert(Slot& slot, std::string_view token, Key key,
                                                        std::uint32_t number) {
  ++pairCount_;
  slot = {key.beginning,
          key.ending,
          static_cast<std::uint32_t>(token.size()),
          key.hash,
          static_cast<std::uint32_t>(entries_.size()),
          number};
  auto& entry = entries_.emplace_back();
  entry.token = tokenBytes_.size();
  entry.size = slot.size;
  entry.first = entry.last = number;
  tokenBytes_ += token;
  if (entries_.size() * 2 > slots_.size()) {
    grow();
  }
  return entry;
}

void TokenSegmentBuilder::beginMessage(const Text& id) {
  messageIDs_.push_back(id);
}

void TokenSegmentBuilder::addNumber(Entry& entry, std::uint32_t number) {
  appendNumber(entry.rest, number - entry.last);
  entry.last = number;
  ++pairCount_;
}

void TokenSegmentBuilder::append(TokenSegmentBuilder& next) {
  const auto base = static_cast<std::uint32_t>(messageIDs_.size());
  messageIDs_.insert(messageIDs_.end(), next.messageIDs_.begin(), next.messageIDs_.end());
  for (Entry& added : next.entries_) {
    const auto token = next.tokenOf(added);
    const Key key = keyOf(token);
    Slot& slot = slotFor(token, key);
    if (slot.size == 0) {
      Entry& entry = insert(slot, token, key, base + added.first);
      entry.last = base + added.last;
      entry.rest = std::move(added.rest);
      --pairCount_;  // All of the entry are counted below.
      continue;
    }
    Entry& entry = entries_[slot.entry];
    appendNumber(entry.rest, base + added.first - entry.last);
    entry.rest += added.rest;
    entry.last = base + added.last;
    slot.seen = entry.last;
  }
  pairCount_ += next.pairCount_;
  next.entries_.clear();
}

std::shared_ptr<const TokenSegment> TokenSegmentBuilder::finish() {
  slots_.clear();
  // Most tokens differ in their first bytes, which stand here in the order that makes their numbers ascend
  // as they do.
  struct Place {
    std::uint64_t beginning;
    std::uint32_t entry;
  };
  std::vector<Place> order(entries_.size());
  std::size_t postingBytes = 0;
  for (std::size_t i = 0; i < order.size(); ++i) {
    const auto token = tokenOf(entries_[i]);
    order[i].entry = static_cast<std::uint32_t>(i);
    for (std::size_t at = 0; at < hashWord; ++at) {
      const auto byte = at < token.size() ? static_cast<unsigned char>(token[at]) : 0U;
      order[i].beginning = order[i].beginning << 8U | byte;
    }
    postingBytes += entries_[i].rest.size() + 5;
  }
  std::ranges::sort(order, [this](const Place& a, const Place& b) {
    return a.beginning != b.beginning ? a.beginning < b.beginning
                                      : tokenOf(entries_[a.entry]) < tokenOf(entries_[b.entry]);
  });
  auto segment = std::make_shared<TokenSegment>();
  segment->messageIDs_ = std::move(messageIDs_);
  segment->pairCount_ = pairCount_;
  segment->tokenBytes_.reserve(tokenBytes_.size());
  segment->postings_.reserve(postingBytes);
  segment->tokenEnds_.reserve(order.size());
  segment->postingEnds_.reserve(order.size());
  for (const Place& place : order) {
    Entry& entry = entries_[place.entry];
    segment->tokenBytes_ += tokenOf(entry);
    segment->tokenEnds_.push_back(segment->tokenBytes_.size());
    appendNumber(segment->postings_, entry.first);
    segment->postings_ += std::exchange(entry.rest, {});
    segment->postingEnds_.push_back(segment->postings_.size());
  }
  segment->postings_.shrink_to_fit();
  return segment;
}

}  // namespace tidewrack
