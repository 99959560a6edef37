#include "screen/shared_message_list.h"

#include <algorithm>
#include <utility>

namespace tidewrack {
namespace {

using Chunk = SharedMessageList::Chunk;

// Adds where two lists of chunks differ; false when there are more than `most` such places.
bool addDifferences(const std::vector<Chunk>& before, const std::vector<Chunk>& after, std::size_t most,
                    Positions& found) {
  for (std::size_t c = 0; c < before.size(); ++c) {
    if (before[c] == after[c]) {
      continue;
    }
    const MessageList& a = *before[c];
    const MessageList& b = *after[c];
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (a[i] != b[i]) {
        if (found.size() == most) {
          return false;
        }
        found.push_back(static_cast<std::uint32_t>(c * SharedMessageList::chunkSize + i));
      }
    }
  }
  return true;
}

}  // namespace

SharedMessageList::SharedMessageList() {
  static const auto empty = std::make_shared<const Body>();
  body_ = empty;
}

SharedMessageList::SharedMessageList(std::shared_ptr<const Body> body) : body_(std::move(body)) {}

SharedMessageList::SharedMessageList(MessageList list) {
  auto body = std::make_shared<Body>();
  body->size = list.size();
  body->chunks.reserve((list.size() + chunkSize - 1) / chunkSize);
  for (std::size_t first = 0; first < list.size(); first += chunkSize) {
    const auto begin = list.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = list.begin() + static_cast<std::ptrdiff_t>(std::min(first + chunkSize, list.size()));
    body->chunks.push_back(
        std::make_shared<const MessageList>(std::make_move_iterator(begin), std::make_move_iterator(end)));
  }
  body_ = std::move(body);
}

SharedMessageList SharedMessageList::part(const SharedMessageList& list,
                                          std::shared_ptr<const Positions> positions) {
  auto body = std::make_shared<Body>();
  body->size = positions->size();
  body->whole = list.body_;
  body->positions = std::move(positions);
  return SharedMessageList(std::move(body));
}

SharedMessageList SharedMessageList::replacing(std::size_t position, value_type message) const {
  auto body = std::make_shared<Body>(*body_);
  auto& chunk = body->chunks[position / chunkSize];
  auto changed = std::make_shared<MessageList>(*chunk);
  (*changed)[position % chunkSize] = std::move(message);
  chunk = std::move(changed);
  return SharedMessageList(std::move(body));
}

std::optional<std::size_t> SharedMessageList::indexOf(std::uint32_t position) const {
  if (!positions()) {
    return position < size() ? std::optional<std::size_t>(position) : std::nullopt;
  }
  const auto found = std::ranges::lower_bound(*positions(), position);
  return found != positions()->end() && *found == position
             ? std::optional(static_cast<std::size_t>(found - positions()->begin()))
             : std::nullopt;
}

MessageList SharedMessageList::get() const {
  return {begin(), end()};
}

std::optional<Positions> SharedMessageList::differences(const SharedMessageList& before,
                                                        const SharedMessageList& after, std::size_t most) {
  const Body& a = *before.body_;
  const Body& b = *after.body_;
  if (&a == &b) {
    return Positions();
  }
  if (a.size != b.size || !a.positions != !b.positions) {
    return std::nullopt;
  }
  Positions found;
  if (!a.positions) {
    return addDifferences(a.chunks, b.chunks, most, found) ? std::optional(std::move(found)) : std::nullopt;
  }
  if ((a.positions != b.positions && *a.positions != *b.positions) || a.whole->size != b.whole->size) {
    return std::nullopt;
  }
  if (!addDifferences(a.whole->chunks, b.whole->chunks, most, found)) {
    return std::nullopt;
  }
  Positions inPart;
  for (const auto position : found) {
    if (const auto index = before.indexOf(position)) {
      inPart.push_back(static_cast<std::uint32_t>(*index));
    }
  }
  return inPart;
}

bool SharedMessageList::isEqual(const SharedMessageList& other) const {
  if (size() != other.size()) {
    return false;
  }
  // What shares its chunks or its places is compared by these; the rest message by message.
  constexpr std::size_t most = 64;
  const auto differing = differences(*this, other, most);
  return differing ? differing->empty() : std::ranges::equal(*this, other);
}

}  // namespace tidewrack
