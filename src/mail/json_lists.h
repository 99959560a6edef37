#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "mail/records.h"

/// The fast half of mail/json_coding.h: reads the lists that it writes itself, and nothing else.
namespace tidewrack {

/// Makes a Text of the bytes of a string, as a pool of equal texts does.
using MakeText = std::function<Text(std::string_view)>;

/// Reads a compact JSON array of objects with the keys `address` and, behind it, perhaps `name`, or of
/// strings, and adds what it holds to the list. False, with the list in any state, for JSON in another form
/// and for texts with escapes or with bytes that are no UTF-8; these are left to the general reader. Linear;
/// safe from any thread.
bool readAddresses(std::string_view json, std::vector<EmailAddress>& addresses, const MakeText& makeText);
bool readStrings(std::string_view json, std::vector<Text>& strings, const MakeText& makeText);

/// The MakeText without a pool.
inline Text makeOwnText(std::string_view bytes) {
  return {bytes};
}

}  // namespace tidewrack
