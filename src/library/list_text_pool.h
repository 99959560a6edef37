#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace tidewrack {

/// Gives one shared Text for equal bytes, so that a long list holds each address, label and thread key once.
/// Lives as long as a list is being read. One thread at a time.
class ListTextPool {
 public:
  Text text(std::string_view bytes) {
    if (bytes.empty()) {
      return {};
    }
    if (2 * (count_ + 1) > slots_.size()) {
      grow();
    }
    Text& slot = find(bytes);
    if (slot.empty()) {
      slot = Text(bytes);
      ++count_;
    }
    return slot;
  }

 private:
  // Open addressing with linear probing over a power of two. An empty slot ends the search.
  Text& find(std::string_view bytes) {
    std::size_t index = std::hash<std::string_view>()(bytes);
    for (;; ++index) {
      Text& slot = slots_[index & (slots_.size() - 1)];
      if (slot.empty() || slot == bytes) {
        return slot;
      }
    }
  }

  void grow() {
    std::vector<Text> old(slots_.empty() ? 1024 : 2 * slots_.size());
    old.swap(slots_);
    for (Text& text : old) {
      if (!text.empty()) {
        find(text) = std::move(text);
      }
    }
  }

  std::vector<Text> slots_;
  std::size_t count_ = 0;
};

}  // namespace tidewrack
