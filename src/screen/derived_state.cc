#include "screen/derived_state.h"

#include <algorithm>
#include <utility>

#include "platform/unicode.h"

namespace tidewrack {
namespace {

// In looks at the facts of a message.
constexpr std::size_t costOfMakingFacts = 100;
constexpr std::size_t costOfMatchingText = 100;
constexpr std::size_t costOfReadingABody = 10'000;
// A list that differs from the earlier one in more messages is taken as a new one.
constexpr std::size_t mostChanges = 256;

std::string_view trimmedSearch(const DerivedInput& input) {
  return trimWhitespaceAndNewlines(input.searchText);
}

// Whether the search finds the same in both, apart from messages that differ.
bool hasSameHits(const DerivedInput& a, const DerivedInput& b) {
  const auto search = trimmedSearch(a);
  return search == trimmedSearch(b) && (search.empty() || a.searchIndex == b.searchIndex);
}

// The facts of the input's list, and where they differ from the earlier ones; nothing when they are new.
struct Facts {
  std::shared_ptr<const MessageFacts> facts;
  std::optional<Positions> changes;
};

std::optional<Positions> changesSince(const DerivedInput& input, const DerivedState& earlier) {
  return earlier.facts ? SharedMessageList::differences(earlier.facts->list(), input.messages, mostChanges)
                       : std::nullopt;
}

Facts factsOf(const DerivedInput& input, const DerivedState& earlier) {
  if (auto changes = changesSince(input, earlier)) {
    if (changes->empty() && earlier.facts->list().isSame(input.messages)) {
      return {earlier.facts, std::move(changes)};
    }
    if (auto facts = earlier.facts->replacing(input.messages, *changes)) {
      return {std::move(facts), std::move(changes)};
    }
  }
  return {MessageFacts::of(input.messages), std::nullopt};
}

/// Works out the filtered list of one input.
class Filtering {
 public:
  Filtering(const DerivedInput& input, const MessageFacts& facts,
            std::shared_ptr<const TextOutcomes> earlierOutcomes, const std::atomic<bool>* cancelled)
      : input_(input),
        facts_(facts),
        filter_(input.sidebarSelection, input.advancedFilters, facts),
        outcomes_(std::move(earlierOutcomes)),
        cancelled_(cancelled) {
    const SearchFilters textFilters = input.advancedFilters.textFilters();
    looksIntoTexts_ = textFilters.isActive();
    if (looksIntoTexts_) {
      outcomes_ = TextOutcomes::carriedOver(outcomes_, textFilters, facts);
    }
  }

  /// The list from nothing.
  SharedMessageList all() {
    const auto search = trimmedSearch(input_);
    if (search.empty() && filter_.isOpen()) {
      return input_.messages;
    }
    Positions kept;
    if (search.empty()) {
      kept = filter_.positions();
    } else {
      // The index tells places by text. A hit stands for its id, so where ids repeat they are asked for.
      kept = input_.indexedMessages.isSame(input_.messages) && facts_.repeated().empty()
                 ? input_.searchIndex.positionsMatching(search)
                 : facts_.positionsOf(input_.searchIndex.matchingMessageIDs(search));
      if (!filter_.isOpen()) {
        std::erase_if(kept, [&](std::uint32_t position) { return !filter_.keeps(position); });
      }
    }
    if (looksIntoTexts_) {
      isComplete_ = keepPassing(kept, outcomes_, cancelled_);
    }
    return listOf(std::make_shared<Positions>(std::move(kept)));
  }

  /// The same, when `before` was the list of the same question and only the messages at `changes` are others.
  /// Nothing where that does not tell.
  std::optional<SharedMessageList> following(const SharedMessageList& before, const MessageFacts& factsBefore,
                                             const Positions& changes) {
    Positions coming;
    Positions going;
    for (const auto position : changes) {
      const bool was = !before.positions() || std::ranges::binary_search(*before.positions(), position);
      const bool passes = keeps(position);
      // A message that was not there may have been kept out by the filters, or have been no hit.
      if (!was && passes && !trimmedSearch(input_).empty()) {
        if (!MessageFilter(input_.sidebarSelection, input_.advancedFilters, factsBefore).keeps(position) ||
            looksIntoTexts_) {
          return std::nullopt;
        }
        continue;
      }
      if (was != passes) {
        (passes ? coming : going).push_back(position);
      }
    }
    if (coming.empty() && going.empty()) {
      return before.positions() ? SharedMessageList::part(input_.messages, before.positions())
                                : input_.messages;
    }
    if (!before.positions()) {
      return std::nullopt;
    }
    auto kept = std::make_shared<Positions>();
    kept->reserve(before.size() + coming.size());
    std::ranges::set_difference(*before.positions(), going, std::back_inserter(*kept));
    const auto middle = static_cast<std::ptrdiff_t>(kept->size());
    kept->insert(kept->end(), coming.begin(), coming.end());
    std::inplace_merge(kept->begin(), kept->begin() + middle, kept->end());
    return listOf(std::move(kept));
  }

