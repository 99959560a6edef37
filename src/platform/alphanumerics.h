#pragma once

#include <cstddef>
#include <string_view>

namespace tidewrack {

/// The next run of letters, marks and numbers of any script (general categories L*, M* and N*) that begins at
/// or behind `position`, which then stands behind it; empty when there is none. The text is valid UTF-8. Safe
/// from any thread.
std::string_view nextAlphanumericRun(std::string_view text, std::size_t& position) noexcept;

}  // namespace tidewrack
