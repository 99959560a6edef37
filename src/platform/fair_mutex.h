#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace tidewrack {

/// A mutex that is granted in the order of asking. A thread that locks and unlocks it in a loop lets the
/// others in between two rounds, which std::mutex does not promise.
class FairMutex {
 public:
  void lock() {
    std::unique_lock guard(mutex_);
    const std::uint64_t ticket = next_++;
    turn_.wait(guard, [&] { return serving_ == ticket; });
  }
  void unlock() {
    const std::lock_guard guard(mutex_);
    ++serving_;
    if (serving_ != next_) {
      turn_.notify_all();
    }
  }

 private:
  std::mutex mutex_;
  std::condition_variable turn_;
  std::uint64_t next_ = 0;
  std::uint64_t serving_ = 0;
};

}  // namespace tidewrack
