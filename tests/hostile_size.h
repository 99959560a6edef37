#pragma once

#include <cstddef>

namespace tidewrack {

// The size of hostile inputs: large enough that work of quadratic order would never end, and smaller
// where sanitizers make every step slow.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr std::size_t hostileSize = 1'000'000;
#else
inline constexpr std::size_t hostileSize = 10'000'000;
#endif

}  // namespace tidewrack
