#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "classify/search_filters.h"
#include "mail/records.h"
#include "screen/sidebar.h"

namespace tidewrack {

class HeadlessScreen;

/// The choice of messages that a command works on, as the options --library, --mailbox, --search and so on
/// make it. A message is chosen when it passes all of them; without any, every message is.
///
/// A command that takes these options needs three things: a MessageSelectors among what the command line
/// holds (the reader of the command line fills it for the commands that it knows to take them), a screen that
/// searches where `needsSearch` says so, and `selectMessages` for the list.
struct MessageSelectors {
  std::vector<std::string> inLibraries;
  std::vector<SidebarSelection> places;  ///< Mailboxes, tabs, labels and categories.
  SearchFilters filters;
  std::string searchText;
};

/// One option of the selectors.
struct SelectorOption {
  std::string_view name;  ///< With its hyphens.
  bool takesValue;
  bool isRepeatable;  ///< Each further one narrows the choice; of any other option only one can be given.
  /// Enters the option. `value` is not empty where the option takes one. Throws UsageFailure for a value
  /// that makes no sense.
  void (*enter)(MessageSelectors& selectors, const std::string& value);
};

/// The option of this name, or null when it is no selector.
const SelectorOption* findSelectorOption(std::string_view name);

/// Whether the choice needs the search index, so that the screen has to be made with it.
bool needsSearch(const MessageSelectors& selectors);

/// The loaded messages that pass every selector, newest first. Leaves the screen with the choice made on it.
/// Throws Failure, for example for an unknown library.
MessageList selectMessages(HeadlessScreen& headless, const MessageSelectors& selectors);

}  // namespace tidewrack
