#include "cli/message_selectors.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <unordered_set>
#include <utility>

#include "cli/command_line.h"
#include "cli/headless_screen.h"
#include "platform/localized.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

constexpr auto lastInstantOfADay = std::chrono::days(1) - std::chrono::milliseconds(1);

UsageFailure wrongValue(const std::string& value) {
  return UsageFailure(formatText(
      localized("ctl_wrong_value", "\"%@\" is not a possible value here.", "tidewrackctl usage error"),
      {value}));
}

template <typename Choice>
struct NamedChoice {
  std::string_view name;
  Choice choice;
};

template <typename Choice, std::size_t count>
Choice chosen(const std::array<NamedChoice<Choice>, count>& choices, const std::string& value) {
  const auto found = std::ranges::find(choices, value, &NamedChoice<Choice>::name);
  if (found == choices.end()) {
    throw wrongValue(value);
  }
  return found->choice;
}

/// An instant, "2026-05-14T10:00:00Z", or the first instant of a day, "2026-05-14", in UTC like every date
/// that the program prints.
struct DateValue {
  Date date;
  bool isDay;
};
DateValue dateValue(const std::string& value) {
  if (const auto instant = parseISO8601(value)) {
    return {*instant, false};
  }
  if (const auto day = parseISO8601(value + "T00:00:00Z")) {
    return {*day, true};
  }
  throw wrongValue(value);
}

// One end of the range alone leaves the other open.
void openRange(SearchFilters& filters) {
  if (!filters.useDateFilter) {
    filters.useDateFilter = true;
    filters.startDate = Date::min();
    filters.endDate = Date::max();
  }
}

void enterMailbox(MessageSelectors& selectors, const std::string& value) {
  const auto mailbox = matchingSystemMailbox(value);
  if (!mailbox) {
    throw wrongValue(value);
  }
  selectors.places.push_back(SidebarSelection::mailbox(*mailbox));
}

void enterGmailCategory(MessageSelectors& selectors, const std::string& value) {
  const auto category = matchingCategoryFolder(value);
  if (!category) {
    throw wrongValue(value);
  }
  selectors.places.push_back(SidebarSelection::gmailCategory(*category));
}

void enterSince(MessageSelectors& selectors, const std::string& value) {
  const auto since = dateValue(value);
  openRange(selectors.filters);
  selectors.filters.startDate = since.date;
}

void enterUntil(MessageSelectors& selectors, const std::string& value) {
  const auto until = dateValue(value);
  openRange(selectors.filters);
  const bool hasWholeDay = until.isDay && until.date <= Date::max() - lastInstantOfADay;
  selectors.filters.endDate = hasWholeDay   ? until.date + lastInstantOfADay
                              : until.isDay ? Date::max()
                                            : until.date;
}

void enterAttachments(MessageSelectors& selectors, const std::string& value) {
  static constexpr std::array choices = {
      NamedChoice<AttachmentFilter>{"any", AttachmentFilter::any},
      NamedChoice<AttachmentFilter>{"with", AttachmentFilter::withAttachments},
      NamedChoice<AttachmentFilter>{"without", AttachmentFilter::withoutAttachments}};
  selectors.filters.attachmentFilter = chosen(choices, value);
}

void enterSize(MessageSelectors& selectors, const std::string& value) {
  static constexpr std::array choices = {NamedChoice<SizeFilter>{"any", SizeFilter::any},
                                         NamedChoice<SizeFilter>{"small", SizeFilter::small},
                                         NamedChoice<SizeFilter>{"medium", SizeFilter::medium},
                                         NamedChoice<SizeFilter>{"large", SizeFilter::large}};
  selectors.filters.sizeFilter = chosen(choices, value);
}

using Selectors = MessageSelectors;
using Value = std::string;

constexpr std::array options = {
    SelectorOption{"--library", true, true, [](Selectors& s, const Value& v) { s.inLibraries.push_back(v); }},
    SelectorOption{"--mailbox", true, true, enterMailbox},
    SelectorOption{"--gmail-category", true, true, enterGmailCategory},
    SelectorOption{
        "--label", true, true,
        [](Selectors& s, const Value& v) { s.places.push_back(SidebarSelection::label(Text(v))); }},
    SelectorOption{
        "--category", true, true,
        [](Selectors& s, const Value& v) { s.places.push_back(SidebarSelection::category(Text(v))); }},
    SelectorOption{"--search", true, false, [](Selectors& s, const Value& v) { s.searchText = v; }},
    SelectorOption{"--subject", true, false,
                   [](Selectors& s, const Value& v) { s.filters.subjectQuery = v; }},
    SelectorOption{"--body", true, false, [](Selectors& s, const Value& v) { s.filters.bodyQuery = v; }},
    SelectorOption{"--from", true, false, [](Selectors& s, const Value& v) { s.filters.fromQuery = v; }},
    SelectorOption{"--since", true, false, enterSince},
    SelectorOption{"--until", true, false, enterUntil},
    SelectorOption{"--attachments", true, false, enterAttachments},
    SelectorOption{"--attachment-type", true, false,
                   [](Selectors& s, const Value& v) { s.filters.attachmentType = v; }},
    SelectorOption{"--in-conversations", false, true,
                   [](Selectors& s, const Value& /*none*/) { s.filters.onlyInConversations = true; }},
    SelectorOption{"--html-only", false, true,
                   [](Selectors& s, const Value& /*none*/) { s.filters.onlyHTML = true; }},
    SelectorOption{"--size", true, false, enterSize},
};

/// What is in both lists, in the order of the first.
MessageList common(const MessageList& a, const MessageList& b) {
  const std::unordered_set<std::shared_ptr<const EmailMessage>> other(b.begin(), b.end());
  MessageList both;
  std::ranges::copy_if(a, std::back_inserter(both),
                       [&](const auto& message) { return other.contains(message); });
  return both;
}

}  // namespace

const SelectorOption* findSelectorOption(std::string_view name) {
  const auto* const found = std::ranges::find(options, name, &SelectorOption::name);
  return found != options.end() ? found : nullptr;
}

bool needsSearch(const MessageSelectors& selectors) {
  return !trimWhitespaceAndNewlines(selectors.searchText).empty();
}

MessageList selectMessages(HeadlessScreen& headless, const MessageSelectors& selectors) {
  auto& screen = headless.screen();
  std::vector<SidebarSelection> places = selectors.places;
  for (const auto& library : selectors.inLibraries) {
    places.push_back(SidebarSelection::library(headless.importedLibrary(library).id));
  }
  if (places.empty()) {
    places.push_back(SidebarSelection::allLibraries());
  }
  screen.searchText.set(selectors.searchText);
  screen.sidebarSelection.set(places.front());
  screen.advancedFilters.set(selectors.filters);  // Last, for they may read bodies.
  headless.run(screen.whenDerivedStateIsCurrent());
  MessageList messages = screen.cachedFilteredMessages();
  // The sidebar has one place at a time; here each place narrows what the others have left.
  for (std::size_t i = 1; i < places.size(); ++i) {
    screen.sidebarSelection.set(places[i]);
    headless.run(screen.whenDerivedStateIsCurrent());
    messages = common(messages, screen.cachedFilteredMessages());
  }
  return messages;
}

}  // namespace tidewrack
