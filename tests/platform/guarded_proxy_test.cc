#include "platform/guarded_proxy.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "support/sockets.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Addresses = std::vector<std::string>;

constexpr std::size_t replySize = 10;

int portOf(const GuardedProxy& proxy) {
  const std::string address = proxy.address();
  return std::stoi(address.substr(address.rfind(':') + 1));
}

/// Says where a client wants to go and gives the reply's code, or -1 when none came.
int askFor(const TestSocket& client, const std::string& target, int port) {
  client.send("\x05\x01\x00"s);
  if (client.receive(2) != "\x05\x00"s) {
    return -1;
  }
  client.send("\x05\x01\x00"s + target + static_cast<char>(port >> 8) + static_cast<char>(port & 0xFF));
  const std::string reply = client.receive(replySize);
  return reply.size() == replySize ? reply[1] : -1;
}

std::string named(const std::string& name) {
  return "\x03"s + static_cast<char>(name.size()) + name;
}

int codeOf(SocksReply reply) {
  return static_cast<int>(reply);
}

/// A proxy that asks the test what names mean.
class GuardedProxyTest : public testing::Test {
 protected:
  GuardedProxyTest() {
    options_.resolve = [this](const std::string& name, GCancellable*) {
      const std::lock_guard lock(mutex_);
      asked_.push_back(name);
      return addresses_;
    };
    options_.isForbidden = [](const std::string&) { return false; };
    userHas("direct://");
  }

  /// From now on names have these addresses.
  void namesMean(Addresses addresses) {
    const std::lock_guard lock(mutex_);
    addresses_ = std::move(addresses);
  }
  std::vector<std::string> asked() {
    const std::lock_guard lock(mutex_);
    return asked_;
  }
  /// What is forbidden in the program is forbidden here too.
  void guardForReal() { options_.isForbidden = nullptr; }
  void userHas(const std::string& proxy) {
    options_.userProxies = {g_simple_proxy_resolver_new(proxy.c_str(), nullptr), &g_object_unref};
  }

  GuardedProxy& proxy() {
    if (!proxy_) {
      proxy_ = std::make_unique<GuardedProxy>(options_);
    }
    return *proxy_;
  }
  TestSocket client() { return TestSocket::to(portOf(proxy())); }
  int replyFor(const std::string& target) { return askFor(client(), target, server_.port()); }

  GuardedProxyOptions options_;
  TestListener server_;
  std::unique_ptr<GuardedProxy> proxy_;

 private:
  std::mutex mutex_;
  Addresses addresses_;
  std::vector<std::string> asked_;
};

TEST_F(GuardedProxyTest, ConnectsToTheHostOfAName) {
  namesMean({"127.0.0.1"});
  const TestSocket socket = client();
  ASSERT_EQ(askFor(socket, named("public.example"), server_.port()), codeOf(SocksReply::succeeded));
  const TestSocket visitor = server_.accept();
  socket.send("question");
  EXPECT_EQ(visitor.receive(8), "question");
  visitor.send("answer");
  EXPECT_EQ(socket.receive(6), "answer");
}

// A second answer, given a moment later, could be another one.
TEST_F(GuardedProxyTest, ResolvesANameOnceForAConnection) {
  namesMean({"127.0.0.1"});
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::succeeded));
  EXPECT_EQ(asked(), Addresses{"public.example"});
}

TEST_F(GuardedProxyTest, ANameThatHasMeanwhileBecomeLocalIsRefusedTheNextTime) {
  options_.isForbidden = [](const std::string& host) { return host == "127.0.0.2"; };
  namesMean({"127.0.0.1"});
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::succeeded));
  EXPECT_TRUE(server_.accept().isOpen());
  namesMean({"127.0.0.2"});
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::notAllowed));
  EXPECT_FALSE(server_.hasVisitor());
}

TEST_F(GuardedProxyTest, ANameOfALocalAddressIsRefused) {
  guardForReal();
  for (const char* address :
       {"127.0.0.1", "127.8.9.1", "0.0.0.0", "10.0.0.1", "192.168.1.1", "169.254.169.254", "172.16.0.1",
        "100.64.0.1", "224.0.0.251", "::1", "::", "fe80::1", "fd00::1", "::ffff:127.0.0.1", "64:ff9b::7f00:1",
        "2002:7f00:1::1", "ff02::1"}) {
    namesMean({address});
    EXPECT_EQ(replyFor(named("tracker.example")), codeOf(SocksReply::notAllowed)) << address;
  }
  EXPECT_FALSE(server_.hasVisitor());
}

