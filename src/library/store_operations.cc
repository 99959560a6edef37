#include "library/store_operations.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <variant>

#include "library/message_reader.h"
#include "library/message_store.h"
#include "library/pending_changes.h"
#include "library/upsert.h"

namespace tidewrack {
namespace {

void apply(const DeleteChange& change, MessageStore::Writing& writing) {
  writing.with([&](SQLiteConnection& connection) {
    for (const char* sql :
         {"DELETE FROM message WHERE source IN (SELECT number FROM source WHERE libraryID = ?)",
          "DELETE FROM source WHERE libraryID = ?"}) {
      auto statement = connection.prepare(sql);
      statement.bindText(1, change.sourceLibraryID);
      statement.run();
    }
  });
}

void apply(const RenameChange& change, MessageStore::Writing& writing) {
  writing.with([&](SQLiteConnection& connection) {
    auto statement = connection.prepare("UPDATE source SET libraryName = ? WHERE libraryID = ?");
    statement.bindText(1, change.newName);
    statement.bindText(2, change.sourceLibraryID);
    statement.run();
  });
}

void apply(const CategoryChange& change, MessageStore::Writing& writing) {
  writing.with([&](SQLiteConnection& connection) {
    auto statement = connection.prepare(
        "UPDATE message SET category = ? WHERE number = (SELECT min(number) FROM message WHERE id = ?)");
    if (change.category) {
      statement.bindText(1, *change.category);
    } else {
      statement.bindNull(1);
    }
    statement.bindText(2, change.messageID);
    statement.run();
  });
}

/// Commits one more change of a context together with what is pending there, in one transaction. After a
/// failure everything is pending. Gives the stored form of the messages when the change is an upsert.
MessageList save(StoreChange change, ModelContext& context, const SaveProgress& progress = {},
                 const WhileSaving& whileSaving = {}) {
  auto& changes = context.pending().changes;
  changes.push_back(std::move(change));

  MessageStore::Writing writing(context.store());
  const auto upsertOf = [&](const StoreChange& list) {
    auto upsert = std::make_unique<Upsert>(std::get<UpsertChange>(list).messages);
    if (&list == &changes.back()) {
      upsert->accompany(whileSaving);
    }
    return upsert;
  };
  // The first list tells how much there is to write; it decodes while the connection gets ready.
  std::unique_ptr<Upsert> upsert;
  const auto first = std::find_if(changes.begin(), changes.end(), [](const StoreChange& each) {
    return std::holds_alternative<UpsertChange>(each);
  });
  if (first != changes.end()) {
    upsert = upsertOf(*first);
  }
  writing.begin(upsert && !upsert->isSmall() ? MessageStore::Writing::Size::large
                                             : MessageStore::Writing::Size::small);
  for (auto& each : changes) {
    if (std::holds_alternative<UpsertChange>(each)) {
      if (&each != &*first) {
        upsert = upsertOf(each);
      }
      upsert->write(writing, &each == &changes.back() ? progress : SaveProgress());
    } else {
      std::visit(
          [&](const auto& kind) {
            if constexpr (!std::is_same_v<std::decay_t<decltype(kind)>, UpsertChange>) {
              apply(kind, writing);
            }
          },
          each);
    }
  }
  writing.commit();

  MessageList stored;
  if (auto* list = std::get_if<UpsertChange>(&changes.back())) {
    upsert->refer(list->messages, context.store().shared_from_this());
    stored = std::move(list->messages);
  }
  changes.clear();
  return stored;
}

}  // namespace

MessageList fetchAllMessages(ModelContext& context) {
  MessageList stored = readMessages(context.store().shared_from_this(), std::nullopt);
  const auto& changes = context.pending().changes;
  return changes.empty() ? stored : withChanges(std::move(stored), changes);
}

MessageList fetchMessages(std::string_view libraryID, ModelContext& context) {
  if (context.pending().changes.empty()) {
    return readMessages(context.store().shared_from_this(), libraryID);
  }
  MessageList messages = fetchAllMessages(context);
  std::erase_if(messages, [&](const auto& message) { return message->sourceLibraryID != libraryID; });
  return messages;
}

MessageList saveMessages(MessageList messages, ModelContext& context, const SaveProgress& progress,
                         const WhileSaving& whileSaving) {
  if (messages.empty()) {
    return messages;
  }
  return save(UpsertChange{std::move(messages)}, context, progress, whileSaving);
}

void deleteMessages(std::string_view libraryID, ModelContext& context) {
  save(DeleteChange{std::string(libraryID)}, context);
}

void renameMessages(std::string_view libraryID, const Text& newName, ModelContext& context) {
  save(RenameChange{std::string(libraryID), newName}, context);
}

std::optional<PersistedEmailMessage> fetchMessage(std::string_view messageID, ModelContext& context) {
  auto stored = readMessage(context.store().shared_from_this(), messageID);
  const auto& changes = context.pending().changes;
  if (changes.empty()) {
    return stored;
  }
  MessageList list;
  if (stored) {
    list.push_back(std::make_shared<EmailMessage>(makeEmailMessage(*stored)));
  }
  list = withChanges(std::move(list), changes);
  const auto found =
      std::find_if(list.begin(), list.end(), [&](const auto& message) { return message->id == messageID; });
  return found == list.end() ? std::nullopt : std::optional(makePersistedMessage(**found));
}

void updateCategory(std::string_view messageID, const std::optional<Text>& category, ModelContext& context) {
  if (fetchMessage(messageID, context)) {
    save(CategoryChange{std::string(messageID), category}, context);
  }
}

}  // namespace tidewrack
