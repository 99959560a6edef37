#include "classify/token_numbers.h"

#include <algorithm>
#include <cstring>

#include "classify/variable_numbers.h"

namespace tidewrack {

void TokenNumbers::addList(std::uint32_t number) {
  auto& list = lists_.emplace_back();
  list.first = list.last = number;
}

void TokenNumbers::add(std::size_t list, std::uint32_t number) {
  List& own = lists_[list];
  if (own.size + longestNumber > own.end.size()) {
    moveEnd(own);
  }
  char* const place = own.end.data() + own.size;
  own.size = static_cast<std::uint8_t>(own.size + (writeNumber(place, number - own.last) - place));
  own.last = number;
}

void TokenNumbers::addBlock(List& list) {
  const auto place = static_cast<std::uint32_t>(blocks_.size() / blockUnit);
  blocks_.resize(blocks_.size() + roomOf(list.blocks) + linkSize);
  if (list.blocks == 0) {
    list.firstBlock = place;
  } else {
    std::memcpy(&blocks_[list.lastBlock * blockUnit], &place, linkSize);
  }
  list.lastBlock = place;
  list.used = 0;
  list.blocks = static_cast<std::uint8_t>(std::min<int>(list.blocks + 1, largestBlock + 1));
}

// Empties the end of the list into its blocks.
void TokenNumbers::moveEnd(List& list) {
  for (std::size_t moved = 0; moved < list.size;) {
    if (list.blocks == 0 || list.used == roomOf(list.blocks - 1U)) {
      addBlock(list);
    }
    const auto count = std::min<std::size_t>(list.size - moved, roomOf(list.blocks - 1U) - list.used);
    std::memcpy(&blocks_[list.lastBlock * blockUnit + linkSize + list.used], &list.end[moved], count);
    list.used = static_cast<std::uint16_t>(list.used + count);
    moved += count;
  }
  list.size = 0;
}

namespace {

// A list as it was written from 0, from some number on.
struct Rest {
  std::string_view bytes;  // Differences behind `number`.
  std::uint32_t number = 0;
};

Rest restOf(std::string_view bytes) {
  std::size_t position = 0;
  const auto first = readNumber(bytes, position);
  return {bytes.substr(position), first};
}

}  // namespace

void TokenNumbers::writeWith(std::size_t list, const TokenNumbers& others, std::size_t othersList, Room& room,
                             std::string& bytes) const {
  const List& own = lists_[list];
  const List& other = others.lists_[othersList];
  if (own.last < other.first) {
    write(list, 0, bytes);
    others.write(othersList, own.last, bytes);
    return;
  }
  if (other.last < own.first) {
    others.write(othersList, 0, bytes);
    write(list, other.last, bytes);
    return;
  }
  room.own.clear();
  room.others.clear();
  write(list, 0, room.own);
  others.write(othersList, 0, room.others);
  Rest lower = restOf(room.own);
  Rest upper = restOf(room.others);
  // The list with the lower number gives all its numbers below the other's, whose turn it then is.
  std::uint32_t last = 0;
  while (true) {
    if (upper.number < lower.number) {
      std::swap(lower, upper);
    }
    appendNumber(bytes, lower.number - last);
    last = lower.number;
    std::size_t taken = 0;
    for (std::size_t position = 0;; taken = position) {
      if (position == lower.bytes.size()) {
        bytes.append(lower.bytes);
        appendNumber(bytes, upper.number - last);
        bytes.append(upper.bytes);
        return;
      }
      const auto next = last + readNumber(lower.bytes, position);
      if (next > upper.number) {
        bytes.append(lower.bytes, 0, taken);
        lower = {lower.bytes.substr(position), next};
        break;
      }
      last = next;
    }
  }
}

void TokenNumbers::write(std::size_t list, std::uint32_t before, std::string& bytes) const {
  const List& own = lists_[list];
  appendNumber(bytes, own.first - before);
  std::uint32_t place = own.firstBlock;
  for (std::size_t block = 0; own.blocks != 0; ++block) {
    const char* const begin = &blocks_[place * blockUnit];
    if (place == own.lastBlock) {
      bytes.append(begin + linkSize, own.used);
      break;
    }
    bytes.append(begin + linkSize, roomOf(block));
    std::memcpy(&place, begin, linkSize);
  }
  bytes.append(own.end.data(), own.size);
}

}  // namespace tidewrack
