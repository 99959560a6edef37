#pragma once

#include <optional>
#include <string_view>

#include "library/message_store.h"
#include "library/persisted_entities.h"
#include "mail/records.h"

namespace tidewrack {

/// All stored messages, or those of one library, newest first, without reading a body. Two connections share
/// the work. Throws StoreFailure, and CodingFailure for damaged JSON.
MessageList readMessages(const std::shared_ptr<MessageStore>& store,
                         std::optional<std::string_view> libraryID);

/// The stored message of this id, or nothing.
std::optional<PersistedEmailMessage> readMessage(const std::shared_ptr<MessageStore>& store,
                                                 std::string_view messageID);

}  // namespace tidewrack
