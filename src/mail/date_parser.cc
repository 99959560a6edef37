#include "mail/date_parser.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include <unicode/smpdtfmt.h>

#include "platform/utf8.h"

namespace tidewrack {
namespace {

// Whether there is nothing but blanks and comments. Comments nest, and a backslash protects the character
// behind it.
bool isBlankOrComments(std::string_view text) {
  const char* position = text.data();
  const char* const end = position + text.size();
  std::size_t depth = 0;
  while (position != end) {
    if (*position == '(') {
      ++depth;
    } else if (depth == 0) {
      const std::size_t length = spaceLength(position, end);
      if (length == 0) {
        return false;
      }
      position += length;
      continue;
    } else if (*position == ')') {
      --depth;
    } else if (*position == '\\' && position + 1 != end) {
      ++position;
    }
    ++position;
  }
  return depth == 0;
}

constexpr char lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
}

// The ordinary form of a date, read by hand: `[EEE, ]d MMM yyyy HH:mm[:ss] ` and `+hhmm`, `GMT` or `UTC`,
// with four digits of the year. What it does not know is left to the formats, which agree with it.
class OrdinaryDate {
 public:
  explicit OrdinaryDate(std::string_view text) : rest_(text) {}

  std::optional<Date> read() {
    if (readName(weekDays)) {
      if (!rest_.starts_with(',')) {
        return std::nullopt;
      }
      rest_.remove_prefix(1);
      if (!skipBlanks()) {
        return std::nullopt;
      }
    }
    const auto day = readNumber(1, 2);
    if (!day || !skipBlanks()) {
      return std::nullopt;
    }
    const auto month = readName(months);
    if (!month || !skipBlanks()) {
      return std::nullopt;
    }
    const auto year = readNumber(4, 4);
    if (!year || !skipBlanks()) {
      return std::nullopt;
    }
    const auto seconds = readTime();
    if (!seconds || !skipBlanks()) {
      return std::nullopt;
    }
    const auto offset = readZone();
    if (!offset || !isBlankOrComments(rest_)) {
      return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(*year),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    // Before 1583 the formats count in the Julian calendar.
    if (*year < 1583 || !date.ok()) {
      return std::nullopt;
    }
    return Date(std::chrono::sys_days(date)) + std::chrono::seconds(*seconds - *offset);
  }

 private:
  static constexpr std::string_view weekDays = "sunmontuewedthufrisat";
  static constexpr std::string_view months = "janfebmaraprmayjunjulaugsepoctnovdec";

  // The number, from 1, of a name of three letters.
  std::optional<int> readName(std::string_view names) {
    if (rest_.size() < 3) {
      return std::nullopt;
    }
    const std::array<char, 3> name = {lower(rest_[0]), lower(rest_[1]), lower(rest_[2])};
    for (std::size_t index = 0; index < names.size(); index += 3) {
      if (names.substr(index, 3) == std::string_view(name.data(), name.size())) {
        rest_.remove_prefix(3);
        return static_cast<int>(index / 3) + 1;
      }
    }
    return std::nullopt;
  }

  std::optional<int> readNumber(std::size_t fewest, std::size_t most) {
    std::size_t count = 0;
    int value = 0;
    while (count < rest_.size() && rest_[count] >= '0' && rest_[count] <= '9') {
      if (++count > most) {
        return std::nullopt;
      }
      value = value * 10 + (rest_[count - 1] - '0');
    }
    if (count < fewest) {
      return std::nullopt;
    }
    rest_.remove_prefix(count);
    return value;
  }

  bool skipBlanks() {
    const std::size_t count = std::min(rest_.find_first_not_of(' '), rest_.size());
    rest_.remove_prefix(count);
    return count > 0;
  }

  std::optional<int> readColonAnd(int limit) {
    if (!rest_.starts_with(':')) {
      return std::nullopt;
    }
    rest_.remove_prefix(1);
    const auto value = readNumber(2, 2);
    return value && *value < limit ? value : std::nullopt;
  }

  // In seconds.
  std::optional<int> readTime() {
    const auto hour = readNumber(2, 2);
    const auto minute = readColonAnd(60);
    if (!hour || *hour > 23 || !minute) {
      return std::nullopt;
    }
    int seconds = *hour * 3600 + *minute * 60;
    if (rest_.starts_with(':')) {
      const auto second = readColonAnd(60);
      if (!second) {
        return std::nullopt;
      }
      seconds += *second;
    }
    return seconds;
  }

  // In seconds east of Greenwich. Ends at a blank, a comment or the end.
  std::optional<int> readZone() {
    int offset = 0;
    if (rest_.starts_with("GMT") || rest_.starts_with("UTC")) {
      rest_.remove_prefix(3);
    } else if (rest_.starts_with('+') || rest_.starts_with('-')) {
      const int sign = rest_.front() == '-' ? -1 : 1;
      rest_.remove_prefix(1);
      const auto digits = readNumber(4, 4);
      if (!digits || *digits / 100 > 23 || *digits % 100 > 59) {
        return std::nullopt;
      }
      offset = sign * (*digits / 100 * 3600 + *digits % 100 * 60);
    } else {
      return std::nullopt;
    }
    const bool ends = rest_.empty() || rest_.front() == ' ' || rest_.front() == '(';
    return ends ? std::optional(offset) : std::nullopt;
  }

  std::string_view rest_;
};

// ICU formats belong to one thread, since they write to their calendar.
class DateFormats {
 public:
  DateFormats() {
    constexpr std::array<const char*, 4> patterns = {"EEE, d MMM yyyy HH:mm:ss Z", "d MMM yyyy HH:mm:ss Z",
                                                     "EEE, d MMM yyyy HH:mm Z", "d MMM yyyy HH:mm Z"};
    for (std::size_t index = 0; index < patterns.size(); ++index) {
      UErrorCode status = U_ZERO_ERROR;
      auto format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(patterns[index]),
                                                            icu::Locale("en_US_POSIX"), status);
      if (U_SUCCESS(status)) {
        format->setLenient(false);
        formats_[index] = std::move(format);
      }
    }
  }

