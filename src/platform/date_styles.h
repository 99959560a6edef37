#pragma once

#include <memory>
#include <string>

#include "platform/date.h"

namespace tidewrack {

/// Formats many dates in one style. Making one is expensive, using it is not. One thread at a time.
class DateStyle {
 public:
  /// "October 17, 2020 at 9:41:00 PM" in the current locale and time zone.
  static DateStyle longDateAndTime();
  /// "10/17/2020, 9:41:00 PM" in the current locale and time zone.
  static DateStyle numericDateAndTime();
  /// "10/17/2020, 9:41 PM" in the current locale and time zone.
  static DateStyle numericDateAndShortTime();
  /// "Oct 17, 2020, 9:41:00 PM" in the current locale and time zone.
  static DateStyle abbreviatedDateAndTime();
  /// "Oct 17, 2020" in the current locale and time zone.
  static DateStyle abbreviatedDate();
  /// "Sat Oct 17 21:41:00 2020", the date of a "From " line, in the time zone of the system.
  static DateStyle mboxSeparator();

  DateStyle(DateStyle&&) noexcept;
  DateStyle& operator=(DateStyle&&) noexcept;
  ~DateStyle();

  [[nodiscard]] std::string format(Date date) const;
  /// The same behind a text.
  void append(std::string& text, Date date) const;

 private:
  struct Formatter;
  explicit DateStyle(std::unique_ptr<Formatter> formatter);
  static DateStyle localised(const char* skeleton);

  std::unique_ptr<Formatter> formatter_;
};

}  // namespace tidewrack
