#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tidewrack {

/// Bytes of a text that a line of the window shows at most. Longer ones are mistakes or attacks; laying them
/// out would stop the window.
inline constexpr std::size_t maximumLineBytes = 2000;

/// The text, or its beginning and "…" when it is longer than that. A zero byte, at which a label would end,
/// becomes U+FFFD. Pure; safe from any thread.
std::string shortenedLine(std::string_view text, std::size_t maximumBytes = maximumLineBytes);

}  // namespace tidewrack
