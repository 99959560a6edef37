#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

namespace tidewrack {

inline constexpr std::size_t hugePageSize = std::size_t{2} << 20U;

/// Tells the system that all of this fresh memory will soon be used, so that it comes in pages of 2 MB: many
/// megabytes otherwise cost more for their pages, one by one, than for their bytes. A hint only; memory below
/// the size of such a page is left alone. Safe from any thread.
void adviseHugePages(void* memory, std::size_t size) noexcept;

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
    static_assert(alignof(T) <= hugePageSize);
    const std::size_t bytes = count * sizeof(T);
    if (bytes < hugePageSize) {
      return std::allocator<T>().allocate(count);
    }
    void* const block =
        std::aligned_alloc(hugePageSize, (bytes + hugePageSize - 1) / hugePageSize * hugePageSize);
    if (block == nullptr) {
      throw std::bad_alloc();
    }
    adviseHugePages(block, bytes / hugePageSize * hugePageSize);  // No more than is used.
    return static_cast<T*>(block);
  }
  void deallocate(T* block, std::size_t count) noexcept {
    if (count * sizeof(T) < hugePageSize) {
      std::allocator<T>().deallocate(block, count);
    } else {
      std::free(block);
    }
  }

  friend bool operator==(const HugePageAllocator&, const HugePageAllocator&) noexcept { return true; }
};

/// A vector in such memory, for tables.
template <typename T>
using HugePageVector = std::vector<T, HugePageAllocator<T>>;

}  // namespace tidewrack
