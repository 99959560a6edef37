#include "platform/arriving_bytes.h"

#include <algorithm>

namespace tidewrack {

ArrivingBytes::ArrivingBytes(std::size_t total, std::size_t count)
    : total_(total), count_(std::min(count, total)) {}

void ArrivingBytes::arrive(std::size_t count) {
  const std::lock_guard lock(mutex_);
  const std::size_t there = std::min(count, total_);
  if (!isEnded_ && there > count_.load(std::memory_order_relaxed)) {
    count_.store(there, std::memory_order_release);
    changed_.notify_all();
  }
}

void ArrivingBytes::end() {
  const std::lock_guard lock(mutex_);
  isEnded_ = true;
  changed_.notify_all();
}

std::size_t ArrivingBytes::waitUntil(std::size_t count) const {
  const std::size_t wanted = std::min(count, total_);
  if (const std::size_t there = this->count(); there >= wanted) {
    return there;
  }
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return isEnded_ || this->count() >= wanted; });
  if (this->count() < wanted) {
    throw ArrivalFailure();
  }
  return this->count();
}

}  // namespace tidewrack
