#include "platform/two_threads.h"

#include <atomic>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(TwoThreads, BothPiecesOfWorkAreDoneOnThreadsOfTheirOwn) {
  std::thread::id first;
  std::thread::id second;
  doTogether([&] { first = std::this_thread::get_id(); }, [&] { second = std::this_thread::get_id(); });
  EXPECT_EQ(first, std::this_thread::get_id());
  EXPECT_NE(second, std::thread::id());
  EXPECT_NE(second, first);
}

std::string failureOf(const char* first, const char* second) {
  std::atomic<int> ended = 0;
  const auto work = [&ended](const char* failure) {
    ++ended;
    if (failure != nullptr) {
      throw std::runtime_error(failure);
    }
  };
  try {
    doTogether([&] { work(first); }, [&] { work(second); });
  } catch (const std::runtime_error& failure) {
    EXPECT_EQ(ended, 2);
    return failure.what();
  }
  return {};
}

TEST(TwoThreads, AFailureOfEitherIsThrownOnceBothHaveEnded) {
  EXPECT_EQ(failureOf(nullptr, nullptr), "");
  EXPECT_EQ(failureOf("first", nullptr), "first");
  EXPECT_EQ(failureOf(nullptr, "second"), "second");
  EXPECT_EQ(failureOf("first", "second"), "first");
}

}  // namespace
}  // namespace tidewrack
