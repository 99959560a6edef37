#include "platform/fair_mutex.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(FairMutex, OneThreadAtATimeHoldsIt) {
  FairMutex mutex;
  int count = 0;
  const auto work = [&] {
    for (int round = 0; round < 1000; ++round) {
      const std::lock_guard guard(mutex);
      ++count;
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(count, 2000);
}

TEST(FairMutex, AThreadThatLocksInALoopLetsAnotherIn) {
  FairMutex mutex;
  std::atomic<bool> entered = false;
  std::thread other([&] {
    const std::lock_guard guard(mutex);
    entered = true;
  });
  // Ends only because the other thread gets its turn between two rounds.
  while (!entered) {
    const std::lock_guard guard(mutex);
  }
  other.join();
  EXPECT_TRUE(entered);
}

}  // namespace
}  // namespace tidewrack
