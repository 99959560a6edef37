#include "mail/message_texts.h"

#include <sstream>
#include <string_view>

namespace tidewrack {
namespace {

constexpr std::string_view randomName = "attachment-";

}  // namespace

EmailMessage withoutRandomTexts(EmailMessage message) {
  if (UUID::parse(message.id)) {
    if (message.conversationID == message.id) {
      message.conversationID = "<random>";
    }
    message.id = "<random>";
  }
  for (EmailAttachment& attachment : message.attachments) {
    attachment.id = UUID();
    const std::string_view name = attachment.fileName;
    if (name.starts_with(randomName) && UUID::parse(name.substr(randomName.size()))) {
      attachment.fileName = "attachment-<random>";
    }
  }
  return message;
}

std::string describe(const EmailMessage& message) {
  std::ostringstream out;
  const auto body = [&out](const char* name, const std::optional<Content>& content) {
    out << name << (content ? ": [" + content->bytes() + "]" : " absent") << '\n';
  };
  out << "id: [" << message.id << "]\nsubject: [" << message.subject << "]\nfrom: ["
      << displayForm(message.from) << "]\nto: [" << displayForms(message.to) << "]\ncc: ["
      << displayForms(message.cc) << "]\ndate: [" << (message.date ? formatISO8601(*message.date) : "absent")
      << "]\nsnippet: [" << message.snippet << "]\n";
  body("plain body", message.plainBody);
  body("HTML body", message.htmlBody);
  for (const EmailAttachment& attachment : message.attachments) {
    out << "attachment: [" << attachment.fileName << "] [" << attachment.mimeType << "] ["
        << attachment.contentID.value_or("absent") << "] " << attachment.isInline << " ["
        << attachment.data.bytes() << "]\n";
  }
  for (const Text& label : message.labels) {
    out << "label: [" << label << "]\n";
  }
  for (const Text& reference : message.references) {
    out << "reference: [" << reference << "]\n";
  }
  out << "in reply to: [" << message.inReplyTo.value_or("absent") << "]\nconversation: ["
      << message.conversationID << "]\n";
  return out.str();
}

}  // namespace tidewrack
