#include "mail/headers.h"

#include "fuzz/fuzz.h"
#include "mail/mime.h"
#include "platform/unicode.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const std::string text = repairUTF8(fuzz::bytesOf(data, size));
  const HeaderMap headers = parseHeaders(text);
  for (const auto& [name, value] : headers) {
    fuzz::require(isValidUTF8(name) && isValidUTF8(value));
    fuzz::require(name.find(':') == std::string::npos && value.find('\n') == std::string::npos);
    headerParameter(name, value);
    headerParameter("charset", value);
  }
  attachmentFileName(headers);
  for (const Text& label : parseLabels(text)) {
    fuzz::require(!label.empty());
  }
  const std::string key = normalizedConversationSubject(text);
  fuzz::require(!key.starts_with("re:") && !key.starts_with("fwd:"));
  return 0;
}
