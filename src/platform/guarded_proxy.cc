#include "platform/guarded_proxy.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <list>
#include <system_error>
#include <utility>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include "platform/byte_relay.h"
#include "platform/local_host.h"
#include "platform/log.h"

namespace tidewrack {
namespace {

using Milliseconds = std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// A host has seconds to answer: few as long as other addresses of its name are left.
constexpr guint secondsForAnAddress = 2;
constexpr guint secondsForTheLast = 10;
constexpr guint secondsForAProxy = 20;
constexpr std::size_t mostAddresses = 5;

constexpr Milliseconds lingering{30'000};
constexpr Milliseconds pauseWithoutDescriptors{100};
constexpr std::uint16_t closedPort = 9;  // "discard", which no system serves any more

template <typename Object>
struct Unref {
  void operator()(Object* object) const { g_object_unref(object); }
};
template <typename Object>
using ObjectPointer = std::unique_ptr<Object, Unref<Object>>;
using Strings = std::unique_ptr<gchar*, decltype(&g_strfreev)>;

std::vector<std::string> resolveName(const std::string& name, GCancellable* cancellable) {
  const ObjectPointer<GResolver> resolver(g_resolver_get_default());
  GList* found = g_resolver_lookup_by_name(resolver.get(), name.c_str(), cancellable, nullptr);
  std::vector<std::string> addresses;
  for (const GList* node = found; node != nullptr; node = node->next) {
    const std::unique_ptr<char, decltype(&g_free)> text(g_inet_address_to_string(G_INET_ADDRESS(node->data)),
                                                        &g_free);
    addresses.emplace_back(text.get());
  }
  g_resolver_free_addresses(found);
  return addresses;
}

bool isLocal(const std::string& host) {
  return isLocalHost(host) || isNeighbourAddress(host);
}

SocksReply replyOf(const GError* error) {
  if (error->domain == G_IO_ERROR) {
    switch (error->code) {
      case G_IO_ERROR_CONNECTION_REFUSED:
        return SocksReply::connectionRefused;
      case G_IO_ERROR_NETWORK_UNREACHABLE:
        return SocksReply::networkUnreachable;
      case G_IO_ERROR_HOST_UNREACHABLE:
      case G_IO_ERROR_TIMED_OUT:
        return SocksReply::hostUnreachable;
      case G_IO_ERROR_PROXY_NOT_ALLOWED:
        return SocksReply::notAllowed;
      default:
        break;
    }
  }
  return SocksReply::generalFailure;
}

/// Of `host` at `port`, for what a page loads: the proxies of the desktop may depend on the scheme.
std::string addressOf(const std::string& host, std::uint16_t port) {
  const bool isIPv6 = host.find(':') != std::string::npos;
  return std::string(port == 80 ? "http://" : "https://") + (isIPv6 ? "[" + host + "]" : host) + ":" +
         std::to_string(port);
}

ObjectPointer<GSocketClient> makeClient(guint seconds) {
  ObjectPointer<GSocketClient> client(g_socket_client_new());
  g_socket_client_set_timeout(client.get(), seconds);
  return client;
}

/// Whether a proxy takes names: for one that does not, a name would be resolved a second time.
bool takesNames(const char* proxy) {
  const char* scheme = g_uri_peek_scheme(proxy);
  const ObjectPointer<GProxy> protocol(scheme != nullptr ? g_proxy_get_default_for_protocol(scheme)
                                                         : nullptr);
  return protocol && g_proxy_supports_hostname(protocol.get()) != FALSE;
}

/// False when the system has no thread left.
template <typename Work>
bool startThread(std::thread& thread, Work work) {
  try {
    thread = std::thread(std::move(work));
    return true;
  } catch (const std::system_error& error) {
    errno = error.code().value();
    return false;
  }
}

// An answer is so short that it fits into the socket of a client that has been sent nothing else.
bool sendAnswer(int client, const std::string& answer) {
  return ::send(client, answer.data(), answer.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(answer.size());
}

void increment(const Descriptor& event) {
  eventfd_write(event.number(), 1);
}

// What comes is passed on at once, however little it is.
void sendWithoutDelay(int socket) {
  const int on = 1;
  ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

}  // namespace

struct GuardedProxy::Client {
  std::thread thread;
  std::atomic<bool> isServed = false;
};

struct GuardedProxy::Outcome {
  explicit Outcome(SocksReply why) : reply(why) {}
  Outcome(GSocketConnection* made, GError* error)
      : connection(made), reply(made != nullptr ? SocksReply::succeeded : replyOf(error)) {
    g_clear_error(&error);
  }

  ObjectPointer<GSocketConnection> connection;
  SocksReply reply;
};

GuardedProxy::GuardedProxy(GuardedProxyOptions options)
    : options_(std::move(options)),
      cancellable_(g_cancellable_new(), &g_object_unref),
      stop_(::eventfd(0, EFD_CLOEXEC)),
      finished_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!options_.resolve) {
    options_.resolve = &resolveName;
  }
  if (!options_.isForbidden) {
    options_.isForbidden = &isLocal;
  }
  if (!start()) {
    Logger::of("App").error("Remote content stays away: %s", {std::string(g_strerror(errno))});
  }
}

GuardedProxy::~GuardedProxy() {
  g_cancellable_cancel(cancellable_.get());
  if (acceptor_.joinable()) {
    increment(stop_);
    acceptor_.join();
  }
}

std::shared_ptr<const GuardedProxy> GuardedProxy::shared() {
  static std::weak_ptr<const GuardedProxy> current;
  auto proxy = current.lock();
  if (!proxy) {
    proxy = std::make_shared<const GuardedProxy>();
    current = proxy;
  }
  return proxy;
}

std::string GuardedProxy::address() const {
  return "socks5://127.0.0.1:" + std::to_string(isRunning() ? port_ : closedPort);
}

bool GuardedProxy::start() {
  listener_ = Descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  sockaddr_in own{};
  own.sin_family = AF_INET;
  own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* address = reinterpret_cast<sockaddr*>(&own);
  socklen_t size = sizeof own;
  if (stop_.number() < 0 || finished_.number() < 0 || listener_.number() < 0 ||
      ::bind(listener_.number(), address, size) != 0 || ::listen(listener_.number(), SOMAXCONN) != 0 ||
      ::getsockname(listener_.number(), address, &size) != 0 ||
      !startThread(acceptor_, [this] { acceptClients(); })) {
    return false;
  }
  port_ = ntohs(own.sin_port);
  return true;
}

void GuardedProxy::acceptClients() {
  for (;;) {
    const bool hasPlace = clients_.size() < options_.mostConnections;
    std::array<pollfd, 3> waited = {pollfd{stop_.number(), POLLIN, 0}, pollfd{finished_.number(), POLLIN, 0},
                                    pollfd{hasPlace ? listener_.number() : -1, POLLIN, 0}};
    ::poll(waited.data(), waited.size(), -1);
    if (waited[0].revents != 0) {
      break;
    }
    if (waited[1].revents != 0) {
      forgetServedClients();
    }
    if (waited[2].revents != 0) {
      acceptClient();
    }
  }
  for (Client& client : clients_) {
    client.thread.join();
  }
}

void GuardedProxy::forgetServedClients() {
  eventfd_t count = 0;
  eventfd_read(finished_.number(), &count);
  clients_.remove_if([](Client& client) {
    const bool isServed = client.isServed;
    if (isServed) {
      client.thread.join();
    }
    return isServed;
  });
}

void GuardedProxy::acceptClient() {
  Descriptor socket(::accept4(listener_.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (socket.number() < 0) {
    // Without descriptors left the next call would fail at once again.
    if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
      waitFor(-1, 0, pauseWithoutDescriptors);
    }
    return;
  }
  Client& client = clients_.emplace_back();
  const bool hasStarted = startThread(client.thread, [this, &client, own = std::move(socket)] {
    serve(own.number());
    client.isServed = true;
    increment(finished_);
  });
  if (!hasStarted) {
    clients_.pop_back();
  }
}

void GuardedProxy::serve(int client) const {
  SocksHandshake handshake;
  if (!shakeHands(client, handshake)) {
    return;
  }
  const Outcome outcome = connect(handshake.host(), handshake.port());
  if (!sendAnswer(client, socksReply(outcome.reply)) || !outcome.connection) {
    return;
  }
  const int host = g_socket_get_fd(g_socket_connection_get_socket(outcome.connection.get()));
  sendWithoutDelay(client);
  sendWithoutDelay(host);
  relayBytes(client, host, stop_.number(), lingering);
}

bool GuardedProxy::shakeHands(int client, SocksHandshake& handshake) const {
  const auto deadline = Clock::now() + options_.handshakeTime;
  std::array<char, 512> bytes{};
  while (handshake.state() == SocksHandshake::State::open) {
    const ssize_t count = ::recv(client, bytes.data(), std::min(handshake.wanted(), bytes.size()), 0);
    if (count > 0) {
      if (!sendAnswer(client, handshake.take({bytes.data(), static_cast<std::size_t>(count)}))) {
        return false;
      }
    } else {
      const bool isOver = count == 0 || (errno != EAGAIN && errno != EINTR);
      if (isOver || !waitFor(client, POLLIN, std::chrono::ceil<Milliseconds>(deadline - Clock::now()))) {
        return false;
      }
    }
  }
  return handshake.state() == SocksHandshake::State::complete;
}

// False when the time is over or everything ends.
bool GuardedProxy::waitFor(int socket, short events, Milliseconds time) const {
  std::array<pollfd, 2> waited = {pollfd{stop_.number(), POLLIN, 0}, pollfd{socket, events, 0}};
  const auto patience = static_cast<int>(std::max(time, Milliseconds::zero()).count());
  const int count = ::poll(waited.data(), waited.size(), patience);
  return (count < 0 && errno == EINTR) || (count > 0 && waited[0].revents == 0);
}

GuardedProxy::Outcome GuardedProxy::connect(const std::string& host, std::uint16_t port) const {
  if (options_.isForbidden(host)) {
    return Outcome(SocksReply::notAllowed);
  }
  const bool isAddress = g_hostname_is_ip_address(host.c_str()) != FALSE;
  const auto addresses = isAddress ? std::vector{host} : options_.resolve(host, cancellable_.get());
  if (std::any_of(addresses.begin(), addresses.end(), options_.isForbidden)) {
    return Outcome(SocksReply::notAllowed);
  }
  GProxyResolver* resolver =
      options_.userProxies ? options_.userProxies.get() : g_proxy_resolver_get_default();
  const Strings proxies(
      g_proxy_resolver_lookup(resolver, addressOf(host, port).c_str(), cancellable_.get(), nullptr),
      &g_strfreev);
  Outcome outcome(SocksReply::hostUnreachable);
  for (gchar** proxy = proxies.get(); proxy != nullptr && *proxy != nullptr && !outcome.connection; ++proxy) {
    outcome = std::string_view(*proxy) == "direct://" ? connectDirectly(addresses, port)
                                                      : connectThrough(*proxy, host, port);
  }
  return outcome;
}

GuardedProxy::Outcome GuardedProxy::connectDirectly(const std::vector<std::string>& addresses,
                                                    std::uint16_t port) const {
  Outcome outcome(SocksReply::hostUnreachable);
  const std::size_t count = std::min(addresses.size(), mostAddresses);
  for (std::size_t index = 0; index < count && !outcome.connection; ++index) {
    const ObjectPointer<GSocketAddress> address(
        g_inet_socket_address_new_from_string(addresses[index].c_str(), port));
    if (address) {
      const auto client = makeClient(index + 1 < count ? secondsForAnAddress : secondsForTheLast);
      g_socket_client_set_enable_proxy(client.get(), FALSE);
      GError* error = nullptr;
      GSocketConnection* connection = g_socket_client_connect(
          client.get(), G_SOCKET_CONNECTABLE(address.get()), cancellable_.get(), &error);
      outcome = Outcome(connection, error);
    }
  }
  return outcome;
}

GuardedProxy::Outcome GuardedProxy::connectThrough(const char* proxy, const std::string& host,
                                                   std::uint16_t port) const {
  if (!takesNames(proxy)) {
    return Outcome(SocksReply::generalFailure);
  }
  const auto client = makeClient(secondsForAProxy);
  const ObjectPointer<GProxyResolver> resolver(g_simple_proxy_resolver_new(proxy, nullptr));
  g_socket_client_set_proxy_resolver(client.get(), resolver.get());
  GError* error = nullptr;
  GSocketConnection* connection = g_socket_client_connect_to_uri(client.get(), addressOf(host, port).c_str(),
                                                                 port, cancellable_.get(), &error);
  Outcome outcome(connection, error);
  // A connection within TLS is no socket that bytes could be carried to.
  return G_IS_TCP_WRAPPER_CONNECTION(connection) ? Outcome(SocksReply::generalFailure) : std::move(outcome);
}

}  // namespace tidewrack
