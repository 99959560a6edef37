#pragma once

#include <cstddef>
#include <filesystem>

#include "measure.h"

namespace tidewrack::bench {

/// Measures what the main thread does when the user types, selects, filters or a message gets its category,
/// over a made-up list of `messages` messages, and the first classification of that list against reading its
/// labels from a store in `folder`.
void measureDerivedState(std::size_t messages, int turns, const std::filesystem::path& folder, Table& table);

}  // namespace tidewrack::bench
