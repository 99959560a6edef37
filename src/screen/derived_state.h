#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "classify/full_text_search_index.h"
#include "classify/search_filters.h"
#include "screen/message_facts.h"
#include "screen/message_filter.h"
#include "screen/scope_counts.h"
#include "screen/shared_message_list.h"
#include "screen/sidebar.h"

namespace tidewrack {

/// Everything that the derived state follows. Copying is cheap.
struct DerivedInput {
  SharedMessageList messages;
  std::optional<SidebarSelection> sidebarSelection;
  SearchFilters advancedFilters;
  std::string searchText;
  FullTextSearchIndex searchIndex;
  SharedMessageList indexedMessages;  ///< The list whose places the index knows.
};

/// What the views show of the loaded messages, and what the next derivation goes on from. Copying is cheap.
struct DerivedState {
  SharedMessageList filteredMessages;
  ScopeCounts counts;  ///< Over the scope of the sidebar selection.
  std::shared_ptr<const LibraryCounts> countsByLibrary = std::make_shared<LibraryCounts>();

  std::shared_ptr<const MessageFacts> facts;         ///< Of all messages; null before the first derivation.
  ScopeCounts allCounts;                             ///< Over all messages.
  std::shared_ptr<const TextOutcomes> textOutcomes;  ///< Null where no filter has looked into texts yet.
  bool isComplete = true;  ///< False when the derivation was cancelled; then only `textOutcomes` is of use.
};

/// Whether the two inputs surely give the same result. Compares lists by identity.
bool isSameInput(const DerivedInput& a, const DerivedInput& b);
/// Whether the two inputs ask for the same of their messages: selection, filters and search text.
bool isSameQuestion(const DerivedInput& a, const DerivedInput& b);

/// The messages of the selected library; all messages under any other selection.
SharedMessageList scopedMessages(const DerivedInput& input);

/// The derived state of an input: filteredMessages is what remains of the scope after the sidebar's label or
/// category, the advanced filters and the search text, in the order of `messages`. It follows from `earlier`,
/// the state of `earlierInput`, at the cost of what has changed; the result is the same as from nothing. Ends
/// early once `cancelled`, which may be null, becomes true. Pure; safe from any thread.
DerivedState deriveState(const DerivedInput& input, const DerivedInput& earlierInput,
                         const DerivedState& earlier, const std::atomic<bool>* cancelled = nullptr);
DerivedState deriveState(const DerivedInput& input);

/// Roughly how long deriveState takes, in looks at the facts of a message (some nanoseconds each): making the
/// facts of a message, looking into its texts and reading its bodies count as many.
std::size_t derivationCost(const DerivedInput& input, const DerivedInput& earlierInput,
                           const DerivedState& earlier);

}  // namespace tidewrack
