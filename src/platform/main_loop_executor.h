#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/executor.h"

// As GLib declares them.
using GMainContext = struct _GMainContext;  // NOLINT(bugprone-reserved-identifier)
using GSource = struct _GSource;            // NOLINT(bugprone-reserved-identifier)

namespace tidewrack {

/// The program's executor: main-thread work on a GLib main context, background work on three threads, two
/// for what the user waits for and a third, of lower scheduling priority, for the rest, so that an index
/// being built never stands before an import. Made, used and destroyed on the main thread; destroying it
/// waits for the background work that has begun and drops what has not, on the main thread too.
class MainLoopExecutor : public Executor {
 public:
  /// Runs on `context`, or on the default one when null.
  explicit MainLoopExecutor(GMainContext* context = nullptr);
  ~MainLoopExecutor() override;
  MainLoopExecutor(const MainLoopExecutor&) = delete;
  MainLoopExecutor& operator=(const MainLoopExecutor&) = delete;

  void post(std::function<void()> work) override;
  TimerID after(std::chrono::milliseconds delay, std::function<void()> work) override;
  void cancel(TimerID timer) override;
  void runInBackground(TaskPriority priority, std::function<void()> work) override;
  [[nodiscard]] Date now() const override;

  /// Runs the main context until `isDone` says yes; for programs without a main loop of their own.
  void runUntil(const std::function<bool()>& isDone);

 private:
  struct Queue {
    std::mutex mutex;
    std::condition_variable wakeUp;
    std::deque<std::function<void()>> jobs;
    bool isClosed = false;
  };

  static void work(Queue& queue);

  GMainContext* context_;
  TimerID lastTimer_ = 0;
  std::map<TimerID, GSource*> timers_;
  Queue userInitiated_;
  Queue utility_;
  std::vector<std::thread> threads_;
  std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);  ///< For posted work; main thread only.
};

}  // namespace tidewrack