TEST_F(GuardedProxyTest, OneLocalAddressAmongOthersIsEnoughToRefuse) {
  guardForReal();
  namesMean({"93.184.216.34", "127.0.0.1"});
  EXPECT_EQ(replyFor(named("tracker.example")), codeOf(SocksReply::notAllowed));
  EXPECT_FALSE(server_.hasVisitor());
}

TEST_F(GuardedProxyTest, LocalNamesAreRefusedUnresolved) {
  guardForReal();
  namesMean({"93.184.216.34"});
  for (const char* name : {"localhost", "printer", "nas.local", "127.0.0.1", "127.1", "0x7f.1"}) {
    EXPECT_EQ(replyFor(named(name)), codeOf(SocksReply::notAllowed)) << name;
  }
  EXPECT_TRUE(asked().empty());
}

TEST_F(GuardedProxyTest, LocalAddressesAreRefused) {
  guardForReal();
  EXPECT_EQ(replyFor("\x01\x7F\x00\x00\x01"s), codeOf(SocksReply::notAllowed));
  EXPECT_EQ(replyFor("\x04"s + std::string(15, '\0') + "\x01"), codeOf(SocksReply::notAllowed));
  EXPECT_EQ(replyFor("\x04"s + std::string(10, '\0') + "\xFF\xFF\x7F\x00\x00\x01"s),
            codeOf(SocksReply::notAllowed));
  EXPECT_FALSE(server_.hasVisitor());
}

TEST_F(GuardedProxyTest, AnAddressThatIsAllowedNeedsNoName) {
  EXPECT_EQ(replyFor("\x01\x7F\x00\x00\x01"s), codeOf(SocksReply::succeeded));
  EXPECT_TRUE(server_.accept().isOpen());
  EXPECT_TRUE(asked().empty());
}

// The server listens at the second address alone.
TEST_F(GuardedProxyTest, GoesOnToTheNextAddress) {
  namesMean({"127.0.0.2", "127.0.0.1"});
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::succeeded));
  EXPECT_TRUE(server_.accept().isOpen());
}

TEST_F(GuardedProxyTest, SaysThatAPortIsClosed) {
  namesMean({"127.0.0.2"});
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::connectionRefused));
}

TEST_F(GuardedProxyTest, ANameWithoutAnAddressIsUnreachable) {
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::hostUnreachable));
}

TEST_F(GuardedProxyTest, RefusesEverythingButConnect) {
  const TestSocket socket = client();
  socket.send("\x05\x01\x00"s);
  EXPECT_EQ(socket.receive(2), "\x05\x00"s);
  socket.send("\x05\x02\x00\x01\x7F\x00\x00\x01\x00\x50"s);
  EXPECT_EQ(socket.receive(100), socksReply(SocksReply::commandNotSupported));
}

TEST_F(GuardedProxyTest, ClosesOnOtherProtocolsAtOnce) {
  for (const std::string& bytes :
       {"GET http://127.0.0.1/ HTTP/1.1\r\n\r\n"s, "CONNECT 127.0.0.1:80 HTTP/1.1\r\n\r\n"s,
        "\x04\x01\x00\x50\x7F\x00\x00\x01\x00"s, "\x16\x03\x01\x02\x00\x01"s, std::string(100'000, '\xFF')}) {
    const TestSocket socket = client();
    socket.send(bytes);
    EXPECT_TRUE(socket.isClosedByTheOther());
  }
}

TEST_F(GuardedProxyTest, GivesUpOnAClientThatDoesNotFinishItsHandshake) {
  options_.handshakeTime = 30ms;
  const TestSocket silent = client();
  EXPECT_TRUE(silent.isClosedByTheOther());
  const TestSocket slow = client();
  slow.send("\x05\x01"s);
  EXPECT_TRUE(slow.isClosedByTheOther());
}

TEST_F(GuardedProxyTest, AClientThatLeavesInTheMiddleDoesNoHarm) {
  client().close();
  client().send("\x05"s);
  client().send("\x05\x01\x00\x05\x01\x00\x03\xFF"s);
  namesMean({"127.0.0.1"});
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::succeeded));
}

