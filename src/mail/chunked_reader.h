#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "mail/archive.h"
#include "mail/records.h"
#include "platform/arriving_bytes.h"

namespace tidewrack {

/// Reads all messages of an archive on the calling thread and a few others. The archive is cut into chunks of
/// equal size; a message belongs to the chunk in which it begins. Threads take chunks in order and never run
/// further ahead than a small window, so that memory stays bounded, and the messages come in their order.
class ChunkedReader {
 public:
  ChunkedReader(std::shared_ptr<const Archive> archive, const Text& libraryID, const Text& libraryName);

  /// For tests: another size of chunks (bytes, above 0) and number of helping threads.
  void setChunks(std::size_t chunkSize, std::size_t helperCount);

  /// The bytes of the archive are still arriving: read() waits for them, and throws ArrivalFailure when they
  /// end early. `arriving` has the size of the archive as its total and outlives the reading.
  void follow(const ArrivingBytes& arriving) { arriving_ = &arriving; }

  /// Calls `visit` on this thread for each message in turn. What it throws comes out of here; no helper runs
  /// any more then.
  void read(const std::function<void(std::shared_ptr<const EmailMessage>)>& visit);

 private:
  std::shared_ptr<const Archive> archive_;
  Text libraryID_;
  Text libraryName_;
  std::size_t chunkSize_;
  std::size_t helperCount_;
  const ArrivingBytes* arriving_ = nullptr;  // null: all is there
};

}  // namespace tidewrack
