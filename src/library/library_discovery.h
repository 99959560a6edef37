#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "library/model_container.h"
#include "platform/date.h"
#include "platform/text.h"

namespace tidewrack {

/// What the stored messages tell of a library that the catalog of this machine does not know.
struct DiscoveredLibrary {
  Text id;                        ///< The `sourceLibraryID` of its messages.
  Text displayName;               ///< Name that the first message has for it, or the id when that is empty.
  std::int64_t messageCount = 0;  ///< Number of its messages.
  std::optional<Date> earliestDate;           ///< Absent when no message has a date.
  std::optional<Date> latestDate;             ///< Absent when no message has a date.
  std::int64_t uniqueSendersCount = 0;        ///< Distinct non-empty sender addresses, case included.
  std::int64_t uniqueConversationsCount = 0;  ///< Distinct non-empty conversation ids.
  std::int64_t attachmentCount = 0;           ///< Sum over its messages.
  std::vector<Text> labels;                   ///< Union of all labels, ascending, each once.
  std::vector<Text> categories;               ///< Distinct non-empty categories, ascending.

  friend bool operator==(const DiscoveredLibrary&, const DiscoveredLibrary&) = default;
};

/// The libraries of the store outside `knownIDs`, latest date first (without a date last). Messages without
/// a library id are left out, and damaged label lists add no labels. Reads no bodies. From any thread.
/// Throws StoreFailure.
std::vector<DiscoveredLibrary> discoverLibraries(const std::set<std::string>& knownIDs,
                                                 ModelContext& context);

}  // namespace tidewrack