TEST_F(GuardedProxyTest, MoreClientsThanAllowedWaitForAPlace) {
  options_.mostConnections = 1;
  namesMean({"127.0.0.1"});
  TestSocket first = client();
  ASSERT_EQ(askFor(first, named("public.example"), server_.port()), codeOf(SocksReply::succeeded));
  TestSocket visitor = server_.accept();
  const TestSocket second = client();
  second.send("\x05\x01\x00"s);
  EXPECT_FALSE(second.hasInput(50));
  first.close();
  visitor.close();
  EXPECT_EQ(second.receive(2), "\x05\x00"s);
}

TEST_F(GuardedProxyTest, ManyClientsAreServedAtATime) {
  namesMean({"127.0.0.1"});
  std::vector<TestSocket> clients;
  std::vector<TestSocket> visitors;
  for (int number = 0; number < 20; ++number) {
    clients.push_back(client());
    ASSERT_EQ(askFor(clients.back(), named("public.example"), server_.port()), codeOf(SocksReply::succeeded));
    visitors.push_back(server_.accept());
  }
  for (std::size_t index = 0; index < clients.size(); ++index) {
    clients[index].send(std::to_string(10 + index));
    EXPECT_EQ(visitors[index].receive(2), std::to_string(10 + index));
  }
}

TEST_F(GuardedProxyTest, EndsWhateverItIsDoing) {
  std::atomic<bool> isResolving = false;
  options_.resolve = [&](const std::string& name, GCancellable* cancellable) -> Addresses {
    if (name == "slow.example") {
      isResolving = true;
      GPollFD waited{};
      g_cancellable_make_pollfd(cancellable, &waited);
      g_poll(&waited, 1, 20'000);
      g_cancellable_release_fd(cancellable);
    }
    return {"127.0.0.1"};
  };
  const TestSocket connected = client();
  ASSERT_EQ(askFor(connected, named("public.example"), server_.port()), codeOf(SocksReply::succeeded));
  const TestSocket visitor = server_.accept();
  const TestSocket shakingHands = client();
  shakingHands.send("\x05\x01\x00"s);
  EXPECT_EQ(shakingHands.receive(2), "\x05\x00"s);
  const TestSocket waiting = client();
  waiting.send("\x05\x01\x00\x05\x01\x00"s + named("slow.example") + "\x00\x50"s);
  while (!isResolving) {
    std::this_thread::yield();
  }
  const int port = portOf(proxy());
  proxy_.reset();
  EXPECT_TRUE(connected.isClosedByTheOther());
  EXPECT_TRUE(visitor.isClosedByTheOther());
  EXPECT_TRUE(shakingHands.isClosedByTheOther());
  EXPECT_FALSE(TestSocket::to(port).isOpen());
}

// What libsoup and so the web engine speaks: the name must come here unresolved.
TEST_F(GuardedProxyTest, GIOHandsOverNamesUnresolved) {
  namesMean({"127.0.0.1"});
  const std::unique_ptr<GSocketClient, void (*)(gpointer)> gio(g_socket_client_new(), &g_object_unref);
  const std::unique_ptr<GProxyResolver, void (*)(gpointer)> resolver(
      g_simple_proxy_resolver_new(proxy().address().c_str(), nullptr), &g_object_unref);
  g_socket_client_set_proxy_resolver(gio.get(), resolver.get());
  const std::unique_ptr<GSocketConnection, void (*)(gpointer)> connection(
      g_socket_client_connect_to_host(gio.get(), "tracker.invalid", static_cast<guint16>(server_.port()),
                                      nullptr, nullptr),
      &g_object_unref);
  ASSERT_TRUE(connection);
  EXPECT_EQ(asked(), Addresses{"tracker.invalid"});
  EXPECT_TRUE(server_.accept().isOpen());
}

TEST(GuardedProxyStart, WithoutDescriptorsNobodyListensAtItsAddress) {
  rlimit usual{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
  const rlimit none{0, usual.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  const GuardedProxy proxy;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
  EXPECT_FALSE(proxy.isRunning());
  EXPECT_EQ(proxy.address(), "socks5://127.0.0.1:9");
  EXPECT_FALSE(TestSocket::to(portOf(proxy)).isOpen());
}

TEST(GuardedProxyStart, TheOneOfTheProgramLivesAsLongAsItIsHeld) {
  auto first = GuardedProxy::shared();
  EXPECT_EQ(first, GuardedProxy::shared());
  const int port = portOf(*first);
  EXPECT_TRUE(TestSocket::to(port).isOpen());
  first.reset();
  EXPECT_FALSE(TestSocket::to(port).isOpen());
}

/// The proxy that the user has set is one of the same kind, with a view of names of its own.
class BehindAnotherProxy : public GuardedProxyTest {
 protected:
  BehindAnotherProxy() {
    GuardedProxyOptions others = options_;
    others.resolve = [this](const std::string& name, GCancellable*) -> Addresses {
      const std::lock_guard lock(mutex_);
      askedThere_.push_back(name);
      return {"127.0.0.1"};
    };
    other_ = std::make_unique<GuardedProxy>(others);
    userHas(other_->address());
  }
  std::vector<std::string> askedThere() {
    const std::lock_guard lock(mutex_);
    return askedThere_;
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> askedThere_;
  std::unique_ptr<GuardedProxy> other_;
};

TEST_F(BehindAnotherProxy, TheOtherIsToldTheName) {
  namesMean({"93.184.216.34"});
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::succeeded));
  EXPECT_EQ(askedThere(), Addresses{"public.example"});
  EXPECT_TRUE(server_.accept().isOpen());
}

TEST_F(BehindAnotherProxy, ANameThatOnlyTheOtherKnowsIsLeftToIt) {
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::succeeded));
  EXPECT_EQ(askedThere(), Addresses{"public.example"});
}

