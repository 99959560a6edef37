#include "mail/message_reader.h"

#include "mail/clean_text.h"
#include "mail/date_parser.h"
#include "mail/encoded_words.h"
#include "mail/headers.h"
#include "platform/localized.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

EmailAddress unknownSender() {
  return {std::nullopt, Text(localized("unknown_sender_email", "unknown@unknown", "Fallback sender email"))};
}

// The key of the thread: its root, the message that this one answers, the subject, or the message itself.
Text conversationOf(const EmailMessage& message, std::string_view subject) {
  if (!message.references.empty() && !message.references.front().empty()) {
    return message.references.front();
  }
  if (message.inReplyTo) {
    return *message.inReplyTo;
  }
  const std::string normalized = normalizedConversationSubject(subject);
  return normalized.empty() ? message.id : Text("subject:" + normalized);
}

}  // namespace

MessageReader::MessageReader(std::shared_ptr<const Archive> archive, const Text& libraryID,
                             const Text& libraryName)
    : archive_(std::move(archive)), libraryID_(libraryID.view()), libraryName_(libraryName.view()) {}

std::shared_ptr<const EmailMessage> MessageReader::read(std::size_t offset, std::size_t length) {
  const std::string_view raw = archive_->bytes().substr(offset, length);
  if (isCleanText(raw)) {
    const std::string_view text = trimWhitespaceAndNewlines(raw);
    if (text.empty()) {
      return nullptr;
    }
    auto message = std::make_shared<EmailMessage>();
    make({text, archive_, static_cast<std::size_t>(text.data() - archive_->bytes().data())}, *message);
    return message;
  }
  const std::string cleaned = cleanText(raw);
  const std::string_view text = trimWhitespaceAndNewlines(cleaned);
  if (text.empty()) {
    return nullptr;
  }
  const std::size_t begin = RawOffsets(raw).rawOffset(static_cast<std::size_t>(text.data() - cleaned.data()));
  RawOffsets rawOffsets(raw.substr(begin));
  auto message = std::make_shared<EmailMessage>();
  make({text, archive_, offset + begin, &rawOffsets}, *message);
  return message;
}

EmailMessage MessageReader::readWhole() {
  EmailMessage message;
  make({archive_->bytes(), archive_}, message);
  return message;
}

void MessageReader::make(const CleanMessage& clean, EmailMessage& message) {
  const std::size_t bodyBegin = headers_.read(clean.text);
  ParsedBody body = walk_.walk(clean, {bodyBegin, clean.text.size()}, headers_);
  message.plainBody = std::move(body.plainBody);
  message.htmlBody = std::move(body.htmlBody);
  message.attachments = std::move(body.attachments);
  message.attachments.shrink_to_fit();
  message.snippet = walk_.snippet();

  const std::string subject =
      decodeHeaderText(trimWhitespaceAndNewlines(headers_[KnownHeader::subject].value_or("")));
  auto sender = parseSender(headers_[KnownHeader::from], &pool_);
  message.from = sender ? *std::move(sender) : unknownSender();
  message.to = parseAddressList(headers_[KnownHeader::to], &pool_);
  message.cc = parseAddressList(headers_[KnownHeader::cc], &pool_);
  message.date = parseDate(headers_[KnownHeader::date]);
  message.id = cleanMessageID(headers_[KnownHeader::messageID]);
  if (const auto reference = cleanReference(headers_[KnownHeader::inReplyTo])) {
    message.inReplyTo = pool_.text(*reference);
  }
  message.references = parseReferences(headers_[KnownHeader::references], &pool_);
  message.labels = parseLabels(headers_[KnownHeader::labels], &pool_);
  message.conversationID = conversationOf(message, subject);
  message.subject =
      subject.empty() ? localized("no_subject", "(No Subject)", "Fallback email subject") : subject;
  message.sourceLibraryID = libraryID_;
  message.sourceLibraryName = libraryName_;
}

}  // namespace tidewrack
