#include "fuzz/fuzz.h"
#include "mail/headers.h"
#include "platform/unicode.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const std::string text = repairUTF8(fuzz::bytesOf(data, size));
  const auto addresses = parseAddressList(text);
  fuzz::require(addresses.size() <= text.size());
  for (const EmailAddress& address : addresses) {
    fuzz::require(!address.name || !address.name->empty());
    fuzz::require(isValidUTF8(displayForm(address)));
  }
  fuzz::require(parseSender(text).has_value() == !trimWhitespaceAndNewlines(text).empty());
  return 0;
}
