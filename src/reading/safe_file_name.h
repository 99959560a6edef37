#pragma once

#include <string>
#include <string_view>

namespace tidewrack {

/// A file name that is safe to suggest or to write, out of whatever a mail calls its attachment: without
/// path separators, control characters (Unicode category Cc), bidirectional controls and line separators,
/// without dots or blanks at its start and at most 200 bytes long with its ending kept. Nothing that is left
/// gives "attachment". Pure; safe from any thread.
std::string safeFileName(std::string_view name);

}  // namespace tidewrack
