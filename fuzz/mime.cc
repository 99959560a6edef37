#include "mail/mime.h"

#include "fuzz/fuzz.h"
#include "platform/unicode.h"

// The first line is the boundary, the rest the body.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const std::string text = repairUTF8(fuzz::bytesOf(data, size));
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string boundary = text.substr(0, end);
  const std::string body = text.substr(std::min(end + 1, text.size()));
  for (const std::string& part : splitMultipart(body, boundary)) {
    fuzz::require(!part.empty() && trimWhitespaceAndNewlines(part) == part);
    fuzz::require(part.find('\r') == std::string::npos);
  }
  const ParsedBody parsed = parseBody(body, {{"content-type", "multipart/mixed; boundary=" + boundary}});
  for (const EmailAttachment& attachment : parsed.attachments) {
    fuzz::require(!attachment.fileName.empty());
  }
  return 0;
}
