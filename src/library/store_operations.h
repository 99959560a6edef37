#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "library/model_container.h"
#include "library/persisted_entities.h"
#include "mail/records.h"

/// The operations with which the rest of the program reads and changes stored messages. All are synchronous
/// and may run on any thread; writes over the same store wait for each other. They throw StoreFailure, and
/// CodingFailure for damaged JSON in the store.
///
/// Messages that come from the store hold their bodies and attachment data as Contents that read the stored
/// row when asked; such a Content keeps the store open, and throws StoreFailure once its row has been deleted
/// or replaced.
namespace tidewrack {

/// All stored messages, newest first, undated ones last. The first damaged message fails the whole fetch.
MessageList fetchAllMessages(ModelContext& context);

/// The stored messages of one library, in the same order.
MessageList fetchMessages(std::string_view libraryID, ModelContext& context);

/// Called on the saving thread with the number of messages written so far.
using SaveProgress = std::function<void(std::size_t saved)>;

/// Work on the messages that are being written which goes on beside the writing, on a thread of its own. It
/// is called once, with those of the list that no later one of the same id replaces, in the order of the
/// list and as they were given: their Contents are still those of the archive. Must not throw, and keeps
/// nothing of the list.
using WhileSaving = std::function<void(std::span<const std::shared_ptr<const EmailMessage>> written)>;

/// Inserts the messages, or updates the stored ones of the same id (across all libraries), all in one
/// transaction: after a failure or a crash nothing of the call is in the store, and the list stays pending in
/// the context. Of two messages with the same id in the list the later wins. A stored category stays when the
/// message has none. Contents that lie in an archive are decoded on a second thread while the writer works,
/// in bounded memory. An empty list does nothing.
///
/// Gives a list of the same length and order whose Contents refer to the stored rows, so that the archive
/// can be let go; of messages with the same id each place holds the later one. A caller who moves his list in
/// spares a second list. `whileSaving` has ended when the operation has, after a failure too.
///
/// Two stored rows with the same id stop the process: nothing but this operation writes ids.
MessageList saveMessages(MessageList messages, ModelContext& context, const SaveProgress& progress = {},
                         const WhileSaving& whileSaving = {});

/// Deletes the messages of a library with their attachments. An unknown id is no failure.
void deleteMessages(std::string_view libraryID, ModelContext& context);

/// Sets `sourceLibraryName` of the messages of a library.
void renameMessages(std::string_view libraryID, const Text& newName, ModelContext& context);

/// The stored message of this id, or nothing.
std::optional<PersistedEmailMessage> fetchMessage(std::string_view messageID, ModelContext& context);

/// Sets the category of one message. An unknown id does nothing.
void updateCategory(std::string_view messageID, const std::optional<Text>& category, ModelContext& context);

}  // namespace tidewrack
