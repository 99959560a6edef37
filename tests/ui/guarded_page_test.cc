// The way of a page to public hosts, and what becomes of it when their names turn out to be local.

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>
#include <webkit/webkit.h>

#include "platform/guarded_proxy.h"
#include "ui/page_support.h"

namespace tidewrack {
namespace {

using Addresses = std::vector<std::string>;

constexpr const char* picture =
    "<svg xmlns='http://www.w3.org/2000/svg' width='20' height='20'><rect width='9' height='9'/></svg>";

std::string response(const std::string& type, const std::string& body) {
  return "HTTP/1.1 200 OK\r\nConnection: close\r\nAccess-Control-Allow-Origin: *\r\nContent-Type: " + type +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string redirection(const std::string& target) {
  return "HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 0\r\nLocation: " + target + "\r\n\r\n";
}

std::string addressWhereNobodyListens() {
  return GuardedProxy().address();  // of a proxy that is gone at once
}

/// Of this program, among others that may run beside.
void killNetworkProcess() {
  namespace fs = std::filesystem;
  int count = 0;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    std::error_code error;
    if (fs::read_symlink(entry.path() / "exe", error).filename() != "WebKitNetworkProcess") {
      continue;
    }
    std::string field;
    std::ifstream stat(entry.path() / "stat");
    stat >> field >> field >> field >> field;  // "pid (name) state parent"
    if (field == std::to_string(::getpid())) {
      ::kill(std::stoi(entry.path().filename()), SIGKILL);
      ++count;
    }
  }
  EXPECT_EQ(count, 1);
}

class GuardedPage : public PageTest {
 protected:
  GuardedPage() {
    options_.resolve = [this](const std::string& name, GCancellable*) {
      const std::lock_guard lock(mutex_);
      asked_.push_back(name);
      return Addresses{"127.0.0.1"};
    };
  }

  /// Takes this computer for a public host, except under the name "local.example".
  void allowPublicNames() {
    options_.isForbidden = [](const std::string& host) { return host == "local.example"; };
  }
  bool wasAskedFor(const std::string& name) {
    const std::lock_guard lock(mutex_);
    return std::find(asked_.begin(), asked_.end(), name) != asked_.end();
  }
  static std::string at(const char* name, const CountingServer& server) {
    return std::string("http://") + name + ":" + std::to_string(server.port());
  }

  GuardedProxyOptions options_;
  int attempts_ = 0;

