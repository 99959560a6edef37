#pragma once

#include <compare>
#include <cstddef>
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
  Text(const Text& other) noexcept;
  Text(Text&& other) noexcept : block_(other.block_) { other.block_ = nullptr; }
  Text& operator=(const Text& other) noexcept;
  Text& operator=(Text&& other) noexcept;
  ~Text() { release(); }

  [[nodiscard]] std::string_view view() const noexcept;
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
  struct Block;
  void release() noexcept;

  Block* block_ = nullptr;
};

}  // namespace tidewrack

template <>
struct std::hash<tidewrack::Text> {
  std::size_t operator()(const tidewrack::Text& text) const noexcept {
    return std::hash<std::string_view>()(text.view());
  }
};
