#include "mail/html_text.h"

#include "fuzz/fuzz.h"
#include "platform/unicode.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const std::string html = repairUTF8(fuzz::bytesOf(data, size));
  const std::string text = HTMLTextExtractor::extractText(html);
  fuzz::require(isValidUTF8(text));
  fuzz::require(text == collapseWhitespace(text));
  const auto beginning = HTMLTextExtractor::extractBeginning(html, size / 4);
  fuzz::require(text.starts_with(beginning.text));
  fuzz::require(beginning.text.size() >= size / 4 || beginning.text == text);
  return 0;
}
