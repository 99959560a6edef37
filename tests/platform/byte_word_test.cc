#include "platform/byte_word.h"

#include <algorithm>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

std::string bytesOf(ByteWord word) {
  std::string bytes(byteWordSize, '\0');
  std::memcpy(bytes.data(), &word, byteWordSize);
  return bytes;
}

bool isPrintableEach(const std::string& bytes) {
  return std::ranges::all_of(bytes, [](char byte) { return byte >= 0x20 && byte < 0x7F; });
}

TEST(ByteWord, IsPrintableFromTheBlankToTheTildeAtEveryPlace) {
  for (std::size_t place = 0; place < byteWordSize; ++place) {
    for (int value = 0; value < 256; ++value) {
      for (const char other : {' ', 'a', '~'}) {
        std::string bytes(byteWordSize, other);
        bytes[place] = static_cast<char>(value);
        ASSERT_EQ(isPrintable(loadWord(bytes.data())), isPrintableEach(bytes)) << value << " at " << place;
      }
    }
  }
}

TEST(ByteWord, AnyBytesAreToldApartAsEachByItself) {
  std::mt19937_64 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string bytes(byteWordSize, '\0');
    for (char& byte : bytes) {
      // Mostly around the borders.
      constexpr unsigned char borders[] = {0x00, 0x1F, 0x20, 0x21, 0x7E, 0x7F, 0x80, 0xFF};
      byte = static_cast<char>(random() % 4 == 0 ? random() : borders[random() % std::size(borders)]);
    }
    ASSERT_EQ(isPrintable(loadWord(bytes.data())), isPrintableEach(bytes)) << testing::PrintToString(bytes);
    const std::string marks = bytesOf(bytesEqualTo(loadWord(bytes.data()), ' '));
    for (std::size_t place = 0; place < byteWordSize; ++place) {
      ASSERT_EQ(marks[place], bytes[place] == ' ' ? '\x80' : '\0') << testing::PrintToString(bytes);
    }
  }
}

}  // namespace
}  // namespace tidewrack
