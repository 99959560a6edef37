#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "library/model_container.h"
#include "mail/records.h"

namespace tidewrack {

/// The changes that a save makes, in the order of the calls.
struct UpsertChange {
  MessageList messages;
};
struct DeleteChange {
  std::string sourceLibraryID;
};
struct RenameChange {
  std::string sourceLibraryID;
  Text newName;
};
struct CategoryChange {
  std::string messageID;
  std::optional<Text> category;
};
using StoreChange = std::variant<UpsertChange, DeleteChange, RenameChange, CategoryChange>;

/// What failed saves of a context have left to be committed.
struct ModelContext::Pending {
  std::vector<StoreChange> changes;
};

/// The stored list as it would stand once the changes were committed, newest first.
MessageList withChanges(MessageList stored, const std::vector<StoreChange>& changes);

}  // namespace tidewrack
