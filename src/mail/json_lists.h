#pragma once

#include <string_view>
#include <vector>

#include "mail/records.h"

/// The fast half of mail/json_coding.h: reads the lists that it writes itself, and nothing else.
namespace tidewrack {

/// Reads a compact JSON array of objects with the keys `address` and, behind it, perhaps `name`, or of
/// strings. False, with the list in any state, for JSON in another form and for texts with escapes or with
/// bytes that are no UTF-8; these are left to the general reader. Linear; safe from any thread.
bool readAddresses(std::string_view json, std::vector<EmailAddress>& addresses);
bool readStrings(std::string_view json, std::vector<Text>& strings);

}  // namespace tidewrack
