#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include <glib.h>

#include "platform/main_loop_executor.h"
#include "platform/task.h"
#include "support/virtual_executor.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;

class MainLoop : public testing::Test {
 protected:
  MainLoop() : context(g_main_context_new()), executor(context) {
    g_main_context_push_thread_default(context);
  }
  ~MainLoop() override {
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
  }

  GMainContext* context;
  MainLoopExecutor executor;
};

TEST_F(MainLoop, RunsWhatIsPostedInOrder) {
  std::vector<int> seen;
  executor.post([&] { seen.push_back(1); });
  executor.post([&] { seen.push_back(2); });
  EXPECT_TRUE(seen.empty());
  executor.runUntil([&] { return seen.size() == 2; });
  EXPECT_EQ(seen, (std::vector{1, 2}));
}

TEST_F(MainLoop, RunsBackgroundWorkOnAnotherThreadAndItsResultOnTheMainOne) {
  const auto mainThread = std::this_thread::get_id();
  std::thread::id worker;
  std::thread::id back;
  bool done = false;
  const auto flow = [&]() -> Task<> {
    auto work = [&worker] { worker = std::this_thread::get_id(); };
    co_await inBackground(executor, TaskPriority::userInitiated, work);
    back = std::this_thread::get_id();
    done = true;
  };
  const auto task = flow();
  executor.runUntil([&] { return done; });
  EXPECT_NE(worker, mainThread);
  EXPECT_EQ(back, mainThread);
  EXPECT_TRUE(task.done());
}

TEST_F(MainLoop, UtilityWorkDoesNotStandBeforeWhatTheUserWaitsFor) {
  std::atomic<bool> mayEnd = false;
  std::atomic<bool> utilityEnded = false;
  executor.runInBackground(TaskPriority::utility, [&] {
    mayEnd.wait(false);
    utilityEnded = true;
    executor.post([] {});
  });
  bool done = false;
  executor.runInBackground(TaskPriority::userInitiated, [&] { executor.post([&] { done = true; }); });
  executor.runUntil([&] { return done; });
  EXPECT_FALSE(utilityEnded);
  mayEnd = true;
  mayEnd.notify_all();
  executor.runUntil([&] { return utilityEnded.load(); });  // The work still uses what lives here.
}

TEST_F(MainLoop, TimersFireInTheOrderOfTheirDelays) {
  std::vector<int> seen;
  executor.after(20ms, [&] { seen.push_back(2); });
  executor.after(1ms, [&] { seen.push_back(1); });
  executor.runUntil([&] { return seen.size() == 2; });
  EXPECT_EQ(seen, (std::vector{1, 2}));
}

TEST_F(MainLoop, ACancelledTimerNeverFires) {
  bool fired = false;
  bool later = false;
  const auto timer = executor.after(1ms, [&] { fired = true; });
  executor.cancel(timer);
  executor.cancel(timer);
  executor.cancel(4711);
  executor.after(5ms, [&] { later = true; });
  executor.runUntil([&] { return later; });
  EXPECT_FALSE(fired);
}

TEST(MainLoopExecutor, DropsPostedWorkWhenItGoes) {
  GMainContext* context = g_main_context_new();
  bool ran = false;
  {
    MainLoopExecutor executor(context);
    executor.post([&] { ran = true; });
  }
  while (g_main_context_iteration(context, FALSE) != FALSE) {
  }
  EXPECT_FALSE(ran);
  g_main_context_unref(context);
}

TEST(MainLoopExecutor, WaitsForBegunWorkWhenItGoes) {
  std::atomic<bool> begun = false;
  std::atomic<bool> ended = false;
  {
    MainLoopExecutor executor;
    executor.runInBackground(TaskPriority::userInitiated, [&] {
      begun = true;
      begun.notify_all();
      ended = true;
    });
    begun.wait(false);
  }
  EXPECT_TRUE(ended);
}

Task<int> answer(Executor& executor) {
  auto work = [] { return 42; };
  co_return co_await inBackground(executor, TaskPriority::userInitiated, work);
}

Task<int> failing(Executor& executor) {
  co_await yieldToMainLoop(executor);
  throw std::runtime_error("no");
}

Task<> sleeping(Executor& executor, bool& done) {
  co_await sleepFor(executor, 60s);
  done = true;
}

TEST(VirtualTime, ATaskGivesItsResultToWhoAwaitsIt) {
  VirtualExecutor executor;
  EXPECT_EQ(executor.finish(answer(executor)), 42);
}

TEST(VirtualTime, ATaskGivesItsExceptionToWhoAwaitsIt) {
  VirtualExecutor executor;
  EXPECT_THROW(executor.finish(failing(executor)), std::runtime_error);
}

TEST(VirtualTime, APauseOfAMinuteTakesNoTime) {
  VirtualExecutor executor;
  bool done = false;
  const auto task = sleeping(executor, done);
  executor.advance(59'999ms);
  EXPECT_FALSE(done);
  executor.advance(1ms);
  EXPECT_TRUE(done);
}

TEST(VirtualTime, BackgroundWorkRunsWhenTheTestSays) {
  VirtualExecutor executor;
  std::vector<int> seen;
  executor.runInBackground(TaskPriority::utility, [&] { seen.push_back(2); });
  executor.runInBackground(TaskPriority::userInitiated, [&] { seen.push_back(1); });
  executor.runMain();
  EXPECT_TRUE(seen.empty());
  EXPECT_TRUE(executor.runNextInBackground());
  EXPECT_EQ(seen, (std::vector{1}));
  executor.runUntilIdle();
  EXPECT_EQ(seen, (std::vector{1, 2}));
}

}  // namespace
}  // namespace tidewrack
