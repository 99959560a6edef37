#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "platform/date.h"

namespace tidewrack {

enum class TaskPriority { userInitiated, utility };

/// Where work runs. The program's executor is the GLib main loop with a small pool of workers; the tests'
/// executor has a virtual clock. It outlives every task that uses it.
class Executor {
 public:
  using TimerID = std::uint64_t;  // never 0

  virtual ~Executor() = default;
  /// Runs `work` on the main thread soon, in the order of posting. From any thread.
  virtual void post(std::function<void()> work) = 0;
  /// Runs `work` on the main thread once `delay` has passed. Main thread only.
  virtual TimerID after(std::chrono::milliseconds delay, std::function<void()> work) = 0;
  /// Forgets a timer; one that has fired or is unknown is ignored. Main thread only.
  virtual void cancel(TimerID timer) = 0;
  /// Runs `work` on a worker thread. `work` must not throw. From any thread.
  virtual void runInBackground(TaskPriority priority, std::function<void()> work) = 0;
  /// The present time. From any thread.
  [[nodiscard]] virtual Date now() const = 0;
};

}  // namespace tidewrack
