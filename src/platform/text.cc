#include "platform/text.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace tidewrack {

// The bytes follow the head directly. The size is split in two words to keep the head at 12 bytes.
struct Text::Block {
  std::atomic<std::uint32_t> references;
  std::uint32_t sizeLow;
  std::uint32_t sizeHigh;

  [[nodiscard]] std::size_t size() const noexcept {
    return static_cast<std::size_t>(sizeLow) | (static_cast<std::size_t>(sizeHigh) << 32U);
  }
  [[nodiscard]] char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
};

Text::Text(std::string_view text) {
  if (text.empty()) {
    return;
  }
  void* memory = std::malloc(sizeof(Block) + text.size());
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  block_ = new (memory)
      Block{{1}, static_cast<std::uint32_t>(text.size()), static_cast<std::uint32_t>(text.size() >> 32U)};
  std::memcpy(block_->bytes(), text.data(), text.size());
}

Text::Text(const Text& other) noexcept : block_(other.block_) {
  if (block_ != nullptr) {
    block_->references.fetch_add(1, std::memory_order_relaxed);
  }
}

Text& Text::operator=(const Text& other) noexcept {
  Text copy(other);
  std::swap(block_, copy.block_);
  return *this;
}

Text& Text::operator=(Text&& other) noexcept {
  std::swap(block_, other.block_);
  return *this;
}

std::string_view Text::view() const noexcept {
  return block_ == nullptr ? std::string_view() : std::string_view(block_->bytes(), block_->size());
}

void Text::release() noexcept {
  if (block_ != nullptr && block_->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    block_->~Block();
    std::free(block_);
  }
}

}  // namespace tidewrack
