#include "reading/message_row.h"

#include "platform/count_text.h"
#include "platform/localized.h"

namespace tidewrack {

MessageRow makeMessageRow(const EmailMessage& message, std::int64_t conversationCount) {
  MessageRow row;
  row.subject = message.subject.string();
  row.dateText = messageDateText(message.date);
  row.sender = displayForm(message.from);
  row.snippet = message.snippet.string();
  if (!message.attachments.empty()) {
    row.attachmentsText = formatCount(static_cast<std::int64_t>(message.attachments.size()));
  }
  if (conversationCount >= 2) {
    row.conversationText =
        formatText(localized("conversation_count_format", "%d in conversation", "Conversation count label"),
                   {static_cast<long long>(conversationCount)});
  }
  row.identifier = "messages.row.";
  row.identifier += message.id.view();
  return row;
}

std::string messageDateText(const std::optional<Date>& date) {
  return date ? formatMediumDateShortTime(*date)
              : localized("no_date", "No date", "Missing date placeholder");
}

}  // namespace tidewrack
