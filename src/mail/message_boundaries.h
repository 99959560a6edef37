#pragma once

#include <cstddef>
#include <string_view>

#include "platform/arriving_bytes.h"

/// Where the messages of an archive begin and end: every line that begins with "From " ends the message
/// before it and is no part of any message, wherever it stands; nothing else about the line counts. Text in
/// front of the first such line is a message, too. CR, LF and CRLF end lines. Any bytes are allowed.
namespace tidewrack {

/// Of the "From " that makes a line a separator.
inline constexpr std::size_t separatorSize = 5;

/// The first line with "From " that begins at or behind `from`; the size of the bytes when there is none.
std::size_t findSeparator(std::string_view bytes, std::size_t from) noexcept;

/// What follows the line that begins at `line`, without the first character of its line end.
std::size_t behindLine(std::string_view bytes, std::size_t line) noexcept;

/// The same in bytes that are still arriving (`arriving` counts them): nothing is looked at before it is
/// there. They wait for more where what is there does not hold the answer, and throw ArrivalFailure when it
/// never comes. Linear time, however small the steps are.
std::size_t findSeparator(std::string_view bytes, std::size_t from, const ArrivingBytes& arriving);
std::size_t behindLine(std::string_view bytes, std::size_t line, const ArrivingBytes& arriving);

}  // namespace tidewrack
