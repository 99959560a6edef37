#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "library/message_store.h"
#include "mail/content.h"

namespace tidewrack {

/// Makes Contents that read a row of the table "content" when asked; the size is known beforehand. The
/// Contents of some dozens of neighbours share one piece of memory, so that a long list stays small. One
/// thread at a time; what it makes is safe from any thread and keeps the store open.
class StoredContents {
 public:
  explicit StoredContents(std::shared_ptr<MessageStore> store) : store_(std::move(store)) {}

  Content content(std::int64_t number, std::uint64_t size);

 private:
  class Source;
  struct Block;

  std::shared_ptr<MessageStore> store_;
  std::shared_ptr<Block> block_;  // The one that is being filled.
};

}  // namespace tidewrack