TEST_F(BehindAnotherProxy, ANameOfALocalAddressIsRefusedHere) {
  guardForReal();
  namesMean({"127.0.0.1"});
  EXPECT_EQ(replyFor(named("tracker.example")), codeOf(SocksReply::notAllowed));
  EXPECT_EQ(replyFor(named("localhost")), codeOf(SocksReply::notAllowed));
  EXPECT_TRUE(askedThere().empty());
}

TEST_F(BehindAnotherProxy, WhatTheOtherRefusesIsRefused) {
  userHas("socks5://127.0.0.2:" + std::to_string(server_.port()));
  namesMean({"127.0.0.1"});
  EXPECT_NE(replyFor(named("public.example")), codeOf(SocksReply::succeeded));
  EXPECT_FALSE(server_.hasVisitor());
}

// It would have to be told an address, for which the name would be resolved again.
TEST_F(BehindAnotherProxy, OneThatTakesNoNamesIsNotUsed) {
  userHas("socks4://127.0.0.1:" + std::to_string(server_.port()));
  namesMean({"93.184.216.34"});
  EXPECT_EQ(replyFor(named("public.example")), codeOf(SocksReply::generalFailure));
  EXPECT_FALSE(server_.hasVisitor());
}

TEST_F(BehindAnotherProxy, AnHTTPProxyIsAskedToConnect) {
  const TestListener http;
  userHas("http://127.0.0.1:" + std::to_string(http.port()));
  namesMean({"93.184.216.34"});
  const TestSocket socket = client();
  socket.send("\x05\x01\x00\x05\x01\x00"s + named("public.example") + "\x01\xBB"s);
  const TestSocket visitor = http.accept();
  std::string head;
  while (head.find("\r\n\r\n") == std::string::npos) {
    const std::string byte = visitor.receive(1);
    ASSERT_FALSE(byte.empty());
    head += byte;
  }
  EXPECT_TRUE(head.starts_with("CONNECT public.example:443 HTTP/1.0\r\n")) << head;
  visitor.send("HTTP/1.0 200 Connection established\r\n\r\n");
  EXPECT_EQ(socket.receive(2 + replySize), "\x05\x00"s + socksReply(SocksReply::succeeded));
  visitor.send("through");
  EXPECT_EQ(socket.receive(7), "through");
}

}  // namespace
}  // namespace tidewrack
