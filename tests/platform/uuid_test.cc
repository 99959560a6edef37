#include "platform/uuid.h"

#include <thread>
#include <unordered_set>
#include <vector>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(UUIDTest, TextFormIsUpperCaseHyphenatedVersion4) {
  for (int round = 0; round < 1000; ++round) {
    const std::string text = UUID::make().string();
    ASSERT_EQ(text.size(), 36U);
    ASSERT_EQ(text.find_first_not_of("0123456789ABCDEF-"), std::string::npos) << text;
    ASSERT_EQ(text[8], '-');
    ASSERT_EQ(text[13], '-');
    ASSERT_EQ(text[14], '4');
    ASSERT_EQ(text[18], '-');
    ASSERT_NE(std::string("89AB").find(text[19]), std::string::npos);
    ASSERT_EQ(text[23], '-');
  }
}

TEST(UUIDTest, ReadsBackBothCasesAndNothingElse) {
  const UUID id = UUID::make();
  EXPECT_EQ(UUID::parse(id.string()), id);
  EXPECT_EQ(UUID::parse(id.lowerCaseString()), id);
  const auto known = UUID::parse("00112233-4455-6677-8899-AABBCCDDEEFF");
  ASSERT_TRUE(known);
  EXPECT_EQ(known->bytes[0], 0x00);
  EXPECT_EQ(known->bytes[15], 0xFF);
  EXPECT_EQ(known->lowerCaseString(), "00112233-4455-6677-8899-aabbccddeeff");
  EXPECT_FALSE(UUID::parse(""));
  EXPECT_FALSE(UUID::parse("00112233-4455-6677-8899-AABBCCDDEEF"));
  EXPECT_FALSE(UUID::parse("00112233-4455-6677-8899-AABBCCDDEEFFF"));
  EXPECT_FALSE(UUID::parse("001122334-455-6677-8899-AABBCCDDEEFF"));
  EXPECT_FALSE(UUID::parse("00112233-4455-6677-8899-AABBCCDDEEFG"));
  EXPECT_FALSE(UUID::parse("00112233-4455-6677-8899-AABBCCDDEE:F"));
}

TEST(UUIDTest, NoTwoAreEqualAcrossThreads) {
  constexpr std::size_t count = 20000;
  std::vector<std::vector<UUID>> made(4);
  std::vector<std::thread> threads;
  for (auto& list : made) {
    threads.emplace_back([&list] {
      for (std::size_t index = 0; index < count; ++index) {
        list.push_back(UUID::make());
      }
    });
  }
  std::unordered_set<UUID> all;
  for (std::size_t index = 0; index < threads.size(); ++index) {
    threads[index].join();
    all.insert(made[index].begin(), made[index].end());
  }
  EXPECT_EQ(all.size(), count * made.size());
}

}  // namespace
}  // namespace tidewrack
