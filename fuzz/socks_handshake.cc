#include "platform/socks_handshake.h"

#include <algorithm>

#include "fuzz/fuzz.h"

// The first byte says in how large parts the others arrive.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  auto bytes = fuzz::bytesOf(data, size);
  const std::size_t largestPart = bytes.empty() ? 1 : 1U + static_cast<std::uint8_t>(bytes.front());
  bytes = bytes.substr(std::min<std::size_t>(bytes.size(), 1));
  SocksHandshake handshake;
  while (!bytes.empty() && handshake.state() == SocksHandshake::State::open) {
    fuzz::require(handshake.wanted() > 0);
    const auto part = bytes.substr(0, std::min(handshake.wanted(), largestPart));
    fuzz::require(handshake.take(part).size() <= socksReply(SocksReply::succeeded).size());
    bytes = bytes.substr(part.size());
  }
  const bool isComplete = handshake.state() == SocksHandshake::State::complete;
  fuzz::require(isComplete == !handshake.host().empty());
  fuzz::require(!isComplete || handshake.port() != 0);
  fuzz::require(handshake.host().size() <= 255);
  fuzz::require((handshake.wanted() > 0) == (handshake.state() == SocksHandshake::State::open));
  return 0;
}
