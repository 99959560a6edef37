#include "classify/token_numbers.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "classify/variable_numbers.h"

namespace tidewrack {
namespace {

using Numbers = std::vector<std::uint32_t>;

/// The list of these ascending numbers.
TokenNumbers listOf(const Numbers& numbers) {
  TokenNumbers list;
  list.addList(numbers.front());
  for (std::size_t i = 1; i < numbers.size(); ++i) {
    list.add(0, numbers[i]);
  }
  return list;
}

Numbers read(const std::string& bytes) {
  Numbers numbers;
  std::uint32_t last = 0;
  for (std::size_t position = 0; position < bytes.size();) {
    last += readNumber(bytes, position);
    numbers.push_back(last);
  }
  return numbers;
}

Numbers joined(const Numbers& own, const Numbers& others) {
  TokenNumbers::Room room;
  std::string bytes;
  listOf(own).writeWith(0, listOf(others), 0, room, bytes);
  return read(bytes);
}

TEST(TokenNumbers, GivesBackWhatItWasGiven) {
  Numbers numbers = {0, 1, 127, 128, 129, 300, 40000, 3000000000};
  for (std::uint32_t number = 3000000001; number < 3000002000; number += 3) {
    numbers.push_back(number);
  }
  std::string bytes;
  listOf(numbers).write(0, 0, bytes);
  EXPECT_EQ(read(bytes), numbers);
}

TEST(TokenNumbers, JoinsAListThatLiesBelowTheOther) {
  EXPECT_EQ(joined({1, 2, 3}, {4, 500}), (Numbers{1, 2, 3, 4, 500}));
  EXPECT_EQ(joined({4, 500}, {1, 2, 3}), (Numbers{1, 2, 3, 4, 500}));
}

TEST(TokenNumbers, JoinsAListThatLiesWithinTheOther) {
  EXPECT_EQ(joined({0, 1000}, {5, 6, 7}), (Numbers{0, 5, 6, 7, 1000}));
  EXPECT_EQ(joined({5, 6, 7}, {0, 1000}), (Numbers{0, 5, 6, 7, 1000}));
}

TEST(TokenNumbers, JoinsListsThatTakeTurns) {
  EXPECT_EQ(joined({0, 2, 4}, {1, 3, 5}), (Numbers{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(joined({0, 1, 1000, 1001}, {2, 999, 1002}), (Numbers{0, 1, 2, 999, 1000, 1001, 1002}));
}

TEST(TokenNumbers, JoinsAnyTwoListsInOneRoom) {
  std::mt19937 random(7);
  TokenNumbers::Room room;
  for (int round = 0; round < 300; ++round) {
    Numbers all;
    Numbers own;
    Numbers others;
    const std::uint32_t longestRun = 1 + random() % 200;
    std::uint32_t number = random() % 3;
    for (bool isOwn = random() % 2 == 0; all.size() < 600; isOwn = !isOwn) {
      for (std::uint32_t left = 1 + random() % longestRun; left > 0; --left) {
        all.push_back(number);
        (isOwn ? own : others).push_back(number);
        number += 1 + random() % (random() % 8 == 0 ? 100000 : 3);
      }
    }
    if (own.empty() || others.empty()) {
      continue;
    }
    std::string bytes;
    listOf(own).writeWith(0, listOf(others), 0, room, bytes);
    ASSERT_EQ(read(bytes), all) << "round " << round;
  }
}

}  // namespace
}  // namespace tidewrack
