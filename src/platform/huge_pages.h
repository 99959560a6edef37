#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include <sys/mman.h>

namespace tidewrack {

/// Asks the system to back great blocks by pages of 2 MB: a table that is read in no order then costs few
/// walks through the page tables. A system that does not do it serves ordinary pages.
template <typename T>
class HugePageAllocator {
 public:
  using value_type = T;

  HugePageAllocator() = default;
  template <typename Other>
  HugePageAllocator(const HugePageAllocator<Other>&) noexcept {}  // NOLINT(google-explicit-constructor)

  T* allocate(std::size_t count) {
    static_assert(alignof(T) <= pageSize);
    const std::size_t bytes = count * sizeof(T);
    if (bytes < pageSize) {
      return std::allocator<T>().allocate(count);
    }
    void* const block = std::aligned_alloc(pageSize, (bytes + pageSize - 1) / pageSize * pageSize);
    if (block == nullptr) {
      throw std::bad_alloc();
    }
    madvise(block, bytes / pageSize * pageSize, MADV_HUGEPAGE);
    return static_cast<T*>(block);
  }
  void deallocate(T* block, std::size_t count) noexcept {
    if (count * sizeof(T) < pageSize) {
      std::allocator<T>().deallocate(block, count);
    } else {
      std::free(block);
    }
  }

  friend bool operator==(const HugePageAllocator&, const HugePageAllocator&) noexcept { return true; }

 private:
  static constexpr std::size_t pageSize = std::size_t{2} << 20U;
};

/// A vector in such memory, for tables.
template <typename T>
using HugePageVector = std::vector<T, HugePageAllocator<T>>;

}  // namespace tidewrack
