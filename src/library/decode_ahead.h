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

/// A message ready to be written: its lists as JSON, its contents decoded.
struct DecodedMessage {
  std::size_t index = 0;  ///< Its place in the list.
  std::string toData;
  std::string ccData;
  std::string labelsData;
  std::string referencesData;
  std::optional<std::string> plainBody;
  std::optional<std::string> htmlBody;
  std::vector<std::string> attachments;

  /// Memory that it takes, roughly, in bytes.
  [[nodiscard]] std::size_t weight() const;
};

/// Decodes the messages of a list on a thread of its own, ahead of the one that writes them. What waits is
/// bounded by bytes, whatever the number of messages. The list must outlive the object.
class DecodeAhead {
 public:
  /// `indices` are the places to decode, in this order.
  DecodeAhead(const MessageList& messages, std::vector<std::size_t> indices);
  /// Stops the thread.
  ~DecodeAhead();
  DecodeAhead(const DecodeAhead&) = delete;
  DecodeAhead& operator=(const DecodeAhead&) = delete;

  /// Waits until either everything is decoded or the bound is reached; true for the first.
  bool fitsIntoMemory();
  /// The next message, or nothing behind the last one. Throws what its decoding threw.
  std::optional<DecodedMessage> next();

  /// Bytes that may wait (one message more may be under way).
  static constexpr std::size_t bound = std::size_t{32} << 20U;

 private:
  void run();

  const MessageList& messages_;
  const std::vector<std::size_t> indices_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<DecodedMessage> waiting_;
  std::size_t waitingBytes_ = 0;
  bool done_ = false;
  bool stopped_ = false;
  std::exception_ptr failure_;
  std::thread thread_;  // Last: it uses the rest.
};

}  // namespace tidewrack