 private:
  std::mutex mutex_;
  std::vector<std::string> asked_;
};

TEST_F(GuardedPage, APictureOfAPublicHostIsShown) {
  const CountingServer server([](const std::string&) { return response("image/svg+xml", picture); });
  allowPublicNames();
  goThrough(options_);
  show("<img id=a src='" + at("public.example", server) + "/a.svg'>");
  EXPECT_EQ(evaluated("document.getElementById('a').naturalWidth"), "20");
  EXPECT_EQ(server.requests(), Addresses{"GET /a.svg HTTP/1.1"});
  EXPECT_TRUE(wasAskedFor("public.example"));
}

TEST_F(GuardedPage, APictureOfAPublicNameWithALocalAddressIsNotAskedFor) {
  const CountingServer server([](const std::string&) { return response("image/svg+xml", picture); });
  goThrough(options_);
  show("<img id=a src='" + at("public.example", server) + "/a.svg'>");
  EXPECT_EQ(evaluated("document.getElementById('a').naturalWidth"), "0");
  EXPECT_TRUE(wasAskedFor("public.example"));
  EXPECT_EQ(server.visits(), 0);
}

TEST_F(GuardedPage, FramesStyleSheetsAndScriptsComeThroughTheProxy) {
  const CountingServer server([](const std::string&) { return response("text/css", "p { color: red }"); });
  allowPublicNames();
  goThrough(options_);
  const std::string host = at("public.example", server);
  show("<link rel=stylesheet href='" + host + "/css'><iframe src='" + host +
       "/frame'></iframe><script>fetch('" + host + "/fetch')</script>");
  EXPECT_TRUE(runUntil([&] { return server.visits() >= 3; }, 20));
}

TEST_F(GuardedPage, ARedirectionToALocalNameLeadsNowhere) {
  const CountingServer local([](const std::string&) { return response("image/svg+xml", picture); });
  const std::string target = at("local.example", local) + "/secret";
  const CountingServer server([&](const std::string&) { return redirection(target); });
  allowPublicNames();
  goThrough(options_);
  show("<img id=a src='" + at("public.example", server) + "/a.svg'>");
  EXPECT_EQ(server.visits(), 1);
  EXPECT_EQ(local.visits(), 0);
  EXPECT_EQ(evaluated("document.getElementById('a').naturalWidth"), "0");
}

// The name is public for the first picture and local for the next one.
TEST_F(GuardedPage, ANameThatBecomesLocalIsNoLongerReached) {
  const CountingServer server([](const std::string&) { return response("image/svg+xml", picture); });
  std::atomic<int> count = 0;
  options_.resolve = [&](const std::string&, GCancellable*) {
    return ++count == 1 ? Addresses{"127.0.0.1"} : Addresses{"127.0.0.2"};
  };
  options_.isForbidden = [](const std::string& host) { return host == "127.0.0.2"; };
  goThrough(options_);
  const std::string host = at("public.example", server);
  show("<img id=a src='" + host + "/a.svg'>");
  EXPECT_EQ(server.visits(), 1);
  show("<img id=b src='" + host + "/b.svg'>");
  EXPECT_EQ(evaluated("document.getElementById('b').naturalWidth"), "0");
  EXPECT_EQ(server.visits(), 1);
  EXPECT_GE(count, 2);
}

TEST_F(GuardedPage, AnEncryptedConnectionComesThroughTheProxy) {
  std::string received;
  const CountingServer server([&](const std::string& request) {
    received = request;
    return std::string();
  });
  allowPublicNames();
  goThrough(options_);
  show("<img src='https://public.example:" + std::to_string(server.port()) + "/a.png'>");
  EXPECT_TRUE(received.starts_with("\x16\x03")) << received;  // a TLS handshake
}

// What becomes of a picture in a page without any other fence than the proxy at this address.
std::string pictureThrough(const std::string& proxy, const std::string& url) {
  WebKitNetworkSession* session = webkit_network_session_new_ephemeral();
  WebKitNetworkProxySettings* settings = webkit_network_proxy_settings_new(proxy.c_str(), nullptr);
  webkit_network_session_set_proxy_settings(session, WEBKIT_NETWORK_PROXY_MODE_CUSTOM, settings);
  webkit_network_proxy_settings_free(settings);
  Gtk::Window window;
  auto* view = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session, nullptr));
  g_object_unref(session);
  window.set_child(*Glib::wrap(GTK_WIDGET(view)));
  window.present();
  webkit_web_view_load_html(view, "<p>text</p>", nullptr);
  runUntil([&] { return webkit_web_view_get_estimated_load_progress(view) == 1.0; });
  return evaluateAsynchronously(view,
                                "const picture = new Image(); return await new Promise(done => {"
                                "picture.onload = () => done('shown'); picture.onerror = () => done('no');"
                                "picture.src = '" +
                                    url + "' })");
}

TEST_F(GuardedPage, WhereNoProxyListensTheEngineDoesNotGoByItself) {
  const CountingServer server([](const std::string&) { return response("image/svg+xml", picture); });
  EXPECT_EQ(pictureThrough("direct://", server.address() + "/direct"), "shown");
  EXPECT_EQ(pictureThrough(addressWhereNobodyListens(), server.address() + "/closed"), "no");
  EXPECT_EQ(server.requests(), Addresses{"GET /direct HTTP/1.1"});
}

// The engine's process for the network serves all pages of the program; it may crash.
TEST_F(GuardedPage, TheProxyStaysWhenTheNetworkProcessIsNew) {
  const CountingServer server([](const std::string&) { return response("image/svg+xml", picture); });
  allowPublicNames();
  goThrough(options_);
  show("<img id=a src='" + at("before.example", server) + "/a.svg'>");
  EXPECT_TRUE(wasAskedFor("before.example"));
  killNetworkProcess();
  const auto shows = [&] {
    show("<img id=a src='" + at("after.example", server) + "/a.svg'><p>" + std::to_string(++attempts_));
    return evaluated("document.getElementById('a').naturalWidth") == "20";
  };
  EXPECT_TRUE(runUntil(shows));
  EXPECT_TRUE(wasAskedFor("after.example"));
}

}  // namespace
}  // namespace tidewrack
