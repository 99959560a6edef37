#include "mail/encoded_words.h"

#include "fuzz/fuzz.h"
#include "platform/unicode.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const std::string text = repairUTF8(fuzz::bytesOf(data, size));
  const std::string decoded = decodeHeaderText(text);
  fuzz::require(isValidUTF8(decoded));
  // Either the text had no word and is as it was, or its white space is collapsed.
  fuzz::require(decoded == text || decoded == collapseWhitespace(decoded));
  return 0;
}
