#include "fuzz/fuzz.h"
#include "mail/headers.h"
#include "platform/unicode.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const std::string text = repairUTF8(fuzz::bytesOf(data, size));
  for (const Text& reference : parseReferences(text)) {
    fuzz::require(!reference.empty() && text.find(reference.view()) != std::string::npos);
  }
  const auto reference = cleanReference(text);
  fuzz::require(!reference || cleanMessageID(text) == *reference);
  return 0;
}
