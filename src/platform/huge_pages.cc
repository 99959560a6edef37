#include "platform/huge_pages.h"

#include <memory>

#include <sys/mman.h>
#include <unistd.h>

namespace tidewrack {

void adviseHugePages(void* memory, std::size_t size) noexcept {
  if (size < hugePageSize) {
    return;
  }
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  void* begin = memory;
  std::size_t left = size;
  if (std::align(page, page, begin, left) != nullptr) {
    madvise(begin, left / page * page, MADV_HUGEPAGE);
  }
}

}  // namespace tidewrack
