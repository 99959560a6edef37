#pragma once

#include <string>
#include <string_view>

namespace tidewrack {

/// SHA-256 (FIPS 180-4) of the bytes, as 64 lower-case hexadecimal digits. Safe from any thread.
std::string sha256Hex(std::string_view bytes);

}  // namespace tidewrack
