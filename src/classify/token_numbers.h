#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/huge_pages.h"

namespace tidewrack {

/// Ascending lists of numbers that grow side by side, as differences of variable length
/// (classify/variable_numbers.h). The latest bytes of a list lie with its head; what is full goes to blocks
/// that grow with the list and share one piece of memory. One thread at a time.
class TokenNumbers {
 public:
  /// Kept from call to call so that its memory is.
  struct Room {
    std::string own;
    std::string others;
  };

  /// One more list, with one number. Lists are numbered from 0.
  void addList(std::uint32_t number);
  /// Puts a number behind those of a list; it is above them.
  void add(std::size_t list, std::uint32_t number);
  /// Asks the memory for a list that a number will be added to.
  void prefetch(std::size_t list) const { __builtin_prefetch(&lists_[list], 1); }

  /// Appends the numbers of a list, each as the difference from the one before, the first one from `before`.
  void write(std::size_t list, std::uint32_t before, std::string& bytes) const;
  /// The same, from 0, for the numbers of a list and one of `others` together, in order. They have none in
  /// common.
  void writeWith(std::size_t list, const TokenNumbers& others, std::size_t othersList, Room& room,
                 std::string& bytes) const;

 private:
  // A block is the place of the next one, in four bytes, and then bytes of the list.
  struct List {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::uint32_t firstBlock = 0;  // All in units of blockUnit.
    std::uint32_t lastBlock = 0;
    std::uint16_t used = 0;   // Bytes of the last block.
    std::uint8_t blocks = 0;  // Their number, as far as it decides about the size of the next.
    std::uint8_t size = 0;    // Bytes in use of
    std::array<char, 12> end{};
  };
  static constexpr std::size_t blockUnit = 32;
  static constexpr std::size_t linkSize = sizeof(std::uint32_t);
  static constexpr std::uint8_t largestBlock = 6;  // Doublings of the unit.

  /// Bytes of the list in the block with this number among those of its list.
  static std::size_t roomOf(std::size_t block) {
    return (blockUnit << (block < largestBlock ? block : largestBlock)) - linkSize;
  }
  void moveEnd(List& list);
  void addBlock(List& list);

  HugePageVector<List> lists_;
  HugePageVector<char> blocks_;
};

}  // namespace tidewrack
