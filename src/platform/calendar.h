#pragma once

#include <string>

#include "platform/date.h"

/// Steps in the user's calendar and time zone (through ICU). A date that the calendar cannot compute stays
/// as it was. Safe from any thread.
namespace tidewrack {

/// The same time of day some days later, or earlier for a negative number.
Date addDays(Date date, int days);
/// The same day some months later or earlier; the last day of the month where it has no such day.
Date addMonths(Date date, int months);

/// The date alone, in the short style of the current locale.
std::string formatShortDate(Date date);

}  // namespace tidewrack
