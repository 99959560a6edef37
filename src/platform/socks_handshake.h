#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tidewrack {

/// How a request ended (RFC 1928, section 6).
enum class SocksReply : std::uint8_t {
  succeeded = 0,
  generalFailure = 1,
  notAllowed = 2,
  networkUnreachable = 3,
  hostUnreachable = 4,
  connectionRefused = 5,
  commandNotSupported = 7,
  addressTypeNotSupported = 8,
};

/// The bytes of a reply. The address that it names is all zeros, which clients do not look at.
std::string socksReply(SocksReply reply);

/// The server's side of how a SOCKS 5 connection begins (RFC 1928, sections 3 to 5): the method is "no
/// authentication", the command CONNECT. Takes any bytes; knows nothing of sockets.
class SocksHandshake {
 public:
  enum class State { open, complete, failed };

  [[nodiscard]] State state() const { return state_; }
  /// How many bytes the next step lacks; at least one while the handshake is open, otherwise none.
  [[nodiscard]] std::size_t wanted() const;
  /// Takes at most `wanted` bytes and gives what is to be answered now, which is often nothing. A client that
  /// does not speak the protocol is answered nothing; one that asks for what is not offered is told so.
  std::string take(std::string_view bytes);

  /// Once complete: where the client wants to go, a name of ASCII letters, digits, '-', '_' and '.', or an
  /// address in text. Empty before.
  [[nodiscard]] const std::string& host() const { return host_; }
  [[nodiscard]] std::uint16_t port() const { return port_; }  ///< Not 0 once complete.

 private:
  enum class Step { greeting, methods, head, target };

  std::string takeStep();
  std::string takeMethods();
  std::string takeHead();
  std::string takeTarget();
  std::string goOn(Step step, std::size_t length);
  std::string fail(std::string answer = {});
  [[nodiscard]] std::uint8_t byte(std::size_t index) const {
    return static_cast<std::uint8_t>(bytes_[index]);
  }

  State state_ = State::open;
  Step step_ = Step::greeting;
  std::size_t length_ = 2;  ///< Of the message that is being received, as far as that is known.
  std::string bytes_;       ///< Of that message.
  std::string host_;
  std::uint16_t port_ = 0;
};

}  // namespace tidewrack
