#include "platform/byte_relay.h"

#include <array>
#include <cerrno>
#include <cstddef>

#include <poll.h>
#include <sys/socket.h>

namespace tidewrack {
namespace {

bool isPassing(int error) {
  return error == EAGAIN || error == EINTR;
}

/// One of the two ways.
class Direction {
 public:
  Direction(int from, int to) : from_(from), to_(to) {}

  [[nodiscard]] bool wantsInput() const { return isOpen_ && begin_ == end_; }
  [[nodiscard]] bool wantsOutput() const { return begin_ < end_; }
  /// Everything that came has been carried, and nothing more comes.
  [[nodiscard]] bool isOver() const { return !isOpen_ && begin_ == end_; }

  /// Carries what goes without waiting; false when a socket failed.
  bool carry() {
    if (wantsInput() && !receive()) {
      return false;
    }
    return !wantsOutput() || send();
  }

 private:
  bool receive() {
    const ssize_t count = ::recv(from_, bytes_.data(), bytes_.size(), 0);
    if (count < 0) {
      return isPassing(errno);
    }
    begin_ = 0;
    end_ = static_cast<std::size_t>(count);
    if (count == 0) {
      isOpen_ = false;
      ::shutdown(to_, SHUT_WR);
    }
    return true;
  }

  bool send() {
    const ssize_t count = ::send(to_, bytes_.data() + begin_, end_ - begin_, MSG_NOSIGNAL);
    if (count < 0) {
      return isPassing(errno);
    }
    begin_ += static_cast<std::size_t>(count);
    return true;
  }

  int from_;
  int to_;
  bool isOpen_ = true;
  std::array<char, std::size_t{32} * 1024> bytes_;  // NOLINT: written before it is read
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

/// What to wait for at a socket: a descriptor of which nothing is wanted would still report its end.
pollfd waiting(int socket, const Direction& from, const Direction& to) {
  const int events = (from.wantsInput() ? POLLIN : 0) | (to.wantsOutput() ? POLLOUT : 0);
  return {events == 0 ? -1 : socket, static_cast<short>(events), 0};
}

}  // namespace

void relayBytes(int first, int second, int stop, std::chrono::milliseconds lingering) {
  Direction there(first, second);
  Direction back(second, first);
  while (!there.isOver() || !back.isOver()) {
    const bool isEnding = there.isOver() || back.isOver();
    std::array<pollfd, 3> waited = {pollfd{stop, POLLIN, 0}, waiting(first, there, back),
                                    waiting(second, back, there)};
    const int count =
        ::poll(waited.data(), waited.size(), isEnding ? static_cast<int>(lingering.count()) : -1);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0 || waited[0].revents != 0 || !there.carry() || !back.carry()) {
      return;
    }
  }
}

}  // namespace tidewrack
