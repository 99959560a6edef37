#include "platform/count_text.h"

#include <memory>
#include <mutex>
#include <string_view>

#include <unicode/numsys.h>
#include <unicode/unistr.h>

namespace tidewrack {
namespace {

// The digits from 0 to 9 of the current locale; empty where they are the ASCII ones. Worked out once for each
// locale, which does not change in the life of a program.
icu::UnicodeString localeDigits() {
  static std::mutex mutex;
  static std::string known = "none";
  static icu::UnicodeString digits;
  const std::lock_guard lock(mutex);
  const icu::Locale& locale = icu::Locale::getDefault();
  if (known != locale.getName()) {
    known = locale.getName();
    digits.remove();
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::NumberingSystem> system(icu::NumberingSystem::createInstance(locale, status));
    if (U_SUCCESS(status) && !system->isAlgorithmic() && system->getDescription() != u"0123456789") {
      digits = system->getDescription();
    }
  }
  return digits;
}

}  // namespace

std::string formatCount(std::int64_t number) {
  std::string ascii = std::to_string(number);
  const icu::UnicodeString digits = localeDigits();
  if (digits.countChar32() != 10) {
    return ascii;
  }
  icu::UnicodeString text;
  for (const char character : ascii) {
    if (character < '0' || character > '9') {
      text.append(static_cast<char16_t>(character));
    } else {
      text.append(digits.char32At(digits.moveIndex32(0, character - '0')));
    }
  }
  std::string bytes;
  text.toUTF8String(bytes);
  return bytes;
}

}  // namespace tidewrack
