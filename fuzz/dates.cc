#include "fuzz/fuzz.h"
#include "mail/date_parser.h"
#include "platform/unicode.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const std::string text = repairUTF8(fuzz::bytesOf(data, size));
  if (const auto date = parseDate(text)) {
    // A comment behind a date changes nothing.
    fuzz::require(parseDate(text + " (comment)") == date);
    fuzz::require(parseISO8601(formatISO8601(*date)).has_value());
  }
  parseISO8601(text);
  return 0;
}