  [[nodiscard]] bool isComplete() const { return isComplete_; }
  [[nodiscard]] const std::shared_ptr<const TextOutcomes>& outcomes() const { return outcomes_; }

 private:
  bool keeps(std::uint32_t position) {
    if (!filter_.keeps(position)) {
      return false;
    }
    Positions one = {position};
    return !looksIntoTexts_ || (keepPassing(one, outcomes_, nullptr) && !one.empty());
  }

  [[nodiscard]] SharedMessageList listOf(std::shared_ptr<Positions> positions) const {
    return positions->size() == input_.messages.size()
               ? input_.messages
               : SharedMessageList::part(input_.messages, std::move(positions));
  }

  const DerivedInput& input_;
  const MessageFacts& facts_;
  MessageFilter filter_;
  std::shared_ptr<const TextOutcomes> outcomes_;
  const std::atomic<bool>* cancelled_;
  bool looksIntoTexts_ = false;
  bool isComplete_ = true;
};

}  // namespace

bool isSameQuestion(const DerivedInput& a, const DerivedInput& b) {
  return a.sidebarSelection == b.sidebarSelection && a.advancedFilters == b.advancedFilters &&
         trimmedSearch(a) == trimmedSearch(b);
}

bool isSameInput(const DerivedInput& a, const DerivedInput& b) {
  return a.messages.isSame(b.messages) && isSameQuestion(a, b) && hasSameHits(a, b);
}

SharedMessageList scopedMessages(const DerivedInput& input) {
  DerivedInput scope;
  scope.messages = input.messages;
  if (input.sidebarSelection && input.sidebarSelection->as<SidebarSelection::Library>() != nullptr) {
    scope.sidebarSelection = input.sidebarSelection;
  }
  return deriveState(scope).filteredMessages;
}

DerivedState deriveState(const DerivedInput& input, const DerivedInput& earlierInput,
                         const DerivedState& earlier, const std::atomic<bool>* cancelled) {
  DerivedState state;
  auto [facts, changes] = factsOf(input, earlier);
  state.facts = facts;
  const ScopeLibrary library = scopeLibrary(input.sidebarSelection, *facts);
  if (changes) {
    state.countsByLibrary = earlier.countsByLibrary;
    state.allCounts = recountScope(earlier.allCounts, *earlier.facts, *facts, *changes, std::nullopt);
  } else {
    state.countsByLibrary = std::make_shared<LibraryCounts>(countLibraries(*facts));
    state.allCounts = countScope(*facts, std::nullopt);
  }
  if (!library) {
    state.counts = state.allCounts;
  } else if (changes && library == scopeLibrary(earlierInput.sidebarSelection, *facts)) {
    state.counts = recountScope(earlier.counts, *earlier.facts, *facts, *changes, library);
  } else {
    state.counts = countScope(*facts, library);
  }

  Filtering filtering(input, *facts, earlier.textOutcomes, cancelled);
  std::optional<SharedMessageList> list;
  if (changes && earlier.isComplete && isSameQuestion(input, earlierInput) &&
      hasSameHits(input, earlierInput)) {
    list = filtering.following(earlier.filteredMessages, *earlier.facts, *changes);
  }
  state.filteredMessages = list ? *std::move(list) : filtering.all();
  state.isComplete = filtering.isComplete();
  state.textOutcomes = filtering.outcomes();
  return state;
}

DerivedState deriveState(const DerivedInput& input) {
  return deriveState(input, DerivedInput(), DerivedState());
}

std::size_t derivationCost(const DerivedInput& input, const DerivedInput& earlierInput,
                           const DerivedState& earlier) {
  const std::size_t all = input.messages.size();
  const auto changes = changesSince(input, earlier);
  if (!changes) {
    return all * costOfMakingFacts;
  }
  std::size_t cost = changes->size();
  const SearchFilters textFilters = input.advancedFilters.textFilters();
  if (textFilters.isActive()) {
    const bool isKnown =
        earlier.textOutcomes && earlier.textOutcomes->filters == textFilters &&
        SharedMessageList::differences(earlier.textOutcomes->messages, input.messages, mostChanges);
    const std::size_t unknown = isKnown ? earlier.textOutcomes->unknownCount + changes->size() : all;
    cost += unknown * (textFilters.bodyQuery.empty() ? costOfMatchingText : costOfReadingABody);
  }
  if (!isSameQuestion(input, earlierInput) || !hasSameHits(input, earlierInput)) {
    cost += all;
  }
  return cost;
}

}  // namespace tidewrack
