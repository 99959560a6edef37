#pragma once

#include <cstddef>
#include <string_view>

namespace tidewrack {

/// The first position at or behind `from` that follows directly on a CR or LF and at which the bytes `first`
/// and `second` stand; std::string_view::npos when there is none. Position 0 follows on nothing. Takes any
/// bytes, reads nothing outside the view, uses AVX2 where the processor has it. Safe from any thread.
std::size_t findLineStart(std::string_view bytes, char first, char second, std::size_t from) noexcept;

namespace plain {
/// The same in plain C++, which the fast scan must equal.
std::size_t findLineStart(std::string_view bytes, char first, char second, std::size_t from) noexcept;
}  // namespace plain

}  // namespace tidewrack
