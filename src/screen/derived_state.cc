#include "screen/derived_state.h"

#include <algorithm>
#include <unordered_set>

#include "platform/failure.h"
#include "platform/unicode.h"

namespace tidewrack {

namespace {

constexpr std::size_t costOfReadingABody = 100;

const Text* selectedLibrary(const DerivedInput& input) {
  const auto* library =
      input.sidebarSelection ? input.sidebarSelection->as<SidebarSelection::Library>() : nullptr;
  return library ? &library->id : nullptr;
}

std::string_view trimmedSearch(const DerivedInput& input) {
  return trimWhitespaceAndNewlines(input.searchText);
}

bool isSameScope(const DerivedInput& a, const DerivedInput& b) {
  const Text* libraryA = selectedLibrary(a);
  const Text* libraryB = selectedLibrary(b);
  const bool isSameLibrary = libraryA && libraryB ? *libraryA == *libraryB : libraryA == libraryB;
  return isSameLibrary && a.messages.isSame(b.messages);
}

// Whether the sidebar or the advanced filters narrow the scope.
bool narrowsScope(const DerivedInput& input) {
  const bool isScopeAlone = !input.sidebarSelection ||
                            input.sidebarSelection->as<SidebarSelection::Library>() ||
                            input.sidebarSelection->as<SidebarSelection::AllLibraries>();
  return !isScopeAlone || input.advancedFilters.isActive();
}

// Decides for one message after the other. The label meanings are looked up once a label.
class MessageFilter {
 public:
  explicit MessageFilter(const DerivedInput& input)
      : selection_(input.sidebarSelection), filters_(input.advancedFilters), isActive_(filters_.isActive()) {}

  bool keeps(const EmailMessage& message) {
    return passesSidebar(message) && (!isActive_ || passesFilters(message));
  }

 private:
  bool passesSidebar(const EmailMessage& message) {
    if (!selection_) {
      return true;
    }
    if (const auto* mailbox = selection_->as<SidebarSelection::Mailbox>()) {
      return std::ranges::any_of(message.labels,
                                 [&](const Text& label) { return mailboxOf(label) == mailbox->mailbox; });
    }
    if (const auto* category = selection_->as<SidebarSelection::GmailCategory>()) {
      return std::ranges::any_of(message.labels,
                                 [&](const Text& label) { return categoryOf(label) == category->category; });
    }
    if (const auto* label = selection_->as<SidebarSelection::Label>()) {
      return std::ranges::any_of(message.labels,
                                 [&](const Text& candidate) { return isAtOrBelow(candidate, label->path); });
    }
    if (const auto* category = selection_->as<SidebarSelection::Category>()) {
      return message.category && *message.category == category->name;
    }
    return true;
  }

  bool passesFilters(const EmailMessage& message) const {
    try {
      return filters_.matches(message);
    } catch (const Failure&) {
      return false;  // Its stored body has gone meanwhile; the list that replaces this one is on its way.
    }
  }

  // The matchers themselves, without the precedence of noise: a label is asked for its mailbox or tab alone.
  std::optional<GmailSystemMailbox> mailboxOf(const Text& label) {
    const auto found = mailboxes_.find(label);
    return found != mailboxes_.end() ? found->second
                                     : mailboxes_.emplace(label, matchingSystemMailbox(label)).first->second;
  }
  std::optional<GmailCategoryFolder> categoryOf(const Text& label) {
    const auto found = categories_.find(label);
    return found != categories_.end()
               ? found->second
               : categories_.emplace(label, matchingCategoryFolder(label)).first->second;
  }

  bool isAtOrBelow(const Text& label, const Text& path) {
    const LabelMeaning& meaning = resolver_.resolve(label);
    if (meaning.kind != LabelMeaning::Kind::user || meaning.filterText.empty()) {
      return false;
    }
    const std::string_view text = meaning.filterText;
    return text.starts_with(path.view()) && (text.size() == path.size() || text[path.size()] == '/');
  }

