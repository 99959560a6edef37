#include "library/persisted_entities.h"

#include <utility>

#include "library/record_mapper.h"
#include "mail/json_coding.h"

namespace tidewrack {
namespace {

PersistedEmailAttachment makePersistedAttachment(const EmailAttachment& attachment) {
  return {attachment.id,   attachment.fileName,  attachment.mimeType,
          attachment.data, attachment.contentID, attachment.isInline};
}

std::optional<std::string_view> viewOf(const std::optional<Text>& text) {
  return text ? std::optional<std::string_view>(text->view()) : std::nullopt;
}

}  // namespace

PersistedEmailMessage makePersistedMessage(const EmailMessage& message) {
  PersistedEmailMessage entity;
  entity.id = message.id;
  updatePersistedMessage(entity, message);
  return entity;
}

void updatePersistedMessage(PersistedEmailMessage& entity, const EmailMessage& message) {
  entity.sourceLibraryID = message.sourceLibraryID;
  entity.sourceLibraryName = message.sourceLibraryName;
  entity.subject = message.subject;
  entity.fromName = message.from.name;
  entity.fromAddress = message.from.address;
  entity.toData = encodeAddresses(message.to);
  entity.ccData = encodeAddresses(message.cc);
  entity.date = message.date;
  entity.snippet = message.snippet;
  entity.plainBody = message.plainBody;
  entity.htmlBody = message.htmlBody;
  entity.labelsData = encodeStrings(message.labels);
  entity.conversationID = message.conversationID;
  entity.inReplyTo = message.inReplyTo;
  entity.referencesData = encodeStrings(message.references);
  // The importer knows no category: one that was found earlier survives a second import.
  if (message.category) {
    entity.category = message.category;
  }
  entity.attachments.clear();
  for (const auto& attachment : message.attachments) {
    entity.attachments.push_back(makePersistedAttachment(attachment));
  }
}

EmailMessage makeEmailMessage(const PersistedEmailMessage& entity) {
  EmailMessage message = RecordMapper().message(
      {entity.id, entity.subject, viewOf(entity.fromName), entity.fromAddress, entity.toData, entity.ccData,
       entity.date, entity.snippet, entity.labelsData, entity.conversationID, viewOf(entity.inReplyTo),
       entity.referencesData, viewOf(entity.category)});
  message.sourceLibraryID = entity.sourceLibraryID;
  message.sourceLibraryName = entity.sourceLibraryName;
  message.plainBody = entity.plainBody;
  message.htmlBody = entity.htmlBody;
  for (const auto& attachment : entity.attachments) {
    message.attachments.push_back(makeEmailAttachment(attachment));
  }
  return message;
}

EmailAttachment makeEmailAttachment(const PersistedEmailAttachment& entity) {
  return {entity.id, entity.fileName, entity.mimeType, entity.data, entity.contentID, entity.isInline};
}

}  // namespace tidewrack
