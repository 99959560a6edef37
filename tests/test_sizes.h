#pragma once

#include <cstddef>

namespace tidewrack {

// The size of hostile inputs, large enough that work of quadratic order would never end, and the number of
// random inputs that a test compares with a plain definition. Fewer where sanitizers make every step slow.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr std::size_t hostileSize = 300'000;
inline constexpr int randomRounds = 2'000;
#else
inline constexpr std::size_t hostileSize = 10'000'000;
inline constexpr int randomRounds = 40'000;
#endif

}  // namespace tidewrack
