#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gio/gio.h>

#include "platform/descriptor.h"
#include "platform/socks_handshake.h"

namespace tidewrack {

/// What a proxy asks and how long it waits. The defaults are for the program. The functions are called on
/// threads of the proxy, several at a time.
struct GuardedProxyOptions {
  /// The addresses of a name, in text, the best first; none when there are none. Ends early when cancelled.
  std::function<std::vector<std::string>(const std::string& name, GCancellable* cancellable)> resolve;
  /// Whether nobody may go to this host, a name or an address in text: isLocalHost or isNeighbourAddress.
  std::function<bool(const std::string& host)> isForbidden;
  /// The proxies that the user has set; null for those of the desktop.
  std::shared_ptr<GProxyResolver> userProxies;
  std::chrono::milliseconds handshakeTime{10'000};  ///< For the whole handshake of a client.
  std::size_t mostConnections = 64;                 ///< At a time; further clients wait.
};

/// A SOCKS 5 proxy on the loopback (RFC 1928) that connects to public hosts only. Who loads what strangers
/// wrote goes through it: a name is resolved here, once; when one of its addresses is forbidden it is
/// refused, and otherwise the connection goes to an address that has been looked at, so that a name which
/// means something else a moment later leads nowhere new. Runs on threads of its own.
///
/// Where the user has set a proxy for a host, that one connects: it is told the name, as proxies have rules
/// about names, after the name's addresses have been looked at here. Behind such a proxy names often cannot
/// be resolved at all; then what the name means is up to the proxy.
class GuardedProxy {
 public:
  explicit GuardedProxy(GuardedProxyOptions options = {});
  /// Ends all connections and waits for the threads.
  ~GuardedProxy();
  GuardedProxy(const GuardedProxy&) = delete;
  GuardedProxy& operator=(const GuardedProxy&) = delete;

  /// The one of the program, which lives as long as somebody holds it. Main thread only.
  static std::shared_ptr<const GuardedProxy> shared();

  /// Where it listens: "socks5://127.0.0.1:" and a port. When it could not start, the port is one where
  /// nobody listens, so that who goes by this address reaches nothing.
  [[nodiscard]] std::string address() const;
  [[nodiscard]] bool isRunning() const { return port_ != 0; }

 private:
  struct Client;
  /// A connection to where a client wants to go, or why there is none.
  struct Outcome;

  bool start();
  void acceptClients();
  void acceptClient();
  void forgetServedClients();
  void serve(int client) const;
  [[nodiscard]] bool shakeHands(int client, SocksHandshake& handshake) const;
  [[nodiscard]] Outcome connect(const std::string& host, std::uint16_t port) const;
  [[nodiscard]] Outcome connectDirectly(const std::vector<std::string>& addresses, std::uint16_t port) const;
  [[nodiscard]] Outcome connectThrough(const char* proxy, const std::string& host, std::uint16_t port) const;
  bool waitFor(int socket, short events, std::chrono::milliseconds time) const;

  GuardedProxyOptions options_;
  std::unique_ptr<GCancellable, void (*)(gpointer)> cancellable_;
  Descriptor listener_;
  Descriptor stop_;      ///< Readable once everything ends.
  Descriptor finished_;  ///< Readable when a client has been served.
  std::uint16_t port_ = 0;
  std::list<Client> clients_;  ///< Of the thread that accepts them.
  std::thread acceptor_;
};

}  // namespace tidewrack
