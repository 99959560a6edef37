#include "classify/full_text_search_index.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <numeric>
#include <utility>

#include "classify/message_text.h"
#include "classify/token_segment_builder.h"
#include "classify/tokenizer.h"
#include "platform/text_numbers.h"

namespace tidewrack {
namespace {

constexpr std::uint32_t nowhere = TokenSegment::dropped;
constexpr std::size_t mostParts = 6;

std::vector<std::uint32_t> numbersFrom0(std::size_t count) {
  std::vector<std::uint32_t> numbers(count);
  std::iota(numbers.begin(), numbers.end(), 0U);
  return numbers;
}

// Distinct numbers in any order. Many of them are sorted by marking them in a row of bits.
void sortPositions(std::vector<std::uint32_t>& positions) {
  if (std::ranges::is_sorted(positions)) {
    return;
  }
  constexpr std::size_t wordBits = 64;
  const std::size_t words = *std::ranges::max_element(positions) / wordBits + 1;
  if (positions.size() < words) {
    std::ranges::sort(positions);
    return;
  }
  std::vector<std::uint64_t> marks(words);
  for (const auto position : positions) {
    marks[position / wordBits] |= std::uint64_t{1} << (position % wordBits);
  }
  positions.clear();
  for (std::size_t word = 0; word < words; ++word) {
    for (auto left = marks[word]; left != 0; left &= left - 1) {
      positions.push_back(
          static_cast<std::uint32_t>(word * wordBits + static_cast<std::size_t>(std::countr_zero(left))));
    }
  }
}

}  // namespace

CollectedWords CollectedWords::ofSaved(std::shared_ptr<const TokenSegment> segment,
                                       const MessageList& saved) {
  CollectedWords collected;
  const auto& ids = segment->messageIDs();
  collected.messages.reserve(ids.size());
  // Each replaced message stands in `saved` as the one that replaces it, so that either will do.
  for (const auto& message : saved) {
    if (collected.messages.size() < ids.size() && message->id == ids[collected.messages.size()]) {
      collected.messages.push_back(message);
    }
  }
  if (collected.messages.size() == ids.size()) {
    collected.segment = std::move(segment);
  }
  return collected;
}

/// A segment and where its messages stand in the list that the index speaks of. A message that is no longer
/// there stands nowhere.
struct FullTextSearchIndex::Part {
  std::shared_ptr<const TokenSegment> segment;
  std::vector<std::uint32_t> positions;
  MessageList messages;  ///< As they were read; empty as long as only words are known.

