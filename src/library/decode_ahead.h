#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "mail/records.h"
#include "platform/bounded_queue.h"

namespace tidewrack {

/// The contents of a message, decoded.
struct DecodedContents {
  std::size_t index = 0;  ///< Place of the message in the list.
  std::optional<std::string> plainBody;
  std::optional<std::string> htmlBody;
  std::vector<std::string> attachments;
};

/// Decodes the contents of a list of messages on a thread of its own, ahead of the one that writes them. What
/// waits is bounded by bytes, whatever the number of messages. The list must outlive the object.
class DecodeAhead {
 public:
  using Batch = std::vector<DecodedContents>;

  /// `indices` are the places to decode, in this order.
  DecodeAhead(const MessageList& messages, std::vector<std::size_t> indices);
  /// Stops the thread.
  ~DecodeAhead();
  DecodeAhead(const DecodeAhead&) = delete;
  DecodeAhead& operator=(const DecodeAhead&) = delete;

  /// Waits until either everything is decoded or the bound is reached; true for the first.
  bool fitsIntoMemory() { return waiting_.holdsAll(); }
  /// The next few messages, or none behind the last one. Throws what their decoding threw.
  Batch next() { return waiting_.next().value_or(Batch()); }

  /// Bytes that may wait (one batch more may be under way).
  static constexpr std::size_t bound = std::size_t{32} << 20U;

 private:
  void run();
  void decodeAll();

  const MessageList& messages_;
  const std::vector<std::size_t> indices_;
  BoundedQueue<Batch> waiting_{bound};
  std::thread thread_;  // Last: it uses the rest.
};

}  // namespace tidewrack
