#pragma once

#include <array>
#include <cerrno>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include "platform/descriptor.h"

namespace tidewrack {

/// A connected socket of a test. Waits for what should come, but not for ever.
class TestSocket {
 public:
  explicit TestSocket(int number) : descriptor_(number) {}

  /// A connection to a port of this computer.
  static TestSocket to(int port) {
    TestSocket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<in_port_t>(port));
    if (::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      return TestSocket(-1);
    }
    return socket;
  }

  [[nodiscard]] int number() const { return descriptor_.number(); }
  [[nodiscard]] bool isOpen() const { return number() >= 0; }

  void send(const std::string& bytes) const {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const ssize_t count = ::send(number(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) {
        return;
      }
      sent += static_cast<std::size_t>(count);
    }
  }
  /// So many bytes, or fewer when the other side closed before.
  [[nodiscard]] std::string receive(std::size_t wanted) const {
    std::string bytes;
    std::array<char, 65536> part{};
    while (bytes.size() < wanted && hasInput()) {
      const ssize_t count = ::recv(number(), part.data(), std::min(part.size(), wanted - bytes.size()), 0);
      if (count <= 0) {
        break;
      }
      bytes.append(part.data(), static_cast<std::size_t>(count));
    }
    return bytes;
  }
  /// Whether the other side has closed the connection and nothing came before that.
  [[nodiscard]] bool isClosedByTheOther() const {
    char byte = 0;
    return hasInput() && ::recv(number(), &byte, 1, 0) <= 0;
  }
  /// Whether something, or the end, comes within this time.
  [[nodiscard]] bool hasInput(int milliseconds = 20'000) const {
    pollfd waited{number(), POLLIN, 0};
    return ::poll(&waited, 1, milliseconds) == 1;
  }
  /// Says that nothing more is sent.
  void finish() const { ::shutdown(number(), SHUT_WR); }
  void close() { descriptor_ = Descriptor(); }

 private:
  Descriptor descriptor_;
};

/// A server on the loopback whose connections the test takes up itself.
class TestListener {
 public:
  TestListener() : descriptor_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* general = reinterpret_cast<sockaddr*>(&address);
    if (::bind(descriptor_.number(), general, size) == 0 && ::listen(descriptor_.number(), 16) == 0 &&
        ::getsockname(descriptor_.number(), general, &size) == 0) {
      port_ = ntohs(address.sin_port);
    }
  }

  [[nodiscard]] int port() const { return port_; }
  /// Whether somebody has connected and was not accepted yet.
  [[nodiscard]] bool hasVisitor() const { return isVisited(0); }
  /// The next connection, for which it waits; a closed socket when none comes.
  [[nodiscard]] TestSocket accept() const {
    return TestSocket(isVisited(20'000) ? ::accept(descriptor_.number(), nullptr, nullptr) : -1);
  }

 private:
  [[nodiscard]] bool isVisited(int milliseconds) const {
    pollfd waited{descriptor_.number(), POLLIN, 0};
    return ::poll(&waited, 1, milliseconds) == 1;
  }

  Descriptor descriptor_;
  int port_ = 0;
};

}  // namespace tidewrack
