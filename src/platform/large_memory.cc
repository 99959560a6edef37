#include "platform/large_memory.h"

#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

namespace tidewrack {
namespace {

constexpr std::size_t largeSize = std::size_t{4} << 20U;

}  // namespace

void prepareLargeMemory(void* memory, std::size_t size) noexcept {
  if (size < largeSize) {
    return;
  }
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(memory) % page) % page;
  madvise(static_cast<char*>(memory) + before, (size - before) / page * page, MADV_HUGEPAGE);
}

}  // namespace tidewrack
