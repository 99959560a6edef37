#include "platform/arriving_bytes.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(ArrivingBytes, TheCountNeverFallsAndNeverExceedsTheTotal) {
  ArrivingBytes bytes(10);
  EXPECT_EQ(bytes.count(), 0U);
  bytes.arrive(7);
  bytes.arrive(3);
  EXPECT_EQ(bytes.count(), 7U);
  bytes.arrive(20);
  EXPECT_EQ(bytes.count(), 10U);
  EXPECT_EQ(ArrivingBytes(10, 11).count(), 10U);
}

TEST(ArrivingBytes, NobodyWaitsForWhatIsThere) {
  ArrivingBytes bytes(10, 4);
  EXPECT_EQ(bytes.waitUntil(0), 4U);
  EXPECT_EQ(bytes.waitUntil(4), 4U);
  bytes.arrive(10);
  EXPECT_EQ(bytes.waitUntil(1000), 10U) << "more than the total is all";
}

TEST(ArrivingBytes, AWaitGoesOnWhenItsBytesAreThere) {
  ArrivingBytes bytes(1000);
  std::vector<std::thread> readers;
  std::vector<std::size_t> seen(3);
  for (std::size_t reader = 0; reader < seen.size(); ++reader) {
    readers.emplace_back([&, reader] {
      for (std::size_t wanted = 1; wanted <= bytes.total(); ++wanted) {
        seen[reader] += bytes.waitUntil(wanted) >= wanted ? 1 : 0;
      }
    });
  }
  for (std::size_t count = 1; count <= bytes.total(); ++count) {
    bytes.arrive(count);
  }
  for (auto& reader : readers) {
    reader.join();
  }
  EXPECT_EQ(seen, std::vector<std::size_t>(3, 1000));
}

TEST(ArrivingBytes, AnEndEndsEveryWaitForMoreAndLeavesWhatIsThere) {
  ArrivingBytes bytes(10, 5);
  std::vector<std::thread> readers;
  std::vector<int> failures(3);
  for (auto& failed : failures) {
    readers.emplace_back([&] {
      try {
        bytes.waitUntil(6);
      } catch (const ArrivalFailure&) {
        ++failed;
      }
    });
  }
  bytes.end();
  for (auto& reader : readers) {
    reader.join();
  }
  EXPECT_EQ(failures, std::vector<int>(3, 1));
  EXPECT_EQ(bytes.waitUntil(5), 5U);
  bytes.arrive(10);
  EXPECT_THROW(bytes.waitUntil(6), ArrivalFailure) << "nothing arrives behind the end";
}

TEST(ArrivingBytes, AnEndBehindTheLastByteIsNoFailure) {
  ArrivingBytes bytes(10);
  bytes.arrive(10);
  bytes.end();
  EXPECT_EQ(bytes.waitUntil(10), 10U);
}

}  // namespace
}  // namespace tidewrack
