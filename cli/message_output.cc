#include "cli/message_output.h"

#include "mail/html_text.h"
#include "mail/json_coding.h"
#include "platform/byte_count.h"
#include "platform/localized.h"

namespace tidewrack {
namespace {

void appendHeader(std::string& text, const std::string& title, std::string_view value) {
  if (!value.empty()) {
    text.append(title).append(": ").append(value).append("\n");
  }
}

std::string joined(const std::vector<Text>& texts) {
  std::string result;
  for (const auto& text : texts) {
    result.append(result.empty() ? "" : ", ").append(text.view());
  }
  return result;
}

}  // namespace

std::string messageLine(const EmailMessage& message, CommandLine::Form form) {
  const auto data =
      form == CommandLine::Form::digest ? AttachmentDataForm::digest : AttachmentDataForm::base64;
  return toJSON(message, data).dump() + '\n';
}

std::string dateText(const std::optional<Date>& date) {
  return date ? formatISO8601(*date) : std::string();
}

std::string overview(const EmailMessage& message) {
  std::string text;
  appendHeader(text, localized("ctl_from", "From", "Header line of a message"), displayForm(message.from));
  appendHeader(text, localized("ctl_to", "To", "Header line of a message"), displayForms(message.to));
  appendHeader(text, localized("ctl_cc", "Cc", "Header line of a message"), displayForms(message.cc));
  appendHeader(text, localized("ctl_date", "Date", "Header line of a message"), dateText(message.date));
  appendHeader(text, localized("ctl_subject", "Subject", "Header line of a message"), message.subject);
  appendHeader(text, localized("ctl_labels", "Labels", "Header line of a message"), joined(message.labels));
  for (const auto& attachment : message.attachments) {
    appendHeader(text, localized("ctl_attachment", "Attachment", "Header line of a message"),
                 attachment.fileName.string() + " (" + attachment.mimeType.string() + ", " +
                     formatByteCount(attachment.data.size()) + ")");
  }
  text += '\n';
  text += bodyText(message);
  if (text.back() != '\n') {
    text += '\n';
  }
  return text;
}

std::string bodyText(const EmailMessage& message) {
  if (message.plainBody) {
    return message.plainBody->bytes();
  }
  return message.htmlBody ? HTMLTextExtractor::extractText(message.htmlBody->bytes()) : std::string();
}

}  // namespace tidewrack
