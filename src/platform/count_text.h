#pragma once

#include <cstdint>
#include <string>

namespace tidewrack {

/// A whole number in the digits of the current locale, without separators. Safe from any thread.
std::string formatCount(std::int64_t number);

}  // namespace tidewrack
