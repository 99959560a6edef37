#include "platform/date_pattern.h"

#include <charconv>
#include <chrono>
#include <cstring>

#include <unicode/calendar.h>
#include <unicode/decimfmt.h>
#include <unicode/dtfmtsym.h>

namespace tidewrack {
namespace {

using icu::DateFormatSymbols;
using icu::UnicodeString;

// Within these years the Gregorian calendar holds everywhere and a year has four digits.
constexpr int firstYear = 1600;
constexpr int lastYear = 9999;

std::string utf8(const UnicodeString& text) {
  std::string bytes;
  text.toUTF8String(bytes);
  return bytes;
}

std::vector<std::string> utf8(const UnicodeString* texts, int count) {
  std::vector<std::string> result;
  result.reserve(static_cast<size_t>(count));
  for (int index = 0; index < count; ++index) {
    result.push_back(utf8(texts[index]));
  }
  return result;
}

bool hasEuropeanDigits(const icu::SimpleDateFormat& format) {
  const auto* numbers = dynamic_cast<const icu::DecimalFormat*>(format.getNumberFormat());
  return numbers != nullptr && numbers->getDecimalFormatSymbols()->getConstSymbol(
                                   icu::DecimalFormatSymbols::kZeroDigitSymbol) == UnicodeString(u'0');
}

void appendNumber(std::string& text, int number, int width) {
  std::array<char, 16> digits{};
  const auto* end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  const auto count = end - digits.data();
  if (count < width) {
    text.append(static_cast<std::size_t>(width - count), '0');
  }
  text.append(digits.data(), static_cast<std::size_t>(count));
}

bool isLetter(char16_t unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

}  // namespace

std::optional<DatePattern::Part> DatePattern::partOf(char16_t letter, int count,
                                                     const DateFormatSymbols& symbols) {
  int size = 0;
  switch (letter) {
    case u'y':
      return count == 2 ? std::nullopt : std::optional(Part{Field::year, count});
    case u'M':
    case u'L': {
      if (count <= 2) {
        return Part{Field::month, count};
      }
      if (count > 4) {
        return std::nullopt;
      }
      const auto* names =
          symbols.getMonths(size, letter == u'M' ? DateFormatSymbols::FORMAT : DateFormatSymbols::STANDALONE,
                            count == 3 ? DateFormatSymbols::ABBREVIATED : DateFormatSymbols::WIDE);
      return size < 12 ? std::nullopt : std::optional(Part{Field::monthName, 1, {}, utf8(names, 12)});
    }
    case u'E': {
      if (count > 3) {
        return std::nullopt;
      }
      const auto* names =
          symbols.getWeekdays(size, DateFormatSymbols::FORMAT, DateFormatSymbols::ABBREVIATED);
      return size < 8 ? std::nullopt : std::optional(Part{Field::weekday, 1, {}, utf8(names + 1, 7)});
    }
    case u'd':
      return Part{Field::day, count};
    case u'H':
      return Part{Field::hour24, count};
    case u'h':
      return Part{Field::hour12, count};
    case u'm':
      return Part{Field::minute, count};
    case u's':
      return Part{Field::second, count};
    case u'a': {
      const auto* names = symbols.getAmPmStrings(size);
      return count > 3 || size < 2 ? std::nullopt : std::optional(Part{Field::period, 1, {}, utf8(names, 2)});
    }
    default:
      return std::nullopt;
  }
}

std::optional<DatePattern> DatePattern::of(const icu::SimpleDateFormat& format) {
  if (std::strcmp(format.getCalendar()->getType(), "gregorian") != 0 || !hasEuropeanDigits(format)) {
    return std::nullopt;
  }
  UnicodeString pattern;
  format.toPattern(pattern);
  DatePattern result;
  UnicodeString literal;
  bool isQuoted = false;
  const auto endLiteral = [&] {
    if (!literal.isEmpty()) {
      result.parts_.push_back({Field::literal, 1, utf8(literal)});
      literal.remove();
    }
  };
  for (int index = 0; index < pattern.length(); ++index) {
    const char16_t unit = pattern[index];
    if (unit == u'\'') {
      // Two together are one that is meant.
      if (index + 1 < pattern.length() && pattern[index + 1] == u'\'') {
        literal += unit;
        ++index;
      } else {
        isQuoted = !isQuoted;
      }
    } else if (isQuoted || !isLetter(unit)) {
      literal += unit;
    } else {
      int count = 1;
      while (index + 1 < pattern.length() && pattern[index + 1] == unit) {
        ++count;
        ++index;
      }
      endLiteral();
      auto part = partOf(unit, count, *format.getDateFormatSymbols());
      if (!part) {
        return std::nullopt;
      }
      result.parts_.push_back(std::move(*part));
    }
  }
  endLiteral();
  result.zone_.reset(format.getTimeZone().clone());
  return result;
}

bool DatePattern::append(std::string& text, Date date) const {
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t raw = 0;
  std::int32_t dst = 0;
  zone_->getOffset(static_cast<double>(date.time_since_epoch().count()), 0, raw, dst, status);
  // Compared before anything is added: a date may be as far away as a date can be.
  constexpr std::chrono::sys_days first = std::chrono::year(firstYear) / 1 / 2;
  constexpr std::chrono::sys_days last = std::chrono::year(lastYear) / 12 / 30;
  if (U_FAILURE(status) != 0 || date < first || date > last) {
    return false;
  }
  const Date local = date + std::chrono::milliseconds(raw + dst);
  const auto day = std::chrono::floor<std::chrono::days>(local);
  const std::chrono::year_month_day civil(day);
  const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::seconds>(local - day));
  const int hour = static_cast<int>(time.hours().count());
  for (const Part& part : parts_) {
    switch (part.field) {
      case Field::literal:
        text += part.literal;
        break;
      case Field::year:
        appendNumber(text, static_cast<int>(civil.year()), part.width);
        break;
      case Field::month:
        appendNumber(text, static_cast<int>(static_cast<unsigned>(civil.month())), part.width);
        break;
      case Field::monthName:
        text += part.names[static_cast<unsigned>(civil.month()) - 1];
        break;
      case Field::day:
        appendNumber(text, static_cast<int>(static_cast<unsigned>(civil.day())), part.width);
        break;
      case Field::weekday:
        text += part.names[std::chrono::weekday(day).c_encoding()];
        break;
      case Field::hour24:
        appendNumber(text, hour, part.width);
        break;
      case Field::hour12:
        appendNumber(text, hour % 12 == 0 ? 12 : hour % 12, part.width);
        break;
      case Field::minute:
        appendNumber(text, static_cast<int>(time.minutes().count()), part.width);
        break;
      case Field::second:
        appendNumber(text, static_cast<int>(time.seconds().count()), part.width);
        break;
      case Field::period:
        text += part.names[hour < 12 ? 0 : 1];
        break;
    }
  }
  return true;
}

}  // namespace tidewrack
