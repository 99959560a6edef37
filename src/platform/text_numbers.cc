#include "platform/text_numbers.h"

#include <algorithm>
#include <bit>
#include <functional>

namespace tidewrack {
namespace {

constexpr std::size_t fewestSlots = 16;

}  // namespace

std::uint32_t TextNumbers::hashOf(std::string_view text) {
  const std::size_t hash = std::hash<std::string_view>()(text);
  return static_cast<std::uint32_t>(hash ^ (hash >> 32U));
}

TextNumbers::TextNumbers(std::initializer_list<Text> texts) {
  for (const Text& text : texts) {
    numberOf(text);
  }
}

// The slot of the text, or the free one where it would stand.
std::size_t TextNumbers::slotOf(std::string_view text, std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = hash & mask;
  while (slots_[at].number != nobody &&
         (slots_[at].hash != hash || texts_[slots_[at].number].view() != text)) {
    at = (at + 1) & mask;
  }
  return at;
}

TextNumbers::Number TextNumbers::numberOf(const Text& text) {
  return numberOf(text, hashOf(text));
}

TextNumbers::Number TextNumbers::numberOf(const Text& text, std::uint32_t hash) {
  if ((texts_.size() + 1) * 2 > slots_.size()) {
    grow(std::max(fewestSlots, slots_.size() * 2));
  }
  Slot& slot = slots_[slotOf(text, hash)];
  if (slot.number == nobody) {
    slot = {hash, static_cast<Number>(texts_.size())};
    texts_.push_back(text);
  }
  return slot.number;
}

std::optional<TextNumbers::Number> TextNumbers::find(std::string_view text) const {
  return find(text, hashOf(text));
}

std::optional<TextNumbers::Number> TextNumbers::find(std::string_view text, std::uint32_t hash) const {
  if (slots_.empty()) {
    return std::nullopt;
  }
  const Number number = slots_[slotOf(text, hash)].number;
  return number == nobody ? std::nullopt : std::optional(number);
}

void TextNumbers::reserve(std::size_t count) {
  texts_.reserve(count);
  if (count * 2 > slots_.size()) {
    grow(std::max(fewestSlots, std::bit_ceil(count * 2)));
  }
}

void TextNumbers::grow(std::size_t slots) {
  const std::vector<Slot> before = std::move(slots_);
  slots_.assign(slots, Slot{});
  const std::size_t mask = slots - 1;
  for (const Slot& slot : before) {
    if (slot.number != nobody) {
      std::size_t at = slot.hash & mask;
      while (slots_[at].number != nobody) {
        at = (at + 1) & mask;
      }
      slots_[at] = slot;
    }
  }
}

}  // namespace tidewrack
