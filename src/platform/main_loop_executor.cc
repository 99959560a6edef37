#include "platform/main_loop_executor.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>

#include <glib.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tidewrack {

namespace {

constexpr int userInitiatedThreads = 2;
constexpr int utilityNiceness = 10;

using Work = std::function<void()>;

/// Work on its way to the main thread. What was done before it was posted is done when it runs: GLib sees to
/// that with locks of its own, and the flag says it once more in the terms of the language, by which the
/// thread sanitizer goes.
struct Posted {
  explicit Posted(Work posted) : work(std::move(posted)) {
    isComplete.store(true, std::memory_order_release);
  }
  Work work;
  std::atomic<bool> isComplete = false;
};

gboolean runOnce(gpointer data) {
  auto* posted = static_cast<Posted*>(data);
  if (posted->isComplete.load(std::memory_order_acquire)) {
    posted->work();
  }
  return G_SOURCE_REMOVE;
}

void destroyWork(gpointer data) {
  delete static_cast<Posted*>(data);
}

// Attaches the source, which owns `work` from here on.
void attach(GSource* source, GMainContext* context, Work work) {
  g_source_set_callback(source, runOnce, new Posted(std::move(work)), destroyWork);
  g_source_attach(source, context);
}

}  // namespace

MainLoopExecutor::MainLoopExecutor(GMainContext* context)
    : context_(g_main_context_ref(context ? context : g_main_context_default())) {
  for (int i = 0; i < userInitiatedThreads; ++i) {
    threads_.emplace_back([this] { work(userInitiated_); });
  }
  threads_.emplace_back([this] {
    // On Linux this is the priority of the calling thread alone.
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), utilityNiceness);
    work(utility_);
  });
}

MainLoopExecutor::~MainLoopExecutor() {
  for (Queue* queue : {&userInitiated_, &utility_}) {
    std::deque<Work> dropped;
    {
      const std::lock_guard lock(queue->mutex);
      queue->isClosed = true;
      dropped.swap(queue->jobs);
    }
    queue->wakeUp.notify_all();
  }
  for (auto& thread : threads_) {
    thread.join();
  }
  *isAlive_ = false;
  for (const auto& [timer, source] : timers_) {
    g_source_destroy(source);
    g_source_unref(source);
  }
  g_main_context_unref(context_);
}

void MainLoopExecutor::work(Queue& queue) {
  while (true) {
    Work job;
    {
      std::unique_lock lock(queue.mutex);
      queue.wakeUp.wait(lock, [&queue] { return queue.isClosed || !queue.jobs.empty(); });
      if (queue.isClosed) {
        return;
      }
      job = std::move(queue.jobs.front());
      queue.jobs.pop_front();
    }
    job();
  }
}

void MainLoopExecutor::post(Work work) {
  // The default priority, not an idle one: an animation that redraws all the time must not hold up results.
  GSource* source = g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  attach(source, context_, [isAlive = isAlive_, work = std::move(work)] {
    if (*isAlive) {
      work();
    }
  });
  g_source_unref(source);
}

Executor::TimerID MainLoopExecutor::after(std::chrono::milliseconds delay, Work work) {
  const TimerID timer = ++lastTimer_;
  const auto milliseconds = std::clamp<std::chrono::milliseconds::rep>(delay.count(), 0, G_MAXUINT);
  GSource* source = g_timeout_source_new(static_cast<guint>(milliseconds));
  timers_.emplace(timer, source);
  attach(source, context_, [this, timer, work = std::move(work)] {
    if (const auto entry = timers_.extract(timer)) {
      g_source_unref(entry.mapped());
    }
    work();
  });
  return timer;
}

void MainLoopExecutor::cancel(TimerID timer) {
  if (const auto entry = timers_.extract(timer)) {
    g_source_destroy(entry.mapped());
    g_source_unref(entry.mapped());
  }
}

void MainLoopExecutor::runInBackground(TaskPriority priority, Work work) {
  Queue& queue = priority == TaskPriority::userInitiated ? userInitiated_ : utility_;
  {
    const std::lock_guard lock(queue.mutex);
    queue.jobs.push_back(std::move(work));
  }
  queue.wakeUp.notify_one();
}

Date MainLoopExecutor::now() const {
  return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

void MainLoopExecutor::runUntil(const std::function<bool()>& isDone) {
  while (!isDone()) {
    g_main_context_iteration(context_, TRUE);
  }
}

}  // namespace tidewrack
