#include "platform/text.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace tidewrack {

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

Text& Text::operator=(const Text& other) noexcept {
  Text copy(other);
  std::swap(block_, copy.block_);
  return *this;
}

Text& Text::operator=(Text&& other) noexcept {
  std::swap(block_, other.block_);
  return *this;
}

void Text::free(Block* block) noexcept {
  block->~Block();
  std::free(block);
}

}  // namespace tidewrack
