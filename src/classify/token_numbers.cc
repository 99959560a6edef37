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

void TokenNumbers::writeWith(std::size_t list, const TokenNumbers& others, std::size_t othersList,
                             std::string& bytes) const {
  const List& own = lists_[list];
  const List& other = others.lists_[othersList];
  if (own.last < other.first) {
    write(list, 0, bytes);
    others.write(othersList, own.last, bytes);
    return;
  }
  if (other.last < own.first) {
    others.writeWith(othersList, *this, list, bytes);
    return;
  }
  // The differences of both, from which runs of one list that lie between numbers of the other are taken
  // over.
  std::string ownBytes;
  std::string otherBytes;
  write(list, 0, ownBytes);
  others.write(othersList, 0, otherBytes);
  std::size_t ownPosition = 0;
  std::size_t otherPosition = 0;
  std::uint32_t ownNumber = readNumber(ownBytes, ownPosition);
  std::uint32_t otherNumber = readNumber(otherBytes, otherPosition);
  std::uint32_t last = 0;
  const auto take = [&](std::uint32_t& number, const std::string& from, std::size_t& position) {
    appendNumber(bytes, number - last);
    last = number;
    const bool isMore = position < from.size();
    number += isMore ? readNumber(from, position) : 0;
    return isMore;
  };
  const auto takeRest = [&](std::uint32_t number, const std::string& from, std::size_t position) {
    appendNumber(bytes, number - last);
    bytes.append(from, position);
  };
  while (true) {
    if (ownNumber < otherNumber) {
      if (!take(ownNumber, ownBytes, ownPosition)) {
        takeRest(otherNumber, otherBytes, otherPosition);
        return;
      }
    } else if (!take(otherNumber, otherBytes, otherPosition)) {
      takeRest(ownNumber, ownBytes, ownPosition);
      return;
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
