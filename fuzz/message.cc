#include "fuzz/fuzz.h"
#include "mail/message_parser.h"
#include "mail/records.h"
#include "platform/unicode.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const std::string raw = repairUTF8(fuzz::bytesOf(data, size));
  const EmailMessage message = parseMessage(raw, "library", "name");
  fuzz::require(!message.id.empty() && !message.subject.empty() && !message.conversationID.empty());
  fuzz::require(graphemeCount(message.snippet) <= 181);
  for (const auto& body : {message.plainBody, message.htmlBody}) {
    fuzz::require(!body || (isValidUTF8(body->bytes()) && body->size() == body->bytes().size()));
  }
  for (const EmailAttachment& attachment : message.attachments) {
    fuzz::require(!attachment.fileName.empty() && attachment.data.size() == attachment.data.bytes().size());
  }
  return 0;
}
