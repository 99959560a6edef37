#include "mail/text_pool.h"

#include <functional>

namespace tidewrack {
namespace {

constexpr std::size_t longestText = 256;  // bytes; what is longer hardly ever comes twice
constexpr std::size_t placeCount = std::size_t{1} << 13U;

}  // namespace

Text TextPool::text(std::string_view text) {
  if (text.empty() || text.size() > longestText) {
    return {text};
  }
  if (places_.empty()) {
    places_.resize(placeCount);
  }
  const std::size_t hash = std::hash<std::string_view>()(text);
  Place& place = places_[hash % placeCount];
  if (place.hash != hash || place.text != text) {
    place = {hash, Text(text)};
  }
  return place.text;
}

}  // namespace tidewrack
