#include "platform/calendar.h"

#include <memory>

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/unistr.h>

namespace tidewrack {
namespace {

double milliseconds(Date date) {
  return static_cast<double>(date.time_since_epoch().count());
}

Date stepped(Date date, UCalendarDateFields field, int amount) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(status));
  if (U_FAILURE(status)) {
    return date;
  }
  calendar->setTime(milliseconds(date), status);
  calendar->add(field, amount, status);
  const double result = calendar->getTime(status);
  return U_SUCCESS(status) ? Date(std::chrono::milliseconds(static_cast<std::int64_t>(result))) : date;
}

}  // namespace

Date addDays(Date date, int days) {
  return stepped(date, UCAL_DATE, days);
}

Date addMonths(Date date, int months) {
  return stepped(date, UCAL_MONTH, months);
}

std::string formatShortDate(Date date) {
  std::string text;
  const std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateInstance(icu::DateFormat::kShort));
  if (format) {
    icu::UnicodeString formatted;
    format->format(milliseconds(date), formatted);
    formatted.toUTF8String(text);
  }
  return text;
}

}  // namespace tidewrack
