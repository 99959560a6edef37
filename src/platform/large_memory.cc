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
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + page - 1) / page * page;
  const auto end = (reinterpret_cast<std::uintptr_t>(memory) + size) / page * page;
  madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

}  // namespace tidewrack
