#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tidewrack {

/// An absolute instant, in milliseconds since 1970-01-01T00:00:00Z.
using Date = std::chrono::sys_time<std::chrono::milliseconds>;

/// Sorts before every real date: the place of an undated message in a list.
inline constexpr Date distantPast = Date::min();

/// "2026-05-14T10:00:00Z": ISO 8601 in UTC with whole seconds (a fraction is cut off).
std::string formatISO8601(Date date);

/// Reads exactly the form that formatISO8601 writes; nothing for any other text.
std::optional<Date> parseISO8601(std::string_view text);

/// The date in the medium date style and the short time style of the current locale.
/// The formatter is made once and shared; safe from any thread.
std::string formatMediumDateShortTime(Date date);

/// Seconds since 1970 as a double, the form in which dates are stored.
double secondsSince1970(Date date);
Date dateFromSeconds(double seconds);

}  // namespace tidewrack
