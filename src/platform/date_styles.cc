#include "platform/date_styles.h"

#include <optional>

#include <unicode/dtptngen.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include "platform/date_pattern.h"

namespace tidewrack {

struct DateStyle::Formatter {
  std::unique_ptr<icu::SimpleDateFormat> format;
  std::optional<DatePattern> quick;  // Where the pattern can be written without ICU.
};

DateStyle::DateStyle(std::unique_ptr<Formatter> formatter) : formatter_(std::move(formatter)) {}
DateStyle::DateStyle(DateStyle&&) noexcept = default;
DateStyle& DateStyle::operator=(DateStyle&&) noexcept = default;
DateStyle::~DateStyle() = default;

DateStyle DateStyle::localised(const char* skeleton) {
  UErrorCode status = U_ZERO_ERROR;
  const auto& locale = icu::Locale::getDefault();
  const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
      icu::DateTimePatternGenerator::createInstance(locale, status));
  auto formatter = std::make_unique<Formatter>();
  if (U_SUCCESS(status)) {
    const auto pattern = patterns->getBestPattern(icu::UnicodeString::fromUTF8(skeleton), status);
    formatter->format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
  }
  if (U_FAILURE(status)) {
    formatter->format.reset();
  } else {
    formatter->quick = DatePattern::of(*formatter->format);
  }
  return DateStyle(std::move(formatter));
}

DateStyle DateStyle::longDateAndTime() {
  return localised("yMMMMdjmmss");
}
DateStyle DateStyle::numericDateAndTime() {
  return localised("yMdjmmss");
}
DateStyle DateStyle::numericDateAndShortTime() {
  return localised("yMdjmm");
}
DateStyle DateStyle::abbreviatedDateAndTime() {
  return localised("yMMMdjmmss");
}
DateStyle DateStyle::abbreviatedDate() {
  return localised("yMMMd");
}

DateStyle DateStyle::mboxSeparator() {
  UErrorCode status = U_ZERO_ERROR;
  auto formatter = std::make_unique<Formatter>();
  formatter->format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString("EEE MMM dd HH:mm:ss yyyy"),
                                                              icu::Locale("en_US_POSIX"), status);
  if (U_FAILURE(status)) {
    formatter->format.reset();
  } else {
    formatter->quick = DatePattern::of(*formatter->format);
  }
  return DateStyle(std::move(formatter));
}

std::string DateStyle::format(Date date) const {
  std::string bytes;
  append(bytes, date);
  return bytes;
}

void DateStyle::append(std::string& text, Date date) const {
  if (!formatter_->format) {
    text += formatISO8601(date);
    return;
  }
  if (formatter_->quick && formatter_->quick->append(text, date)) {
    return;
  }
  icu::UnicodeString formatted;
  formatter_->format->format(static_cast<double>(date.time_since_epoch().count()), formatted);
  formatted.toUTF8String(text);
}

}  // namespace tidewrack