  std::optional<Date> parse(std::string_view value) const {
    // No real date comes near this; a header may be as long as a file.
    constexpr std::int32_t longestMatch = 200;
    constexpr std::size_t lookAhead = 4UL * (longestMatch + 50);
    std::size_t size = std::min(value.size(), lookAhead);
    while (size < value.size() && isTrailByte(value[size])) {
      --size;
    }
    const auto text =
        icu::UnicodeString::fromUTF8(icu::StringPiece(value.data(), static_cast<std::int32_t>(size)));
    for (const auto& format : formats_) {
      if (format == nullptr) {
        continue;
      }
      icu::ParsePosition position(0);
      const UDate date = format->parse(text, position);
      const std::int32_t end = position.getIndex();
      if (position.getErrorIndex() < 0 && end > 0 && end <= longestMatch) {
        std::string match;
        text.tempSubString(0, end).toUTF8String(match);
        if (isBlankOrComments(value.substr(match.size()))) {
          return Date(std::chrono::milliseconds(static_cast<std::int64_t>(date)));
        }
      }
    }
    return std::nullopt;
  }

  static const DateFormats& ofThread() {
    thread_local const DateFormats formats;
    return formats;
  }

 private:
  std::array<std::unique_ptr<icu::SimpleDateFormat>, 4> formats_;
};

}  // namespace

std::optional<Date> parseDate(std::optional<std::string_view> value) {
  if (!value || value->empty()) {
    return std::nullopt;
  }
  const auto date = OrdinaryDate(*value).read();
  return date ? date : DateFormats::ofThread().parse(*value);
}

}  // namespace tidewrack
