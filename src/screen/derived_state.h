#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "classify/full_text_search_index.h"
#include "classify/label_classification.h"
#include "classify/search_filters.h"
#include "screen/shared_message_list.h"
#include "screen/sidebar.h"

namespace tidewrack {

/// Number of messages by conversationID, by category, by library id.
using ConversationCounts = std::unordered_map<Text, std::int64_t>;
using CategoryCounts = std::unordered_map<Text, std::int64_t>;
using LibraryCounts = std::unordered_map<Text, std::int64_t>;

/// Everything that the derived state follows. Copying is cheap.
struct DerivedInput {
  SharedMessageList messages;
  std::optional<SidebarSelection> sidebarSelection;
  SearchFilters advancedFilters;
  std::string searchText;
  FullTextSearchIndex searchIndex;
  SharedMessageList indexedMessages;  ///< The list that the index was built from.
};

/// What the views show of the loaded messages. Copying is cheap but for the classification; nothing in it
/// is ever null.
struct DerivedState {
  SharedMessageList filteredMessages;
  std::shared_ptr<const ConversationCounts> conversationCounts = std::make_shared<ConversationCounts>();
  LabelClassification labelClassification;
  std::shared_ptr<const CategoryCounts> categoryCounts = std::make_shared<CategoryCounts>();
  std::shared_ptr<const LibraryCounts> libraryCounts = std::make_shared<LibraryCounts>();
};

/// Whether the two inputs surely give the same result. Compares lists by identity.
bool isSameInput(const DerivedInput& a, const DerivedInput& b);

/// The messages of the selected library; all messages under any other selection.
SharedMessageList scopedMessages(const DerivedInput& input);
/// What remains of the scope after the sidebar's label or category, the advanced filters and the search
/// text, in the order of `messages`.
SharedMessageList filteredMessages(const DerivedInput& input, const SharedMessageList& scope);

/// The derived state of an input. Whatever `input` shares with `earlierInput` is taken over from `earlier`
/// instead of being worked out again; the result is the same as without. Pure; safe from any thread.
DerivedState deriveState(const DerivedInput& input, const DerivedInput& earlierInput,
                         const DerivedState& earlier);
DerivedState deriveState(const DerivedInput& input);

/// Roughly how many messages deriveState looks at; one whose body must be read counts as a hundred.
std::size_t derivationCost(const DerivedInput& input, const DerivedInput& earlierInput);

}  // namespace tidewrack
