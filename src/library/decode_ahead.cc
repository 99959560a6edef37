#include "library/decode_ahead.h"

#include <exception>
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
  waiting_.stop();
  thread_.join();
}

void DecodeAhead::run() {
  try {
    decodeAll();
    waiting_.close();
  } catch (...) {
    waiting_.close(std::current_exception());
  }
}

void DecodeAhead::decodeAll() {
  Batch batch;
  std::size_t bytes = 0;
  for (const std::size_t index : indices_) {
    batch.push_back(decode(*messages_[index], index));
    bytes += weightOf(batch.back());
    if (bytes >= batchBytes || batch.size() >= batchMessages) {
      if (!waiting_.push(std::exchange(batch, {}), std::exchange(bytes, 0))) {
        return;
      }
    }
  }
  if (!batch.empty()) {
    waiting_.push(std::move(batch), bytes);
  }
}

}  // namespace tidewrack
