#include "classify/full_text_search_index.h"

#include <algorithm>
#include <iterator>

#include "classify/token_segment.h"
#include "classify/tokenizer.h"

namespace tidewrack {

struct FullTextSearchIndex::Data {
  std::shared_ptr<const TokenSegment> segment;
};

FullTextSearchIndex::FullTextSearchIndex() = default;

void FullTextSearchIndex::build(const MessageList& messages) {
  data_ = std::make_shared<Data>(Data{TokenSegment::build(messages)});
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
  const SearchTokenEntry* previous = nullptr;
  for (const auto* entry : byMessage) {
    if (previous == nullptr || previous->messageID != entry->messageID) {
      builder.beginMessage(entry->messageID);
    }
    builder.addToken(entry->token);
    previous = entry;
  }
  data_ = std::make_shared<Data>(Data{builder.finish()});
}

std::vector<SearchTokenEntry> FullTextSearchIndex::entries() const {
  std::vector<SearchTokenEntry> entries;
  if (!data_) {
    return entries;
  }
  const auto& segment = *data_->segment;
  entries.reserve(segment.pairCount());
  for (std::size_t i = 0; i < segment.tokenCount(); ++i) {
    const Text token = segment.token(i);
    for (const auto number : segment.messagesWith(i)) {
      entries.push_back({token, segment.messageIDs()[number]});
    }
  }
  return entries;
}

bool FullTextSearchIndex::empty() const {
  return !data_ || data_->segment->pairCount() == 0;
}

std::vector<std::string> FullTextSearchIndex::tokenize(std::string_view text) {
  std::vector<std::string> tokens;
  Tokenizer().forEachToken(text, [&tokens](std::string_view token) { tokens.emplace_back(token); });
  return tokens;
}

std::unordered_set<Text> FullTextSearchIndex::matchingMessageIDs(std::string_view query) const {
  const auto tokens = tokenize(query);
  if (tokens.empty() || !data_) {
    return {};
  }
  const auto& segment = *data_->segment;
  auto numbers = segment.messagesWith(tokens.front());
  for (std::size_t i = 1; i < tokens.size() && !numbers.empty(); ++i) {
    std::vector<std::uint32_t> both;
    std::ranges::set_intersection(numbers, segment.messagesWith(tokens[i]), std::back_inserter(both));
    numbers = std::move(both);
  }
  std::unordered_set<Text> ids;
  for (const auto number : numbers) {
    ids.insert(segment.messageIDs()[number]);
  }
  return ids;
}

}  // namespace tidewrack
