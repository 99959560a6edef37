#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "classify/search_filters.h"
#include "screen/message_facts.h"
#include "screen/scope_counts.h"
#include "screen/sidebar.h"

namespace tidewrack {

/// The sidebar's selection and the advanced filters as far as the facts of a message decide them: a look into
/// a small table and a few comparisons a message. Safe from any thread.
class MessageFilter {
 public:
  /// Keeps references to all three.
  MessageFilter(const std::optional<SidebarSelection>& selection, const SearchFilters& filters,
                const MessageFacts& facts);

  /// Whether it lets every message pass.
  [[nodiscard]] bool isOpen() const { return isOpen_; }
  [[nodiscard]] bool keeps(std::uint32_t position) const {
    return isOpen_ || keeps(facts_.chunkOf(position),
                            position % static_cast<std::uint32_t>(SharedMessageList::chunkSize));
  }
  /// The messages that pass.
  [[nodiscard]] Positions positions() const;

 private:
  [[nodiscard]] bool keeps(const MessageFacts::Chunk& chunk, std::uint32_t i) const {
    const std::uint8_t flags = chunk.flags[i];
    return (!library_ || chunk.libraries[i] == *library_) &&
           (!category_ || chunk.categories[i] == *category_) && (flags & wantedFlags_) == wantedFlags_ &&
           (flags & unwantedFlags_) == 0 && (keptLabels_.empty() || keptLabels_[chunk.labels[i]] != 0) &&
           (!filters_.useDateFilter || (flags & MessageFacts::hasDate) == 0 ||
            (chunk.dates[i] >= filters_.startDate && chunk.dates[i] <= filters_.endDate));
  }
  void takeSelection(const SidebarSelection& selection);
  void takeFilters();

  const SearchFilters& filters_;
  const MessageFacts& facts_;
  bool isOpen_ = true;
  ScopeLibrary library_;
  std::optional<std::uint32_t> category_;
  std::uint8_t wantedFlags_ = 0;
  std::uint8_t unwantedFlags_ = 0;
  std::vector<std::uint8_t> keptLabels_;  ///< By list of labels; empty where labels do not matter.
};

/// The number of the selected library; nothing when the selection is no library, MessageFacts::none when no
/// message is of it.
ScopeLibrary scopeLibrary(const std::optional<SidebarSelection>& selection, const MessageFacts& facts);

/// What the filters that look into texts and bodies have said of each message of a list. It is kept from one
/// state to the next, so that a body is read once while the filters stay.
struct TextOutcomes {
  enum Outcome : std::uint8_t { unknown, passes, fails };

  SearchFilters filters;  ///< Only those that look into texts.
  SharedMessageList messages;
  std::vector<std::uint8_t> outcomes;  ///< One a message.
  std::size_t unknownCount = 0;

  /// What is known for another list: what `earlier`, which may be null, says of messages that are in both.
  static std::shared_ptr<const TextOutcomes> carriedOver(const std::shared_ptr<const TextOutcomes>& earlier,
                                                         const SearchFilters& textFilters,
                                                         const MessageFacts& facts);
};

/// Keeps those of `positions` whose messages pass the text filters, and puts what it learns into `outcomes`.
/// Ends early, with false, once `cancelled` (which may be null) becomes true. A body that cannot be read
/// does not pass.
bool keepPassing(Positions& positions, std::shared_ptr<const TextOutcomes>& outcomes,
                 const std::atomic<bool>* cancelled);

}  // namespace tidewrack
