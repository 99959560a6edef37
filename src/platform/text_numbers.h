#pragma once

#include <array>
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
  /// numberOf for many texts, in order. `textAt` gives each by its place as a reference, `visit` takes the
  /// place and the number. The texts of a list lie far apart: their memory is asked for some steps ahead.
  template <typename TextAt, typename Visit>
  void numberEach(std::size_t count, TextAt textAt, Visit visit);
  /// The same for find; the texts may be of another type with a view.
  template <typename TextAt, typename Visit>
  void findEach(std::size_t count, TextAt textAt, Visit visit) const;
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

  static std::uint32_t hashOf(std::string_view text);
  [[nodiscard]] std::size_t slotOf(std::string_view text, std::uint32_t hash) const;
  Number numberOf(const Text& text, std::uint32_t hash);
  [[nodiscard]] std::optional<Number> find(std::string_view text, std::uint32_t hash) const;
  template <typename TextAt, typename Visit>
  void hashAhead(std::size_t count, TextAt textAt, Visit visit) const;
  void grow(std::size_t slots);

  std::vector<Slot> slots_;  ///< A power of two, at most half full.
  std::vector<Text> texts_;
};

// Calls `visit` with each place, text and hash.
template <typename TextAt, typename Visit>
void TextNumbers::hashAhead(std::size_t count, TextAt textAt, Visit visit) const {
  constexpr std::size_t stepsToText = 24;
  constexpr std::size_t stepsToBytes = 16;
  constexpr std::size_t stepsToSlot = 8;
  std::array<std::uint32_t, stepsToSlot> hashes;
  for (std::size_t i = 0; i < count + stepsToText; ++i) {
    if (i < count) {
      __builtin_prefetch(&textAt(i));
    }
    if (const std::size_t place = i - (stepsToText - stepsToBytes); place < count) {
      __builtin_prefetch(std::string_view(textAt(place)).data());
    }
    if (const std::size_t place = i - stepsToText; place < count) {
      visit(place, textAt(place), hashes[place % stepsToSlot]);
    }
    if (const std::size_t place = i - (stepsToText - stepsToSlot); place < count) {
      const auto hash = hashOf(std::string_view(textAt(place)));
      hashes[place % stepsToSlot] = hash;
      if (!slots_.empty()) {
        __builtin_prefetch(&slots_[hash & (slots_.size() - 1)]);
      }
    }
  }
}

template <typename TextAt, typename Visit>
void TextNumbers::numberEach(std::size_t count, TextAt textAt, Visit visit) {
  hashAhead(count, textAt, [&](std::size_t place, const Text& text, std::uint32_t hash) {
    visit(place, numberOf(text, hash));
  });
}

template <typename TextAt, typename Visit>
void TextNumbers::findEach(std::size_t count, TextAt textAt, Visit visit) const {
  hashAhead(count, textAt, [&](std::size_t place, std::string_view text, std::uint32_t hash) {
    visit(place, find(text, hash));
  });
}

}  // namespace tidewrack
