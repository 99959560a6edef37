#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace tidewrack {

/// Gives equal short texts (labels, addresses, thread ids) the same bytes, so that the messages of an archive
/// hold each of them once. It remembers a bounded number of texts: one that falls on the place of another
/// takes it, and what was given out stays as it is. One thread at a time.
class TextPool {
 public:
  Text text(std::string_view text);

 private:
  struct Place {
    std::size_t hash = 0;
    Text text;
  };
  std::vector<Place> places_;
};

/// The text out of the pool, or a new one where there is no pool.
inline Text pooled(std::string_view text, TextPool* pool) {
  return pool != nullptr ? pool->text(text) : Text(text);
}

}  // namespace tidewrack
