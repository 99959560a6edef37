#pragma once

#include <coroutine>
#include <deque>
#include <utility>

#include "platform/executor.h"

namespace tidewrack {

/// Lets flows of the main thread use something one after the other, in the order in which they came:
///   const auto turn = co_await lock.turn(executor);
/// The turn ends with the scope. It is no thread lock: nobody blocks. Main thread only.
class FlowLock {
 public:
  class Turn {
   public:
    Turn(FlowLock& lock, Executor& executor) : lock_(&lock), executor_(&executor) {}
    Turn(Turn&& other) noexcept : lock_(std::exchange(other.lock_, nullptr)), executor_(other.executor_) {}
    Turn& operator=(Turn&&) = delete;
    ~Turn() {
      if (lock_) {
        lock_->pass(*executor_);
      }
    }

   private:
    FlowLock* lock_;
    Executor* executor_;
  };

  [[nodiscard]] auto turn(Executor& executor) {
    struct Awaiter {
      FlowLock& lock;
      Executor& executor;
      bool await_ready() const noexcept { return !std::exchange(lock.isTaken_, true); }
      void await_suspend(std::coroutine_handle<> waiting) { lock.waiting_.push_back(waiting); }
      Turn await_resume() const noexcept { return Turn(lock, executor); }
    };
    return Awaiter{*this, executor};
  }

 private:
  // The next flow goes on from the main loop, not from within the scope that ends here.
  void pass(Executor& executor) {
    if (waiting_.empty()) {
      isTaken_ = false;
      return;
    }
    const auto next = waiting_.front();
    waiting_.pop_front();
    executor.post([next] { next.resume(); });
  }

  bool isTaken_ = false;
  std::deque<std::coroutine_handle<>> waiting_;
};

}  // namespace tidewrack
