#include "mail/charsets.h"

#include <algorithm>

#include "fuzz/fuzz.h"
#include "platform/unicode.h"

// The first line names the charset.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const auto input = fuzz::bytesOf(data, size);
  const std::size_t lineEnd = std::min(input.find('\n'), input.size());
  const std::string charset = repairUTF8(input.substr(0, lineEnd));
  const auto bytes = input.substr(std::min(lineEnd + 1, input.size()));
  const std::string text = decodeText(bytes, charset);
  fuzz::require(isValidUTF8(text));
  fuzz::require(!decodesUnchanged(bytes, charset) || text == bytes);
  fuzz::require(isValidUTF8(decodeWithFallback(bytes)));
  return 0;
}
