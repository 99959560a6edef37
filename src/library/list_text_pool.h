#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/text.h"

namespace tidewrack {

/// Gives one shared Text for equal bytes, so that a long list holds each address, label and thread key once.
/// It forgets nothing and lives as long as a list is being read. One thread at a time.
class ListTextPool {
 public:
  Text text(std::string_view bytes) {
    if (bytes.empty()) {
      return {};
    }
    if (2 * (count_ + 1) > slots_.size()) {
      grow();
    }
    const std::size_t hash = std::hash<std::string_view>()(bytes);
    Slot* slot = start(hash);
    while (!slot->text.empty() && (slot->hash != hash || slot->text != bytes)) {
      slot = next(slot);
    }
    if (slot->text.empty()) {
      *slot = {hash, Text(bytes)};
      ++count_;
    }
    return slot->text;
  }

 private:
  // Open addressing with linear probing over a power of two; an empty slot ends a search. The hash beside the
  // text spares the way to the bytes of most texts that differ.
  struct Slot {
    std::size_t hash = 0;
    Text text;
  };

  Slot* start(std::size_t hash) { return &slots_[hash & (slots_.size() - 1)]; }
  Slot* next(Slot* slot) { return slot == &slots_.back() ? &slots_.front() : slot + 1; }

  void grow() {
    std::vector<Slot> old(slots_.empty() ? 1024 : 2 * slots_.size());
    old.swap(slots_);
    for (Slot& each : old) {
      if (!each.text.empty()) {
        Slot* slot = start(each.hash);
        while (!slot->text.empty()) {
          slot = next(slot);
        }
        *slot = std::move(each);
      }
    }
  }

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};

}  // namespace tidewrack
