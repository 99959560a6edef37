#include "library/decode_ahead.h"

#include <utility>

namespace tidewrack {
namespace {

// What goes from thread to thread in one step: enough that the handing over costs nothing beside the work.
constexpr std::size_t batchBytes = std::size_t{256} << 10U;
constexpr std::size_t batchMessages = 64;

DecodedContents decode(const EmailMessage& message, std::size_t index) {
  DecodedContents decoded;
  decoded.index = index;
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

// Memory that the contents take, roughly, in bytes.
std::size_t weightOf(const DecodedContents& decoded) {
  std::size_t bytes = sizeof decoded + (decoded.plainBody ? decoded.plainBody->size() : 0) +
                      (decoded.htmlBody ? decoded.htmlBody->size() : 0);
  for (const auto& attachment : decoded.attachments) {
    bytes += sizeof attachment + attachment.size();  // NOLINT(bugprone-sizeof-container)
  }
  return bytes;
}

}  // namespace

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
    Weighed current;
    for (const std::size_t index : indices_) {
      current.batch.push_back(decode(*messages_[index], index));
      current.bytes += weightOf(current.batch.back());
      if (current.bytes >= batchBytes || current.batch.size() >= batchMessages) {
        if (!push(std::exchange(current, {}))) {
          return;
        }
      }
    }
    if (!current.batch.empty()) {
      push(std::move(current));
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

// Waits for room; false when the work is to stop.
bool DecodeAhead::push(Weighed batch) {
  {
    std::unique_lock guard(mutex_);
    changed_.wait(guard, [&] { return waitingBytes_ < bound || stopped_; });
    if (stopped_) {
      return false;
    }
    waitingBytes_ += batch.bytes;
    waiting_.push_back(std::move(batch));
  }
  changed_.notify_all();
  return true;
}

bool DecodeAhead::fitsIntoMemory() {
  std::unique_lock guard(mutex_);
  changed_.wait(guard, [&] { return done_ || waitingBytes_ >= bound; });
  return done_;
}

DecodeAhead::Batch DecodeAhead::next() {
  Batch batch;
  {
    std::unique_lock guard(mutex_);
    changed_.wait(guard, [&] { return !waiting_.empty() || done_; });
    if (waiting_.empty()) {
      if (failure_) {
        std::rethrow_exception(failure_);
      }
      return batch;
    }
    batch = std::move(waiting_.front().batch);
    waitingBytes_ -= waiting_.front().bytes;
    waiting_.pop_front();
  }
  changed_.notify_all();
  return batch;
}

}  // namespace tidewrack
