#include "platform/write_back.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/files.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

constexpr std::size_t large = std::size_t{20} << 20U;

TEST(WriteBack, SendsWhatAGrowingFileGainsAndLeavesItAsItIs) {
  const TemporaryFolder folder;
  const auto path = folder / "growing";
  std::ofstream file(path, std::ios::binary);
  file << "beginning" << std::flush;
  WriteBack writeBack(path);
  writeBack.begin();
  std::string expected = "beginning";
  for (const char byte : {'a', 'b', 'c'}) {
    const std::string more(large, byte);
    file << more << std::flush;
    expected += more;
    writeBack.advance();
    EXPECT_EQ(writeBack.sentBytes(), expected.size() - std::string_view("beginning").size());
  }
  EXPECT_TRUE(readFile(path) == expected);
}

TEST(WriteBack, WaitsUntilSixteenMegabytesHaveComeTogether) {
  const TemporaryFolder folder;
  const auto path = folder / "growing";
  std::ofstream file(path, std::ios::binary);
  WriteBack writeBack(path);
  file << std::string((std::size_t{16} << 20U) - 1, 'a') << std::flush;
  writeBack.advance();
  EXPECT_EQ(writeBack.sentBytes(), 0);
  file << 'b' << std::flush;
  writeBack.advance();
  EXPECT_EQ(writeBack.sentBytes(), std::uint64_t{16} << 20U);
}

TEST(WriteBack, CanBeginAnewWhenTheFileHasBecomeSmaller) {
  const TemporaryFolder folder;
  const auto path = folder / "shrinking";
  std::ofstream(path, std::ios::binary) << std::string(large, 'a');
  WriteBack writeBack(path);
  writeBack.advance();
  std::filesystem::resize_file(path, 3);
  writeBack.advance();
  writeBack.begin();
  EXPECT_EQ(writeBack.sentBytes(), large);
  std::filesystem::resize_file(path, 3 + large);
  writeBack.advance();
  EXPECT_EQ(writeBack.sentBytes(), 2 * large);
  EXPECT_EQ(readFile(path), "aaa" + std::string(large, '\0'));
}

TEST(WriteBack, DoesNothingForAFileThatCannotBeOpened) {
  const TemporaryFolder folder;
  WriteBack writeBack(folder / "missing");
  writeBack.begin();
  writeBack.advance();
  EXPECT_EQ(writeBack.sentBytes(), 0);
  EXPECT_FALSE(std::filesystem::exists(folder / "missing"));
}

}  // namespace
}  // namespace tidewrack
