#pragma once

#include <optional>
#include <string>
#include <vector>

#include "mail/records.h"

/// The stored form of mail: scalars, with the lists as JSON in bytes, so that no attribute needs more than
/// a column of its own.
namespace tidewrack {

struct PersistedEmailAttachment {
  UUID id;
  Text fileName;
  Text mimeType;
  Content data;
  std::optional<Text> contentID;
  bool isInline = false;
};

struct PersistedEmailMessage {
  Text id;
  Text sourceLibraryID;
  Text sourceLibraryName;
  Text subject;
  std::optional<Text> fromName;
  Text fromAddress;
  std::string toData;  ///< JSON array of EmailAddress.
  std::string ccData;  ///< JSON array of EmailAddress.
  std::optional<Date> date;
  Text snippet;
  std::optional<Content> plainBody;
  std::optional<Content> htmlBody;
  std::string labelsData;  ///< JSON array of strings.
  Text conversationID;
  std::optional<Text> inReplyTo;
  std::string referencesData;  ///< JSON array of strings.
  std::optional<Text> category;
  std::vector<PersistedEmailAttachment> attachments;
};

/// A new entity from a record; attachments keep their ids, and the category is copied as it stands.
PersistedEmailMessage makePersistedMessage(const EmailMessage& message);
/// Overwrites an entity with a record: the category only when the record has one, the attachments whole.
void updatePersistedMessage(PersistedEmailMessage& entity, const EmailMessage& message);
/// The record of an entity. Throws CodingFailure when one of its JSON lists is damaged.
EmailMessage makeEmailMessage(const PersistedEmailMessage& entity);
EmailAttachment makeEmailAttachment(const PersistedEmailAttachment& entity);

}  // namespace tidewrack
