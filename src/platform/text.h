#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace tidewrack {

/// An immutable piece of valid UTF-8, one pointer wide. Copying shares the bytes, so that a list of a
/// million messages holds each library name, address and label once. It compares, hashes and converts
/// as std::string_view does (by bytes). An empty Text owns no memory. Safe to copy between threads.
class Text {
 public:
  Text() noexcept = default;
  Text(std::string_view text);  // NOLINT(google-explicit-constructor): a Text stands wherever text stands.
  Text(const std::string& text) : Text(std::string_view(text)) {}  // NOLINT(google-explicit-constructor)
  Text(const char* text) : Text(std::string_view(text)) {}         // NOLINT(google-explicit-constructor)
  Text(const Text& other) noexcept : block_(other.block_) {
    if (block_ != nullptr) {
      block_->references.fetch_add(1, std::memory_order_relaxed);
    }
  }
  Text(Text&& other) noexcept : block_(other.block_) { other.block_ = nullptr; }
  Text& operator=(const Text& other) noexcept;
  Text& operator=(Text&& other) noexcept;
  ~Text() { release(); }

  [[nodiscard]] std::string_view view() const noexcept {
    return block_ == nullptr ? std::string_view() : std::string_view(block_->bytes(), block_->size());
  }
  [[nodiscard]] std::string string() const { return std::string(view()); }
  [[nodiscard]] bool empty() const noexcept { return block_ == nullptr; }
  /// Number of UTF-8 bytes.
  [[nodiscard]] std::size_t size() const noexcept { return view().size(); }
  operator std::string_view() const noexcept { return view(); }  // NOLINT(google-explicit-constructor)

  friend bool operator==(const Text& a, const Text& b) noexcept {
    return a.block_ == b.block_ || a.view() == b.view();
  }
  friend bool operator==(const Text& a, std::string_view b) noexcept { return a.view() == b; }
  friend bool operator==(const Text& a, const std::string& b) noexcept { return a.view() == b; }
  friend bool operator==(const Text& a, const char* b) noexcept { return a.view() == b; }
  friend std::strong_ordering operator<=>(const Text& a, const Text& b) noexcept {
    return a.view() <=> b.view();
  }
  friend std::ostream& operator<<(std::ostream& out, const Text& text) { return out << text.view(); }

 private:
  // The bytes follow the head directly. The size is split in two words to keep the head at 12 bytes.
  struct Block {
    std::atomic<std::uint32_t> references;
    std::uint32_t sizeLow;
    std::uint32_t sizeHigh;

    [[nodiscard]] std::size_t size() const noexcept {
      return static_cast<std::size_t>(sizeLow) | (static_cast<std::size_t>(sizeHigh) << 32U);
    }
    [[nodiscard]] char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
  };
  static void free(Block* block) noexcept;
  void release() noexcept {
    if (block_ != nullptr && block_->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      free(block_);  // NOLINT(clang-analyzer-unix.Malloc): only the last reference comes here.
    }
  }

  Block* block_ = nullptr;
};

}  // namespace tidewrack

template <>
struct std::hash<tidewrack::Text> {
  std::size_t operator()(const tidewrack::Text& text) const noexcept {
    return std::hash<std::string_view>()(text.view());
  }
};
