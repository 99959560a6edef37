#include "library/pending_changes.h"

#include <memory>
#include <unordered_map>
#include <utility>

namespace tidewrack {
namespace {

using MessagePointer = std::shared_ptr<const EmailMessage>;

template <typename Change>
MessagePointer changed(const MessagePointer& message, Change change) {
  auto copy = std::make_shared<EmailMessage>(*message);
  change(*copy);
  return copy;
}

void apply(const UpsertChange& upsert, MessageList& list) {
  std::unordered_map<Text, std::size_t> places;
  for (std::size_t place = 0; place < list.size(); ++place) {
    places.try_emplace(list[place]->id, place);
  }
  for (const auto& message : upsert.messages) {
    const auto [entry, isNew] = places.try_emplace(message->id, list.size());
    if (isNew) {
      list.push_back(message);
      continue;
    }
    MessagePointer& old = list[entry->second];
    old = message->category || !old->category
              ? message
              : changed(message, [&](EmailMessage& copy) { copy.category = old->category; });
  }
}

void apply(const DeleteChange& deletion, MessageList& list) {
  std::erase_if(list,
                [&](const auto& message) { return message->sourceLibraryID == deletion.sourceLibraryID; });
}

void apply(const RenameChange& rename, MessageList& list) {
  for (auto& message : list) {
    if (message->sourceLibraryID == rename.sourceLibraryID) {
      message = changed(message, [&](EmailMessage& copy) { copy.sourceLibraryName = rename.newName; });
    }
  }
}

void apply(const CategoryChange& change, MessageList& list) {
  for (auto& message : list) {
    if (message->id == change.messageID) {
      message = changed(message, [&](EmailMessage& copy) { copy.category = change.category; });
      return;
    }
  }
}

}  // namespace

MessageList withChanges(MessageList stored, const std::vector<StoreChange>& changes) {
  for (const auto& change : changes) {
    std::visit([&](const auto& kind) { apply(kind, stored); }, change);
  }
  sortNewestFirst(stored);
  return stored;
}

}  // namespace tidewrack
