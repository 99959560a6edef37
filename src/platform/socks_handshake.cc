#include "platform/socks_handshake.h"

#include <algorithm>
#include <array>

#include <arpa/inet.h>

namespace tidewrack {
namespace {

constexpr char version = 5;
constexpr char connectCommand = 1;
constexpr std::size_t methodsOffset = 2;  // behind VER and NMETHODS
constexpr std::size_t targetOffset = 4;   // behind VER, CMD, RSV and ATYP
constexpr std::size_t portSize = 2;

enum AddressType : std::uint8_t { ipv4 = 1, domainName = 3, ipv6 = 4 };

bool isNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
         c == '.';
}

std::string addressText(int family, const char* bytes) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  return inet_ntop(family, bytes, text.data(), text.size());
}

}  // namespace

std::string socksReply(SocksReply reply) {
  std::string bytes = {version, static_cast<char>(reply), 0, ipv4};
  bytes.append(4 + portSize, '\0');
  return bytes;
}

std::size_t SocksHandshake::wanted() const {
  return state_ == State::open ? length_ - bytes_.size() : 0;
}

std::string SocksHandshake::take(std::string_view bytes) {
  bytes_ += bytes.substr(0, wanted());
  return state_ == State::open && wanted() == 0 ? takeStep() : std::string();
}

std::string SocksHandshake::takeStep() {
  if (bytes_.front() != version) {
    return fail();
  }
  switch (step_) {
    case Step::greeting:
      return byte(1) == 0 ? takeMethods() : goOn(Step::methods, methodsOffset + byte(1));
    case Step::methods:
      return takeMethods();
    case Step::head:
      return takeHead();
    case Step::target:
      return takeTarget();
  }
  return fail();
}

std::string SocksHandshake::takeMethods() {
  static constexpr char noAuthentication = 0;
  static constexpr char noneAcceptable = '\xFF';
  if (bytes_.find(noAuthentication, methodsOffset) == std::string::npos) {
    return fail({version, noneAcceptable});
  }
  bytes_.clear();
  goOn(Step::head, targetOffset + 1);
  return {version, noAuthentication};
}

std::string SocksHandshake::takeHead() {
  switch (byte(targetOffset - 1)) {
    case ipv4:
      return goOn(Step::target, targetOffset + sizeof(in_addr) + portSize);
    case ipv6:
      return goOn(Step::target, targetOffset + sizeof(in6_addr) + portSize);
    case domainName:
      return goOn(Step::target, targetOffset + 1 + byte(targetOffset) + portSize);
    default:
      return fail(socksReply(SocksReply::addressTypeNotSupported));
  }
}

std::string SocksHandshake::takeTarget() {
  if (bytes_[1] != connectCommand) {
    return fail(socksReply(SocksReply::commandNotSupported));
  }
  const std::size_t end = bytes_.size() - portSize;
  switch (byte(targetOffset - 1)) {
    case ipv4:
      host_ = addressText(AF_INET, bytes_.data() + targetOffset);
      break;
    case ipv6:
      host_ = addressText(AF_INET6, bytes_.data() + targetOffset);
      break;
    default:
      host_ = bytes_.substr(targetOffset + 1, end - targetOffset - 1);
      if (host_.empty() || !std::all_of(host_.begin(), host_.end(), isNameCharacter)) {
        return fail(socksReply(SocksReply::generalFailure));
      }
  }
  port_ = static_cast<std::uint16_t>(byte(end) << 8U | byte(end + 1));
  if (port_ == 0) {
    return fail(socksReply(SocksReply::generalFailure));
  }
  state_ = State::complete;
  return {};
}

std::string SocksHandshake::goOn(Step step, std::size_t length) {
  step_ = step;
  length_ = length;
  return {};
}

std::string SocksHandshake::fail(std::string answer) {
  state_ = State::failed;
  host_.clear();
  return answer;
}

}  // namespace tidewrack
