#include "screen/scope_counts.h"

#include <algorithm>

namespace tidewrack {
namespace {

bool isInScope(const MessageFacts& facts, std::uint32_t position, ScopeLibrary library) {
  return !library || facts.chunkOf(position).libraries[position % SharedMessageList::chunkSize] == *library;
}

std::vector<LabelTally::Repeated> repeatedInScope(const MessageFacts& facts, ScopeLibrary library) {
  std::vector<LabelTally::Repeated> repeated;
  for (const auto position : facts.repeated()) {
    if (isInScope(facts, position, library)) {
      repeated.push_back({facts.list()[position]->id,
                          facts.chunkOf(position).labels[position % SharedMessageList::chunkSize]});
    }
  }
  return repeated;
}

bool countsAsCategory(const MessageFacts& facts, std::uint32_t category) {
  return category != MessageFacts::none && !facts.categories()[category].empty();
}

}  // namespace

ConversationCounts::ConversationCounts(std::initializer_list<std::pair<Text, std::uint32_t>> counts) {
  auto table = std::make_shared<TextNumbers>();
  for (const auto& [conversation, count] : counts) {
    const auto number = table->numberOf(conversation);
    counts_.resize(std::max<std::size_t>(counts_.size(), number + 1));
    counts_[number] = count;
  }
  conversations_ = std::move(table);
}

std::int64_t ConversationCounts::of(const Text& conversationID) const {
  const auto number = conversations_->find(conversationID);
  return number && *number < counts_.size() ? counts_[*number] : 0;
}

bool ConversationCounts::empty() const {
  return std::ranges::all_of(counts_, [](std::uint32_t count) { return count == 0; });
}

bool ConversationCounts::isEqual(const ConversationCounts& other) const {
  if (conversations_ == other.conversations_) {
    return counts_ == other.counts_;
  }
  const auto holdsAllOf = [](const ConversationCounts& a, const ConversationCounts& b) {
    for (TextNumbers::Number number = 0; number < b.counts_.size(); ++number) {
      if (b.counts_[number] != 0 && a.of((*b.conversations_)[number]) != b.counts_[number]) {
        return false;
      }
    }
    return true;
  };
  return holdsAllOf(*this, other) && holdsAllOf(other, *this);
}

ScopeCounts countScope(const MessageFacts& facts, ScopeLibrary library) {
  std::vector<std::int64_t> labels(facts.labels().size());
  std::vector<std::uint32_t> conversations(facts.conversations()->size());
  std::vector<std::int64_t> categories(facts.categories().size());
  for (const auto& chunk : facts.chunks()) {
    for (std::uint32_t i = 0; i < chunk->size; ++i) {
      if (library && chunk->libraries[i] != *library) {
        continue;
      }
      ++labels[chunk->labels[i]];
      ++conversations[chunk->conversations[i]];
      if (chunk->categories[i] != MessageFacts::none) {
        ++categories[chunk->categories[i]];
      }
    }
  }
  auto tally = std::make_shared<LabelTally>();
  for (LabelSets::Number number = 0; number < labels.size(); ++number) {
    if (labels[number] > 0) {
      tally->add(facts.labels(), number, labels[number]);
    }
  }
  auto categoryCounts = std::make_shared<CategoryCounts>();
  for (std::uint32_t number = 0; number < categories.size(); ++number) {
    if (categories[number] > 0 && countsAsCategory(facts, number)) {
      categoryCounts->emplace(facts.categories()[number], categories[number]);
    }
  }
  ScopeCounts counts;
  counts.labelClassification = std::make_shared<LabelClassification>(
      tally->classification(facts.labels(), repeatedInScope(facts, library)));
  counts.labelTally = std::move(tally);
  counts.conversations =
      std::make_shared<ConversationCounts>(facts.conversations(), std::move(conversations));
  counts.categories = std::move(categoryCounts);
  return counts;
}

ScopeCounts recountScope(const ScopeCounts& counts, const MessageFacts& before, const MessageFacts& after,
                         const Positions& positions, ScopeLibrary library) {
  ScopeCounts changed = counts;  // Conversations and libraries stay as they are.
  std::shared_ptr<LabelTally> tally;
  std::shared_ptr<CategoryCounts> categories;
  for (const auto position : positions) {
    if (!isInScope(after, position, library)) {
      continue;
    }
    const std::size_t i = position % SharedMessageList::chunkSize;
    const auto& from = before.chunkOf(position);
    const auto& to = after.chunkOf(position);
    if (from.labels[i] != to.labels[i]) {
      if (!tally) {
        tally = std::make_shared<LabelTally>(*counts.labelTally);
      }
      tally->add(after.labels(), from.labels[i], -1);
      tally->add(after.labels(), to.labels[i], 1);
    }
    if (from.categories[i] != to.categories[i]) {
      if (!categories) {
        categories = std::make_shared<CategoryCounts>(*counts.categories);
      }
      if (countsAsCategory(after, from.categories[i])) {
        const auto left = categories->find(after.categories()[from.categories[i]]);
        if (--left->second == 0) {
          categories->erase(left);
        }
      }
      if (countsAsCategory(after, to.categories[i])) {
        ++(*categories)[after.categories()[to.categories[i]]];
      }
    }
  }
  if (tally) {
    changed.labelClassification = std::make_shared<LabelClassification>(
        tally->classification(after.labels(), repeatedInScope(after, library)));
    changed.labelTally = std::move(tally);
  }
  if (categories) {
    changed.categories = std::move(categories);
  }
  return changed;
}

LibraryCounts countLibraries(const MessageFacts& facts) {
  std::vector<std::int64_t> counts(facts.libraries().size());
  for (const auto& chunk : facts.chunks()) {
    for (std::uint32_t i = 0; i < chunk->size; ++i) {
      ++counts[chunk->libraries[i]];
    }
  }
  LibraryCounts result;
  for (std::uint32_t number = 0; number < counts.size(); ++number) {
    result.emplace(facts.libraries()[number], counts[number]);
  }
  return result;
}

}  // namespace tidewrack
