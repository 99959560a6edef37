#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "platform/executor.h"
#include "platform/task.h"

namespace tidewrack {

/// The tests' executor: time passes only when the test says so, and background work runs on the test's own
/// thread, when the test says so and in the order in which it came (user-initiated before utility).
/// `post` may be called from any thread.
class VirtualExecutor : public Executor {
 public:
  explicit VirtualExecutor(Date start = Date(std::chrono::seconds(1'800'000'000))) : now_(start) {}

  void post(std::function<void()> work) override {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(work));
  }

  TimerID after(std::chrono::milliseconds delay, std::function<void()> work) override {
    const TimerID timer = ++lastTimer_;
    timers_.emplace(std::pair(now_ + std::max(delay, std::chrono::milliseconds(0)), timer), std::move(work));
    return timer;
  }

  void cancel(TimerID timer) override {
    std::erase_if(timers_, [timer](const auto& entry) { return entry.first.second == timer; });
  }

  void runInBackground(TaskPriority priority, std::function<void()> work) override {
    const std::lock_guard lock(mutex_);
    (priority == TaskPriority::userInitiated ? userInitiated_ : utility_).push_back(std::move(work));
  }

  [[nodiscard]] Date now() const override { return now_; }

  /// Runs what is posted on the main thread, and what that posts in turn; no background work.
  void runMain() {
    while (auto work = take(posted_)) {
      work();
    }
  }

  /// Runs the next background job alone; false when there is none. Its result waits for runMain.
  bool runNextInBackground() {
    auto work = take(userInitiated_);
    if (!work) {
      work = take(utility_);
    }
    if (!work) {
      return false;
    }
    work();
    return true;
  }

  /// Runs main and background work until nothing is left; time stands still.
  void runUntilIdle() {
    do {
      runMain();
    } while (runNextInBackground());
    runMain();
  }

  /// Lets time pass: each timer that falls due runs at its own instant, followed by what it sets off.
  void advance(std::chrono::milliseconds time) {
    const Date end = now_ + time;
    runUntilIdle();
    while (!timers_.empty() && timers_.begin()->first.first <= end) {
      auto entry = timers_.extract(timers_.begin());
      now_ = entry.key().first;
      entry.mapped()();
      runUntilIdle();
    }
    now_ = end;
  }

  /// Runs until the task has ended and gives its result.
  template <typename T>
  T finish(Task<T> task) {
    runUntilIdle();
    if (!task.done()) {
      throw std::logic_error("the task still waits for something when all work is done");
    }
    return task.await_resume();
  }

  [[nodiscard]] std::size_t pendingTimers() const { return timers_.size(); }
  [[nodiscard]] std::size_t pendingBackgroundJobs() const {
    const std::lock_guard lock(mutex_);
    return userInitiated_.size() + utility_.size();
  }

 private:
  std::function<void()> take(std::deque<std::function<void()>>& queue) {
    const std::lock_guard lock(mutex_);
    if (queue.empty()) {
      return {};
    }
    auto work = std::move(queue.front());
    queue.pop_front();
    return work;
  }

  mutable std::mutex mutex_;
  Date now_;
  TimerID lastTimer_ = 0;
  std::deque<std::function<void()>> posted_;
  std::deque<std::function<void()>> userInitiated_;
  std::deque<std::function<void()>> utility_;
  std::map<std::pair<Date, TimerID>, std::function<void()>> timers_;
};

}  // namespace tidewrack
