#pragma once

#include <cstddef>

namespace tidewrack {

/// Tells the system that all of this fresh memory will soon be written, so that it comes in large pages: a
/// text of many megabytes otherwise costs more for its pages, one by one, than for its bytes. A hint only;
/// small or used memory is left alone. Safe from any thread.
void prepareLargeMemory(void* memory, std::size_t size) noexcept;

}  // namespace tidewrack
