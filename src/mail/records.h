#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail/content.h"
#include "platform/date.h"
#include "platform/text.h"
#include "platform/uuid.h"

namespace tidewrack {

/// One mailbox as it stood in a header.
struct EmailAddress {
  std::optional<Text> name;  ///< Display name, decoded and without its quotes; absent rather than empty.
  Text address;              ///< Text inside the angle brackets, or the whole entry. Not validated.

  friend bool operator==(const EmailAddress&, const EmailAddress&) = default;
};

/// One decoded leaf of a message.
struct EmailAttachment {
  UUID id;                        ///< Fresh at each parse; not derived from the content.
  Text fileName;                  ///< Never empty.
  Text mimeType;                  ///< The whole Content-Type value as it stood, or "text/plain".
  Content data;                   ///< Content after transfer decoding.
  std::optional<Text> contentID;  ///< Content-ID without angle brackets; absent rather than empty.
  bool isInline = false;          ///< The disposition says "inline", or there is a Content-ID.

  friend bool operator==(const EmailAttachment&, const EmailAttachment&) = default;
};

/// One message. Every field is fixed once made, except `category`.
struct EmailMessage {
  Text id;                 ///< Message-ID without brackets, or a fresh UUID. Identity across the system.
  Text sourceLibraryID;    ///< `id` of the MBOXLibrary into which it was imported.
  Text sourceLibraryName;  ///< Display name of that library at import time.
  Text subject;            ///< Decoded subject, or the localised fallback.
  EmailAddress from;
  std::vector<EmailAddress> to;
  std::vector<EmailAddress> cc;
  std::optional<Date> date;                  ///< Absent when the header is missing or not understood.
  Text snippet;                              ///< One-line preview, at most 181 user-perceived characters.
  std::optional<Content> plainBody;          ///< First non-empty plain text leaf, as UTF-8.
  std::optional<Content> htmlBody;           ///< First non-empty HTML leaf, as UTF-8.
  std::vector<EmailAttachment> attachments;  ///< In document order.
  std::vector<Text> labels;                  ///< Raw labels in header order, no empties.
  Text conversationID;                       ///< Thread key; never empty.
  std::optional<Text> inReplyTo;
  std::vector<Text> references;
  std::optional<Text> category;  ///< Written later by the categoriser; the importer leaves it absent.

  friend bool operator==(const EmailMessage&, const EmailMessage&) = default;
};

/// An immutable list of messages: a filter, a sort or an assignment copies pointers, never messages.
using MessageList = std::vector<std::shared_ptr<const EmailMessage>>;

/// The form in which an address is shown and exported: `name <address>` when the name is present and not
/// empty, otherwise the address alone. Nothing is quoted.
std::string displayForm(const EmailAddress& address);
/// The display forms joined by ", ".
std::string displayForms(const std::vector<EmailAddress>& addresses);
/// The same behind a text.
void appendDisplayForm(std::string& text, const EmailAddress& address);
void appendDisplayForms(std::string& text, const std::vector<EmailAddress>& addresses,
                        std::string_view separator = ", ");

/// Newest first by date, stable; a message without a date counts as distantPast.
void sortNewestFirst(MessageList& messages);

}  // namespace tidewrack

template <>
struct std::hash<tidewrack::EmailAddress> {
  std::size_t operator()(const tidewrack::EmailAddress& value) const;
};
template <>
struct std::hash<tidewrack::EmailAttachment> {
  std::size_t operator()(const tidewrack::EmailAttachment& value) const;
};
template <>
struct std::hash<tidewrack::EmailMessage> {
  std::size_t operator()(const tidewrack::EmailMessage& value) const;
};
