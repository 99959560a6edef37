#pragma once

#include <optional>
#include <string_view>

#include "platform/date.h"

namespace tidewrack {

/// Reads the value of a Date header: the first of these formats (Unicode Technical Standard 35, part 4,
/// locale en_US_POSIX, not lenient) that matches, where behind the match there may be nothing but blanks
/// and parenthesised comments (RFC 5322, section 3.2.2):
///   `EEE, d MMM yyyy HH:mm:ss Z`, `d MMM yyyy HH:mm:ss Z`, `EEE, d MMM yyyy HH:mm Z`, `d MMM yyyy HH:mm Z`.
/// A week day that does not fit the date is ignored; a year of two digits is taken as written. Nothing for
/// any other text, and for one whose match would be longer than 200 characters. Safe from any thread.
std::optional<Date> parseDate(std::optional<std::string_view> value);

}  // namespace tidewrack
