#pragma once

#include <string>
#include <string_view>

namespace tidewrack {

/// The text in normalization form C (UAX #15): canonically equivalent texts become the same bytes. Takes and
/// gives valid UTF-8. Safe from any thread.
std::string canonicallyComposed(std::string_view text);

}  // namespace tidewrack
