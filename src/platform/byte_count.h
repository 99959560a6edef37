#pragma once

#include <cstdint>
#include <string>

namespace tidewrack {

/// A number of bytes for people, in units of 1,000 bytes: "512 bytes", "12 KB", "1.2 MB", "3.45 GB".
/// Kilobytes are whole, megabytes have up to one decimal, larger units up to two; the number is written in
/// the current locale. Safe from any thread.
std::string formatByteCount(std::uint64_t bytes);

}  // namespace tidewrack
