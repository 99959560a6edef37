#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gio/gio.h>
#include <gtkmm.h>
#include <webkit/webkit.h>

#include "platform/guarded_proxy.h"
#include "ui/html_view.h"
#include "ui/window_fixture.h"

namespace tidewrack {

/// What a script in the page gives, as text; "error: " and its reason when it fails.
std::string evaluate(WebKitWebView* view, const std::string& script);

/// Runs the body of an asynchronous function in the page and waits for the promise that it awaits.
std::string evaluateAsynchronously(WebKitWebView* view, const std::string& functionBody);

/// Gives what the page has started the time to reach a server of this computer.
void letPageSettle(WebKitWebView* view);

/// A server on the loopback that counts who comes.
class CountingServer {
 public:
  /// From the head of a request to the whole answer; an empty answer closes the connection.
  using Answer = std::function<std::string(const std::string& request)>;

  explicit CountingServer(Answer answer = {});
  ~CountingServer();
  CountingServer(const CountingServer&) = delete;
  CountingServer& operator=(const CountingServer&) = delete;

  [[nodiscard]] std::string host() const { return "127.0.0.1:" + std::to_string(port_); }
  [[nodiscard]] std::string address() const { return "http://" + host(); }
  [[nodiscard]] int port() const { return port_; }
  /// Connections, whether or not a request came through them.
  [[nodiscard]] int visits() const { return visits_; }
  /// The first lines of the requests.
  [[nodiscard]] const std::vector<std::string>& requests() const { return requests_; }

 private:
  struct Visit;
  void receive(GSocketConnection* connection);
  static void received(GObject* source, GAsyncResult* result, gpointer data);

  GSocketService* service_;
  GCancellable* cancellable_;
  Answer answer_;
  int port_ = 0;
  int visits_ = 0;
  std::vector<std::string> requests_;
};

/// Lets all requests of the page's session go through this server, as if it were any host they ask.
void useAsProxy(WebKitWebView* view, const CountingServer& server);

/// A window with nothing but a page.
class PageTest : public WidgetTest {
 protected:
  ~PageTest() override;

  void present(Gtk::Widget& widget);
  /// Makes the protected view go through this proxy; to be said before its first use.
  void goThrough(const GuardedProxyOptions& options) { proxy_ = std::make_shared<GuardedProxy>(options); }
  /// Shows a document in the protected view, which is made when first asked for, and waits for its load.
  void show(const std::string& html);
  ui::HTMLView& view();
  WebKitWebView* page() { return view().webView(); }
  std::string evaluated(const std::string& script) { return evaluate(page(), script); }

 private:
  Gtk::Window window_;
  std::shared_ptr<const GuardedProxy> proxy_ = GuardedProxy::shared();
  std::unique_ptr<ui::HTMLView> view_;
};

}  // namespace tidewrack
