#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "mail/records.h"

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
  bool fitsIntoMemory();
  /// The next few messages, or none behind the last one. Throws what their decoding threw.
  Batch next();

  /// Bytes that may wait (one batch more may be under way).
  static constexpr std::size_t bound = std::size_t{32} << 20U;

 private:
  struct Weighed {
    Batch batch;
    std::size_t bytes = 0;
  };

  void run();
  bool push(Weighed batch);

  const MessageList& messages_;
  const std::vector<std::size_t> indices_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Weighed> waiting_;
  std::size_t waitingBytes_ = 0;
  bool done_ = false;
  bool stopped_ = false;
  std::exception_ptr failure_;
  std::thread thread_;  // Last: it uses the rest.
};

}  // namespace tidewrack
