#pragma once

#include <cstddef>
#include <vector>

#include "mail/records.h"
#include "platform/task.h"

namespace tidewrack {

/// The system-wide search index as the flows of the screen see it. Main thread only.
class MessageIndexer {
 public:
  virtual ~MessageIndexer() = default;
  /// Puts the messages into the index, `batchSize` at a time. Throws what the index reports.
  virtual Task<> index(MessageList messages, std::size_t batchSize) = 0;
  /// Takes messages out of the index.
  virtual Task<> remove(std::vector<Text> messageIDs) = 0;
};

}  // namespace tidewrack