  [[nodiscard]] std::size_t present() const {
    return positions.size() - static_cast<std::size_t>(std::ranges::count(positions, nowhere));
  }
};

struct FullTextSearchIndex::Data {
  std::vector<Part> parts;
};

FullTextSearchIndex::FullTextSearchIndex() = default;

void FullTextSearchIndex::build(const MessageList& messages) {
  auto data = std::make_shared<Data>();
  data->parts.push_back({TokenSegment::build(messages), numbersFrom0(messages.size()), messages});
  data_ = std::move(data);
}

void FullTextSearchIndex::update(const MessageList& messages, const CollectedWords& collected) {
  if (!data_ && !collected.segment) {
    build(messages);
    return;
  }
  struct Place {
    std::uint32_t part = nowhere;
    std::uint32_t number = 0;
  };
  auto data = data_ ? std::make_shared<Data>(*data_) : std::make_shared<Data>();
  if (collected.segment) {
    // As if their messages had stood behind all others so far.
    const auto count = collected.messages.size();
    Part part{collected.segment, numbersFrom0(count), collected.messages};
    std::uint32_t behind = 0;
    for (const auto& other : data->parts) {
      for (const auto position : other.positions) {
        behind = position == nowhere ? behind : std::max(behind, position + 1);
      }
    }
    for (auto& position : part.positions) {
      position += behind;
    }
    data->parts.push_back(std::move(part));
  }
  // Most lists differ little from the one before: whoever stands where he stood is found without his id.
  std::vector<Place> earlier;
  for (std::size_t p = 0; p < data->parts.size(); ++p) {
    auto& part = data->parts[p];
    for (std::size_t n = 0; n < part.positions.size(); ++n) {
      const auto position = std::exchange(part.positions[n], nowhere);
      if (position == nowhere || part.messages.empty()) {
        continue;
      }
      if (earlier.size() <= position) {
        earlier.resize(std::size_t{position} + 1);
      }
      earlier[position] = {static_cast<std::uint32_t>(p), static_cast<std::uint32_t>(n)};
    }
  }
  // Keeps the words of a place for the message at `position` if they are its words; else the place stays.
  const auto keep = [&](Place& place, std::size_t position) {
    if (place.part == nowhere) {
      return false;
    }
    auto& part = data->parts[place.part];
    auto& known = part.messages[place.number];
    if (known != messages[position] &&
        (known->id != messages[position]->id || !haveSameSearchableText(*known, *messages[position]))) {
      return false;
    }
    part.positions[place.number] = static_cast<std::uint32_t>(position);
    known = messages[position];
    place.part = nowhere;
    return true;
  };
  std::vector<std::uint32_t> moved;
  for (std::size_t i = 0; i < messages.size(); ++i) {
    if (i >= earlier.size() || !keep(earlier[i], i)) {
      moved.push_back(static_cast<std::uint32_t>(i));
    }
  }
  std::erase_if(earlier, [&](const Place& place) { return moved.empty() || place.part == nowhere; });
  TextNumbers ids;
  ids.reserve(earlier.size());
  std::vector<Place> elsewhere;  // By the number of the id; of several the last, which is the newest.
  elsewhere.reserve(earlier.size());
  const auto idAt = [&](std::size_t i) -> const Text& {
    return data->parts[earlier[i].part].messages[earlier[i].number]->id;
  };
  ids.numberEach(earlier.size(), idAt, [&](std::size_t i, TextNumbers::Number id) {
    elsewhere.resize(ids.size());
    elsewhere[id] = earlier[i];
  });
  Part fresh;
  ids.findEach(
      moved.size(), [&](std::size_t i) -> const Text& { return messages[moved[i]]->id; },
      [&](std::size_t i, std::optional<TextNumbers::Number> id) {
        if (!id || !keep(elsewhere[*id], moved[i])) {
          fresh.messages.push_back(messages[moved[i]]);
          fresh.positions.push_back(moved[i]);
        }
      });
  if (!fresh.messages.empty()) {
    fresh.segment = TokenSegment::build(fresh.messages);
    data->parts.push_back(std::move(fresh));
  }
  compact(*data);
  data_ = std::move(data);
}

/// Keeps the number of parts small and lets the words of messages that have gone, go.
void FullTextSearchIndex::compact(Data& data) {
  std::erase_if(data.parts, [](const Part& part) { return part.present() == 0; });
  const bool muchIsGone = std::ranges::any_of(
      data.parts, [](const Part& part) { return part.present() * 2 < part.positions.size(); });
  if (data.parts.size() <= mostParts && !muchIsGone) {
    return;
  }
  mergeParts(data);
}

// One part with the messages in the order of the list, so that neighbours in it have neighbouring numbers.
void FullTextSearchIndex::mergeParts(Data& data) {
  Part merged;
  bool messagesAreKnown = true;
  for (const auto& part : data.parts) {
    std::ranges::copy_if(part.positions, std::back_inserter(merged.positions),
                         [](std::uint32_t position) { return position != nowhere; });
    messagesAreKnown = messagesAreKnown && !part.messages.empty();
  }
  std::ranges::sort(merged.positions);
  if (messagesAreKnown) {
    merged.messages.resize(merged.positions.size());
  }
  std::vector<std::vector<std::uint32_t>> newNumbers;
  std::vector<TokenSegment::MergePart> mergeParts;
  for (const auto& part : data.parts) {
    auto& numbers = newNumbers.emplace_back(part.positions.size(), nowhere);
    for (std::size_t n = 0; n < part.positions.size(); ++n) {
      if (part.positions[n] != nowhere) {
        const auto place = std::ranges::lower_bound(merged.positions, part.positions[n]);
        numbers[n] = static_cast<std::uint32_t>(place - merged.positions.begin());
        if (messagesAreKnown) {
          merged.messages[numbers[n]] = part.messages[n];
        }
      }
    }
  }
  for (std::size_t p = 0; p < data.parts.size(); ++p) {
    mergeParts.push_back({data.parts[p].segment.get(), newNumbers[p]});
  }
  merged.segment = TokenSegment::merge(mergeParts, merged.positions.size());
  data.parts.clear();
  data.parts.push_back(std::move(merged));
}

std::shared_ptr<const TokenSegment> FullTextSearchIndex::asOneSegment() {
  if (!data_ || data_->parts.empty()) {
    return nullptr;
  }
  const auto& first = data_->parts.front();
  if (data_->parts.size() > 1 || std::ranges::find(first.positions, nowhere) != first.positions.end()) {
    auto data = std::make_shared<Data>(*data_);
    mergeParts(*data);
    data_ = std::move(data);
  }
  return data_->parts.front().segment;
}

FullTextSearchIndex FullTextSearchIndex::ofSegment(std::shared_ptr<const TokenSegment> segment) {
  FullTextSearchIndex index;
  auto data = std::make_shared<Data>();
  const auto count = segment->messageIDs().size();
  data->parts.push_back({std::move(segment), numbersFrom0(count), {}});
  index.data_ = std::move(data);
  return index;
}

void FullTextSearchIndex::load(const std::vector<SearchTokenEntry>& entries) {
  std::vector<const SearchTokenEntry*> byMessage;
  byMessage.reserve(entries.size());
  for (const auto& entry : entries) {
    byMessage.push_back(&entry);
  }
  std::stable_sort(byMessage.begin(), byMessage.end(),
                   [](const auto* a, const auto* b) { return a->messageID < b->messageID; });
  TokenSegmentBuilder builder;
  std::vector<Text> ids;
  for (const auto* entry : byMessage) {
    if (ids.empty() || ids.back() != entry->messageID) {
      builder.beginMessage(static_cast<std::uint32_t>(ids.size()));
      ids.push_back(entry->messageID);
    }
    builder.addToken(entry->token);  // Its bytes stay in the entries.
  }
  *this = ofSegment(builder.finish(std::move(ids)));
}

void FullTextSearchIndex::align(const MessageList& messages) {
  if (!data_) {
    return;
  }
  TextNumbers ids;
  ids.reserve(messages.size());
  std::vector<std::uint32_t> positionOf;  // By the number of the id.
  positionOf.reserve(messages.size());
  ids.numberEach(
      messages.size(), [&](std::size_t i) -> const Text& { return messages[i]->id; },
      [&](std::size_t i, TextNumbers::Number id) {
        if (id == positionOf.size()) {
          positionOf.push_back(static_cast<std::uint32_t>(i));
        }
      });
  auto data = std::make_shared<Data>(*data_);
  for (auto& part : data->parts) {
    part.messages.assign(part.positions.size(), nullptr);
    ids.findEach(
        part.positions.size(), [&](std::size_t n) -> const Text& { return part.segment->messageIDs()[n]; },
        [&](std::size_t n, std::optional<TextNumbers::Number> id) {
          part.positions[n] = id ? positionOf[*id] : nowhere;
          if (id) {
            part.messages[n] = messages[positionOf[*id]];
          }
        });
  }
  data_ = std::move(data);
}

std::vector<SearchTokenEntry> FullTextSearchIndex::entries() const {
  std::vector<SearchTokenEntry> entries;
  if (!data_) {
    return entries;
  }
  entries.reserve(pairCount());
  for (const auto& part : data_->parts) {
    const auto& segment = *part.segment;
    for (std::size_t i = 0; i < segment.tokenCount(); ++i) {
      const Text token = segment.token(i);
      for (const auto number : segment.messagesWith(i)) {
        if (part.positions[number] != nowhere) {
          entries.push_back({token, segment.messageIDs()[number]});
        }
      }
    }
  }
  return entries;
}

std::size_t FullTextSearchIndex::messageCount() const {
  std::size_t count = 0;
  if (data_) {
    for (const auto& part : data_->parts) {
      count += part.present();
    }
  }
  return count;
}

std::uint64_t FullTextSearchIndex::pairCount() const {
  std::uint64_t count = 0;
  if (data_) {
    for (const auto& part : data_->parts) {
      count += part.segment->pairCount();
    }
  }
  return count;
}

std::size_t FullTextSearchIndex::memory() const {
  std::size_t bytes = 0;
  if (data_) {
    for (const auto& part : data_->parts) {
      bytes += part.segment->memory() + part.positions.capacity() * sizeof(std::uint32_t);
    }
  }
  return bytes;
}

bool FullTextSearchIndex::empty() const {
  return pairCount() == 0;
}

std::vector<std::string> FullTextSearchIndex::tokenize(std::string_view text) {
  std::vector<std::string> tokens;
  Tokenizer().forEachToken(text, [&tokens](std::string_view token) { tokens.emplace_back(token); });
  return tokens;
}

/// Visits each part with the number of each of its messages that holds every one of the tokens.
template <typename Visit>
void FullTextSearchIndex::forEachMatch(std::span<const std::string> tokens, Visit visit) const {
  if (tokens.empty() || !data_) {
    return;
  }
  for (const auto& part : data_->parts) {
    auto numbers = part.segment->messagesWith(tokens.front());
    for (std::size_t i = 1; i < tokens.size() && !numbers.empty(); ++i) {
      std::vector<std::uint32_t> both;
      std::ranges::set_intersection(numbers, part.segment->messagesWith(tokens[i]), std::back_inserter(both));
      numbers = std::move(both);
    }
    for (const auto number : numbers) {
      if (part.positions[number] != nowhere) {
        visit(part, number);
      }
    }
  }
}

// Ids and not messages are intersected: several messages of one id may hold the tokens between them.
std::unordered_set<Text> FullTextSearchIndex::matchingMessageIDs(std::string_view query) const {
  const auto tokens = tokenize(query);
  std::unordered_set<Text> ids;
  for (std::size_t i = 0; i < tokens.size() && (i == 0 || !ids.empty()); ++i) {
    std::unordered_set<Text> holding;
    forEachMatch(std::span(tokens).subspan(i, 1), [&](const Part& part, std::uint32_t number) {
      const Text& id = part.segment->messageIDs()[number];
      if (i == 0 || ids.contains(id)) {
        holding.insert(id);
      }
    });
    ids = std::move(holding);
  }
  return ids;
}

std::vector<std::uint32_t> FullTextSearchIndex::positionsMatching(std::string_view query) const {
  std::vector<std::uint32_t> positions;
  forEachMatch(tokenize(query), [&positions](const Part& part, std::uint32_t number) {
    positions.push_back(part.positions[number]);
  });
  sortPositions(positions);
  return positions;
}

}  // namespace tidewrack
