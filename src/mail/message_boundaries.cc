#include "mail/message_boundaries.h"

#include <algorithm>

#include "platform/byte_scan.h"

namespace tidewrack {
namespace {

constexpr std::string_view separator = "From ";
static_assert(separator.size() == separatorSize);

}  // namespace

std::size_t findSeparator(std::string_view bytes, std::size_t from) noexcept {
  if (from == 0 && bytes.starts_with(separator)) {
    return 0;
  }
  std::size_t position = findLineStart(bytes, separator[0], separator[1], from);
  while (position != std::string_view::npos && !bytes.substr(position).starts_with(separator)) {
    position = findLineStart(bytes, separator[0], separator[1], position + 1);
  }
  return std::min(position, bytes.size());
}

std::size_t behindLine(std::string_view bytes, std::size_t line) noexcept {
  while (line < bytes.size() && bytes[line] != '\n' && bytes[line] != '\r') {
    ++line;
  }
  return std::min(line + 1, bytes.size());
}

std::size_t findSeparator(std::string_view bytes, std::size_t from, const ArrivingBytes& arriving) {
  std::size_t there = arriving.count();
  while (true) {
    const std::size_t found = findSeparator(bytes.substr(0, there), from);
    if (found < there || there == bytes.size()) {
      return found;
    }
    // The beginning of a separator may be there already.
    from = std::max(from, there - std::min(there, separatorSize - 1));
    there = arriving.waitUntil(there + 1);
  }
}

std::size_t behindLine(std::string_view bytes, std::size_t line, const ArrivingBytes& arriving) {
  std::size_t there = arriving.count();
  while (true) {
    const std::size_t next = behindLine(bytes.substr(0, there), line);
    if (next < there || there == bytes.size()) {
      return next;
    }
    // Either the last byte that is there ends the line, or none does.
    line = std::max(line, there - std::min<std::size_t>(there, 1));
    there = arriving.waitUntil(there + 1);
  }
}

}  // namespace tidewrack
