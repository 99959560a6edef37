#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace tidewrack {

/// Numbers texts from 0 in the order in which they first come, so that a long list can speak of them by
/// small integers. A hash table with open addressing: 24 bytes a text and no memory of its own for each.
/// Reading is safe from any thread while nobody adds.
class TextNumbers {
 public:
  using Number = std::uint32_t;

  TextNumbers() = default;
  TextNumbers(std::initializer_list<Text> texts);

  /// The number of a text, which is given one if it has none.
  Number numberOf(const Text& text);
  /// The number of a text, if it has one.
  [[nodiscard]] std::optional<Number> find(std::string_view text) const;
  [[nodiscard]] const Text& operator[](Number number) const { return texts_[number]; }
  [[nodiscard]] std::size_t size() const { return texts_.size(); }
  /// Makes room for so many texts.
  void reserve(std::size_t count);

 private:
  struct Slot {
    std::uint32_t hash = 0;
    Number number = nobody;
  };
  static constexpr Number nobody = static_cast<Number>(-1);

  [[nodiscard]] std::size_t slotOf(std::string_view text, std::uint32_t hash) const;
  void grow(std::size_t slots);

  std::vector<Slot> slots_;  ///< A power of two, at most half full.
  std::vector<Text> texts_;
};

}  // namespace tidewrack
