#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "classify/label_classification.h"
#include "screen/message_facts.h"

namespace tidewrack {

/// Number of messages by category, by library id.
using CategoryCounts = std::unordered_map<Text, std::int64_t>;
using LibraryCounts = std::unordered_map<Text, std::int64_t>;

/// Number of messages by conversationID. A map with four bytes a conversation, over a table that all scopes
/// of a list share.
class ConversationCounts {
 public:
  ConversationCounts() = default;
  ConversationCounts(std::shared_ptr<const TextNumbers> conversations, std::vector<std::uint32_t> counts)
      : conversations_(std::move(conversations)), counts_(std::move(counts)) {}
  ConversationCounts(std::initializer_list<std::pair<Text, std::uint32_t>> counts);

  /// Messages of a conversation; 0 for an unknown one.
  [[nodiscard]] std::int64_t of(const Text& conversationID) const;
  [[nodiscard]] bool empty() const;
  /// Whether both count the same, whatever tables they stand on.
  friend bool operator==(const ConversationCounts& a, const ConversationCounts& b) { return a.isEqual(b); }

 private:
  [[nodiscard]] bool isEqual(const ConversationCounts& other) const;

  std::shared_ptr<const TextNumbers> conversations_ = std::make_shared<TextNumbers>();
  std::vector<std::uint32_t> counts_;
};

/// What is counted over the messages of a scope: one library, or all messages. Copying is cheap; nothing in
/// it is ever null.
struct ScopeCounts {
  std::shared_ptr<const LabelTally> labelTally = std::make_shared<LabelTally>();
  std::shared_ptr<const LabelClassification> labelClassification = std::make_shared<LabelClassification>();
  std::shared_ptr<const ConversationCounts> conversations = std::make_shared<ConversationCounts>();
  std::shared_ptr<const CategoryCounts> categories = std::make_shared<CategoryCounts>();
};

/// Which messages of a list are in scope, told by the number of their library; nothing for all of them.
/// MessageFacts::none for a library that no message has.
using ScopeLibrary = std::optional<std::uint32_t>;

/// Counts a scope. Goes through the facts once.
ScopeCounts countScope(const MessageFacts& facts, ScopeLibrary library);
/// The counts of the same scope once the messages at `positions` are those of `after`, which follows from
/// `before` by MessageFacts::replacing. Costs what has changed and the tree of labels where labels have.
ScopeCounts recountScope(const ScopeCounts& counts, const MessageFacts& before, const MessageFacts& after,
                         const Positions& positions, ScopeLibrary library);
LibraryCounts countLibraries(const MessageFacts& facts);

}  // namespace tidewrack
