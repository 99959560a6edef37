#include "platform/huge_pages.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(AdviseHugePages, LeavesEveryByteAsItIsWhereverTheMemoryBegins) {
  constexpr std::size_t size = std::size_t{8} << 20U;
  std::string memory(size, 'x');
  for (const std::size_t begin : {std::size_t{0}, std::size_t{1}, std::size_t{4095}, std::size_t{4097}}) {
    adviseHugePages(memory.data() + begin, size - begin);
    adviseHugePages(memory.data() + begin, 100);
  }
  adviseHugePages(memory.data(), 0);
  EXPECT_TRUE(std::ranges::all_of(memory, [](char byte) { return byte == 'x'; }));
}

}  // namespace
}  // namespace tidewrack
