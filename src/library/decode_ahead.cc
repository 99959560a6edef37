#include "library/decode_ahead.h"

#include <utility>

#include "mail/json_coding.h"

namespace tidewrack {
namespace {

DecodedMessage decode(const EmailMessage& message, std::size_t index) {
  DecodedMessage decoded;
  decoded.index = index;
  decoded.toData = encodeAddresses(message.to);
  decoded.ccData = encodeAddresses(message.cc);
  decoded.labelsData = encodeStrings(message.labels);
  decoded.referencesData = encodeStrings(message.references);
  if (message.plainBody) {
    decoded.plainBody = message.plainBody->bytes();
  }
  if (message.htmlBody) {
    decoded.htmlBody = message.htmlBody->bytes();
  }
  decoded.attachments.reserve(message.attachments.size());
  for (const auto& attachment : message.attachments) {
    decoded.attachments.push_back(attachment.data.bytes());
  }
  return decoded;
}

}  // namespace

std::size_t DecodedMessage::weight() const {
  std::size_t bytes = sizeof(DecodedMessage) + toData.size() + ccData.size() + labelsData.size() +
                      referencesData.size() + (plainBody ? plainBody->size() : 0) +
                      (htmlBody ? htmlBody->size() : 0);
  for (const auto& attachment : attachments) {
    bytes += sizeof(std::string) + attachment.size();
  }
  return bytes;
}

DecodeAhead::DecodeAhead(const MessageList& messages, std::vector<std::size_t> indices)
    : messages_(messages), indices_(std::move(indices)), thread_([this] { run(); }) {}

DecodeAhead::~DecodeAhead() {
  {
    const std::lock_guard guard(mutex_);
    stopped_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void DecodeAhead::run() {
  try {
    for (const std::size_t index : indices_) {
      DecodedMessage decoded = decode(*messages_[index], index);
      std::unique_lock guard(mutex_);
      changed_.wait(guard, [&] { return waitingBytes_ < bound || stopped_; });
      if (stopped_) {
        return;
      }
      waitingBytes_ += decoded.weight();
      waiting_.push_back(std::move(decoded));
      // The writer sleeps only on an empty queue, or before it has begun.
      if (waiting_.size() == 1 || waitingBytes_ >= bound) {
        changed_.notify_all();
      }
    }
  } catch (...) {
    const std::lock_guard guard(mutex_);
    failure_ = std::current_exception();
  }
  {
    const std::lock_guard guard(mutex_);
    done_ = true;
  }
  changed_.notify_all();
}

bool DecodeAhead::fitsIntoMemory() {
  std::unique_lock guard(mutex_);
  changed_.wait(guard, [&] { return done_ || waitingBytes_ >= bound; });
  return done_;
}

std::optional<DecodedMessage> DecodeAhead::next() {
  std::unique_lock guard(mutex_);
  changed_.wait(guard, [&] { return !waiting_.empty() || done_; });
  if (waiting_.empty()) {
    if (failure_) {
      std::rethrow_exception(failure_);
    }
    return std::nullopt;
  }
  DecodedMessage decoded = std::move(waiting_.front());
  waiting_.pop_front();
  const bool wasFull = waitingBytes_ >= bound;
  waitingBytes_ -= decoded.weight();
  if (wasFull) {
    changed_.notify_all();
  }
  return decoded;
}

}  // namespace tidewrack