  const std::optional<SidebarSelection>& selection_;
  const SearchFilters& filters_;
  bool isActive_;
  std::unordered_map<Text, std::optional<GmailSystemMailbox>> mailboxes_;
  std::unordered_map<Text, std::optional<GmailCategoryFolder>> categories_;
  LabelResolver resolver_;
};

std::shared_ptr<const ConversationCounts> countConversations(const MessageList& scope) {
  auto counts = std::make_shared<ConversationCounts>();
  counts->reserve(scope.size());
  for (const auto& message : scope) {
    ++(*counts)[message->conversationID];
  }
  return counts;
}

std::shared_ptr<const CategoryCounts> countCategories(const MessageList& scope) {
  auto counts = std::make_shared<CategoryCounts>();
  for (const auto& message : scope) {
    if (message->category && !message->category->empty()) {
      ++(*counts)[*message->category];
    }
  }
  return counts;
}

std::shared_ptr<const LibraryCounts> countLibraries(const MessageList& messages) {
  auto counts = std::make_shared<LibraryCounts>();
  for (const auto& message : messages) {
    ++(*counts)[message->sourceLibraryID];
  }
  return counts;
}

}  // namespace

bool isSameInput(const DerivedInput& a, const DerivedInput& b) {
  const auto search = trimmedSearch(a);
  return a.messages.isSame(b.messages) && a.sidebarSelection == b.sidebarSelection &&
         a.advancedFilters == b.advancedFilters && search == trimmedSearch(b) &&
         (search.empty() || a.searchIndex == b.searchIndex);
}

SharedMessageList scopedMessages(const DerivedInput& input) {
  const Text* library = selectedLibrary(input);
  if (!library) {
    return input.messages;
  }
  MessageList scope;
  for (const auto& message : input.messages) {
    if (message->sourceLibraryID == *library) {
      scope.push_back(message);
    }
  }
  return scope.size() == input.messages.size() ? input.messages : SharedMessageList(std::move(scope));
}

SharedMessageList filteredMessages(const DerivedInput& input, const SharedMessageList& scope) {
  const auto search = trimmedSearch(input);
  if (search.empty() && !narrowsScope(input)) {
    return scope;
  }
  MessageFilter filter(input);
  MessageList kept;
  if (search.empty()) {
    std::ranges::copy_if(scope, std::back_inserter(kept),
                         [&](const auto& message) { return filter.keeps(*message); });
  } else if (input.indexedMessages.isSame(input.messages)) {
    // The index knows the places of its hits in the whole list, so nothing else is looked at.
    const Text* library = selectedLibrary(input);
    for (const auto position : input.searchIndex.positionsMatching(search)) {
      const auto& message = input.messages[position];
      if ((!library || message->sourceLibraryID == *library) && filter.keeps(*message)) {
        kept.push_back(message);
      }
    }
  } else {
    const auto ids = input.searchIndex.matchingMessageIDs(search);
    if (!ids.empty()) {
      std::ranges::copy_if(scope, std::back_inserter(kept), [&](const auto& message) {
        return ids.contains(message->id) && filter.keeps(*message);
      });
    }
  }
  return kept;
}

DerivedState deriveState(const DerivedInput& input, const DerivedInput& earlierInput,
                         const DerivedState& earlier) {
  DerivedState state;
  const SharedMessageList scope = scopedMessages(input);
  state.filteredMessages = filteredMessages(input, scope);
  if (isSameScope(input, earlierInput)) {
    state.conversationCounts = earlier.conversationCounts;
    state.labelClassification = earlier.labelClassification;
    state.categoryCounts = earlier.categoryCounts;
  } else {
    state.conversationCounts = countConversations(scope);
    state.labelClassification = LabelClassification::classify(scope);
    state.categoryCounts = countCategories(scope);
  }
  state.libraryCounts =
      input.messages.isSame(earlierInput.messages) ? earlier.libraryCounts : countLibraries(input.messages);
  return state;
}

DerivedState deriveState(const DerivedInput& input) {
  // Its list is another object than that of any input, and so is taken over by nobody.
  DerivedInput nothing;
  nothing.messages = SharedMessageList(MessageList());
  return deriveState(input, nothing, DerivedState());
}

std::size_t derivationCost(const DerivedInput& input, const DerivedInput& earlierInput) {
  std::size_t cost = 0;
  if (!isSameScope(input, earlierInput) || selectedLibrary(input)) {
    cost += input.messages.size();
  }
  const bool finds = !trimmedSearch(input).empty();
  if (narrowsScope(input)) {
    const bool readsBodies = !input.advancedFilters.bodyQuery.empty();
    cost += input.messages.size() * (readsBodies ? costOfReadingABody : 1);
  } else if (finds && !input.indexedMessages.isSame(input.messages)) {
    cost += input.messages.size();
  }
  return cost;
}

}  // namespace tidewrack
