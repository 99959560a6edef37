#include "screen/message_filter.h"

#include <algorithm>

#include "platform/failure.h"

namespace tidewrack {
namespace {

constexpr std::uint32_t chunkSize = SharedMessageList::chunkSize;
constexpr std::size_t fewChanges = 256;

}  // namespace

ScopeLibrary scopeLibrary(const std::optional<SidebarSelection>& selection, const MessageFacts& facts) {
  const auto* library = selection ? selection->as<SidebarSelection::Library>() : nullptr;
  if (library == nullptr) {
    return std::nullopt;
  }
  return facts.libraries().find(library->id).value_or(MessageFacts::none);
}

MessageFilter::MessageFilter(const std::optional<SidebarSelection>& selection, const SearchFilters& filters,
                             const MessageFacts& facts)
    : filters_(filters), facts_(facts) {
  if (selection) {
    takeSelection(*selection);
  }
  takeFilters();
}

void MessageFilter::takeSelection(const SidebarSelection& selection) {
  const LabelSets& labels = facts_.labels();
  const auto keepLabels = [&](auto keepsSet) {
    keptLabels_.resize(std::max<std::size_t>(labels.size(), 1));  // Never empty: labels matter.
    for (LabelSets::Number number = 0; number < labels.size(); ++number) {
      keptLabels_[number] = keepsSet(number) ? 1 : 0;
    }
  };
  if (const auto* chosen = selection.as<SidebarSelection::Mailbox>()) {
    const auto bit = 1U << static_cast<unsigned>(chosen->mailbox);
    keepLabels([&](LabelSets::Number number) { return (labels[number].matchingMailboxes & bit) != 0; });
  } else if (const auto* tab = selection.as<SidebarSelection::GmailCategory>()) {
    const auto bit = 1U << static_cast<unsigned>(tab->category);
    keepLabels([&](LabelSets::Number number) { return (labels[number].matchingCategories & bit) != 0; });
  } else if (const auto* label = selection.as<SidebarSelection::Label>()) {
    const auto isBelow = labels.setsWithLabelAtOrBelow(label->path);
    keepLabels([&](LabelSets::Number number) { return isBelow[number]; });
  } else if (const auto* category = selection.as<SidebarSelection::Category>()) {
    // A category that nobody has is a number that nobody has; `none` is that of the messages without one.
    category_ = facts_.categories().find(category->name).value_or(MessageFacts::none - 1);
  } else {
    library_ = scopeLibrary(selection, facts_);
  }
  isOpen_ = keptLabels_.empty() && !category_ && !library_;
}

void MessageFilter::takeFilters() {
  isOpen_ = isOpen_ && !filters_.isActive();
  if (filters_.attachmentFilter == AttachmentFilter::withAttachments) {
    wantedFlags_ |= MessageFacts::hasAttachments;
  } else if (filters_.attachmentFilter == AttachmentFilter::withoutAttachments) {
    unwantedFlags_ |= MessageFacts::hasAttachments;
  }
  wantedFlags_ |= filters_.onlyInConversations ? MessageFacts::hasConversation : std::uint8_t{0};
  wantedFlags_ |= filters_.onlyHTML ? MessageFacts::hasHTML : std::uint8_t{0};
  switch (filters_.sizeFilter) {
    case SizeFilter::any:
      break;
    case SizeFilter::small:
      unwantedFlags_ |= MessageFacts::isMedium | MessageFacts::isLarge;
      break;
    case SizeFilter::medium:
      wantedFlags_ |= MessageFacts::isMedium;
      break;
    case SizeFilter::large:
      wantedFlags_ |= MessageFacts::isLarge;
      break;
  }
}

Positions MessageFilter::positions() const {
  Positions kept(facts_.size());
  std::size_t count = 0;
  std::uint32_t first = 0;
  for (const auto& chunk : facts_.chunks()) {
    for (std::uint32_t i = 0; i < chunk->size; ++i) {
      kept[count] = first + i;  // Written over by the next one unless it stays.
      count += keeps(*chunk, i) ? 1 : 0;
    }
    first += chunkSize;
  }
  kept.resize(count);
  return kept;
}

std::shared_ptr<const TextOutcomes> TextOutcomes::carriedOver(
    const std::shared_ptr<const TextOutcomes>& earlier, const SearchFilters& textFilters,
    const MessageFacts& facts) {
  const bool isOfUse = earlier && earlier->filters == textFilters;
  if (isOfUse && earlier->messages.isSame(facts.list())) {
    return earlier;
  }
  auto outcomes = std::make_shared<TextOutcomes>();
  outcomes->filters = textFilters;
  outcomes->messages = facts.list();
  const auto changes =
      isOfUse ? SharedMessageList::differences(earlier->messages, facts.list(), fewChanges) : std::nullopt;
  if (changes) {
    outcomes->outcomes = earlier->outcomes;
    for (const auto position : *changes) {
      outcomes->outcomes[position] = unknown;
    }
  } else {
    outcomes->outcomes.assign(facts.size(), unknown);
    for (std::size_t i = 0; isOfUse && i < earlier->outcomes.size(); ++i) {
      const auto& message = earlier->messages[i];
      const auto position = earlier->outcomes[i] != unknown ? facts.positionOf(message->id) : std::nullopt;
      if (position && facts.list()[*position] == message) {
        outcomes->outcomes[*position] = earlier->outcomes[i];
      }
    }
  }
  outcomes->unknownCount =
      static_cast<std::size_t>(std::ranges::count(outcomes->outcomes, std::uint8_t{unknown}));
  return outcomes;
}

bool keepPassing(Positions& positions, std::shared_ptr<const TextOutcomes>& outcomes,
                 const std::atomic<bool>* cancelled) {
  std::shared_ptr<TextOutcomes> learned;
  bool isComplete = true;
  std::size_t kept = 0;
  for (const auto position : positions) {
    auto outcome = (learned ? *learned : *outcomes).outcomes[position];
    if (outcome == TextOutcomes::unknown) {
      if (cancelled != nullptr && cancelled->load(std::memory_order_relaxed)) {
        isComplete = false;
        break;
      }
      if (!learned) {
        learned = std::make_shared<TextOutcomes>(*outcomes);
      }
      try {
        outcome = learned->filters.matches(*learned->messages[position]) ? TextOutcomes::passes
                                                                         : TextOutcomes::fails;
        learned->outcomes[position] = outcome;
        --learned->unknownCount;
      } catch (const Failure&) {
        // Its stored body has gone meanwhile; the list that replaces this one is on its way.
        outcome = TextOutcomes::fails;
      }
    }
    if (outcome == TextOutcomes::passes) {
      positions[kept++] = position;
    }
  }
  positions.resize(kept);
  if (learned) {
    outcomes = std::move(learned);
  }
  return isComplete;
}

}  // namespace tidewrack
