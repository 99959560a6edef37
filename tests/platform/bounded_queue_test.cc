#include "platform/bounded_queue.h"

#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(BoundedQueue, ItemsComeInTheirOrderAndThenTheEnd) {
  BoundedQueue<int> queue(3);
  std::thread maker([&queue] {
    for (int item = 0; item < 1000; ++item) {
      queue.push(item, 1);
    }
    queue.close();
  });
  for (int item = 0; item < 1000; ++item) {
    EXPECT_EQ(queue.next(), item);
  }
  EXPECT_EQ(queue.next(), std::nullopt);
  EXPECT_EQ(queue.next(), std::nullopt);
  maker.join();
}

TEST(BoundedQueue, TheMakerWaitsWhenTheBoundIsReached) {
  BoundedQueue<int> queue(10);
  EXPECT_TRUE(queue.push(1, 4));
  EXPECT_TRUE(queue.push(2, 60));  // An item of any weight fits while there is room at all.
  EXPECT_FALSE(queue.holdsAll());
  std::thread maker([&queue] {
    EXPECT_TRUE(queue.push(3, 1));
    queue.close();
  });
  EXPECT_EQ(queue.next(), 1);
  EXPECT_EQ(queue.next(), 2);
  EXPECT_EQ(queue.next(), 3);
  EXPECT_EQ(queue.next(), std::nullopt);
  maker.join();
}

TEST(BoundedQueue, AQueueThatEndsBelowItsBoundHoldsAll) {
  BoundedQueue<int> queue(10);
  EXPECT_TRUE(queue.push(1, 9));
  queue.close();
  EXPECT_TRUE(queue.holdsAll());
  EXPECT_EQ(queue.next(), 1);
}

TEST(BoundedQueue, AFailureComesBehindTheLastItem) {
  BoundedQueue<int> queue(10);
  queue.push(1, 1);
  queue.close(std::make_exception_ptr(std::runtime_error("no more")));
  EXPECT_EQ(queue.next(), 1);
  EXPECT_THROW(queue.next(), std::runtime_error);
}

TEST(BoundedQueue, StoppingLetsAMakerThatWaitsGoOn) {
  BoundedQueue<int> queue(1);
  EXPECT_TRUE(queue.push(1, 1));
  std::thread maker([&queue] { EXPECT_FALSE(queue.push(2, 1)); });
  queue.stop();
  maker.join();
  EXPECT_EQ(queue.next(), 1);
}

TEST(BoundedQueue, ItemsMayBeSuchAsCanOnlyBeMoved) {
  BoundedQueue<std::unique_ptr<int>> queue(1);
  queue.push(std::make_unique<int>(7), 1);
  const auto item = queue.next();
  ASSERT_TRUE(item.has_value());
  EXPECT_EQ(**item, 7);
}

}  // namespace
}  // namespace tidewrack
