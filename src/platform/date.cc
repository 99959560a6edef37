#include "platform/date.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <mutex>

#include <unicode/datefmt.h>
#include <unicode/unistr.h>

namespace tidewrack {
namespace {

using std::chrono::milliseconds;

constexpr std::int64_t secondsPerDay = 86400;
// The proleptic Gregorian calendar repeats after 400 years.
constexpr std::int64_t daysPerEra = 146097;
constexpr std::int64_t yearsPerEra = 400;

struct CivilDate {
  std::int64_t year;
  int month;  // 1 to 12
  int day;    // 1 to 31
};

std::int64_t floorDivide(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

// std::chrono::year ends at 32,767; a damaged archive or store may hold any instant.
CivilDate civilDate(std::int64_t daysSince1970) {
  const std::int64_t era = floorDivide(daysSince1970, daysPerEra);
  const auto day = static_cast<int>(daysSince1970 - era * daysPerEra);
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
  return {static_cast<int>(date.year()) + era * yearsPerEra,
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day()))};
}

std::int64_t daysSince1970(const CivilDate& date) {
  const std::int64_t era = floorDivide(date.year, yearsPerEra);
  const std::chrono::year_month_day base{std::chrono::year(static_cast<int>(date.year - era * yearsPerEra)),
                                         std::chrono::month(static_cast<unsigned>(date.month)),
                                         std::chrono::day(static_cast<unsigned>(date.day))};
  return std::chrono::sys_days(base).time_since_epoch().count() + era * daysPerEra;
}

// With leading zeros to at least `width` digits.
void appendNumber(std::string& text, std::int64_t value, std::size_t width) {
  const std::string digits = std::to_string(value);
  text.append(digits.size() < width ? width - digits.size() : 0, '0');
  text += digits;
}

// Reads digits only, exactly `count` of them.
bool readNumber(std::string_view& text, std::size_t count, std::int64_t& value) {
  if (text.size() < count) {
    return false;
  }
  value = 0;
  for (const char digit : text.substr(0, count)) {
    if (digit < '0' || digit > '9') {
      return false;
    }
    value = value * 10 + (digit - '0');
  }
  text.remove_prefix(count);
  return true;
}

bool readSign(std::string_view& text, char sign) {
  if (!text.starts_with(sign)) {
    return false;
  }
  text.remove_prefix(1);
  return true;
}

}  // namespace

std::string formatISO8601(Date date) {
  const std::int64_t seconds = floorDivide(date.time_since_epoch().count(), 1000);
  const std::int64_t days = floorDivide(seconds, secondsPerDay);
  const auto ofDay = static_cast<int>(seconds - days * secondsPerDay);
  const auto civil = civilDate(days);
  // Years beyond four digits carry a sign (ISO 8601, expanded representation).
  std::string text = civil.year < 0 ? "-" : civil.year > 9999 ? "+" : "";
  appendNumber(text, civil.year < 0 ? -civil.year : civil.year, 4);
  appendNumber(text += '-', civil.month, 2);
  appendNumber(text += '-', civil.day, 2);
  appendNumber(text += 'T', ofDay / 3600, 2);
  appendNumber(text += ':', ofDay / 60 % 60, 2);
  appendNumber(text += ':', ofDay % 60, 2);
  return text += 'Z';
}

std::optional<Date> parseISO8601(std::string_view text) {
  std::string_view rest = text;
  const bool isNegative = readSign(rest, '-');
  const bool isSigned = readSign(rest, '+') || isNegative;
  const std::size_t hyphen = rest.find('-');
  // Nine digits hold every year of a Date.
  if (hyphen == std::string_view::npos || hyphen < 4 || hyphen > 9 || (!isSigned && hyphen > 4)) {
    return std::nullopt;
  }
  std::int64_t year = 0;
  std::int64_t month = 0;
  std::int64_t day = 0;
  std::int64_t hour = 0;
  std::int64_t minute = 0;
  std::int64_t second = 0;
  const bool isRead = readNumber(rest, hyphen, year) && readSign(rest, '-') && readNumber(rest, 2, month) &&
                      readSign(rest, '-') && readNumber(rest, 2, day) && readSign(rest, 'T') &&
                      readNumber(rest, 2, hour) && readSign(rest, ':') && readNumber(rest, 2, minute) &&
                      readSign(rest, ':') && readNumber(rest, 2, second) && rest == "Z";
  if (!isRead || month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 59) {
    return std::nullopt;
  }
  const CivilDate civil{isNegative ? -year : year, static_cast<int>(month), static_cast<int>(day)};
  const std::int64_t days = daysSince1970(civil);
  const std::int64_t seconds = days * secondsPerDay + hour * 3600 + minute * 60 + second;
  constexpr std::int64_t mostSeconds = milliseconds::max().count() / 1000;
  if (seconds > mostSeconds || seconds < -mostSeconds - 1) {
    return std::nullopt;
  }
  // The first second that a Date can name begins before the first Date.
  const Date date = seconds == -mostSeconds - 1 ? Date::min() : Date(milliseconds(seconds * 1000));
  // Written again it is the same text: no 31 April, no sign where none belongs.
  return formatISO8601(date) == text ? std::optional(date) : std::nullopt;
}

std::string formatMediumDateShortTime(Date date) {
  static std::mutex mutex;  // ICU formatters hold a calendar that they write to.
  static std::unique_ptr<icu::DateFormat> formatter;
  icu::UnicodeString text;
  {
    const std::scoped_lock lock(mutex);
    if (formatter == nullptr) {
      formatter.reset(
          icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, icu::DateFormat::kShort));
    }
    formatter->format(static_cast<UDate>(date.time_since_epoch().count()), text);
  }
  std::string result;
  text.toUTF8String(result);
  return result;
}

double secondsSince1970(Date date) {
  return static_cast<double>(date.time_since_epoch().count()) / 1000.0;
}

Date dateFromSeconds(double seconds) {
  const double count = std::round(seconds * 1000.0);
  // 2^63 is exact as a double; what is not below it, and what is no number, is clamped.
  constexpr double limit = 9223372036854775808.0;
  if (!(count > -limit)) {
    return Date::min();
  }
  return count < limit ? Date(milliseconds(static_cast<std::int64_t>(count))) : Date::max();
}

}  // namespace tidewrack
