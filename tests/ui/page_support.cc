#include "ui/page_support.h"

#include <array>
#include <memory>

namespace tidewrack {
namespace {

struct ScriptAnswer {
  bool isDone = false;
  std::string text;
};

void take(ScriptAnswer& answer, JSCValue* value, GError* error) {
  if (value != nullptr) {
    char* text = jsc_value_to_string(value);
    answer.text = text;
    g_free(text);
    g_object_unref(value);
  } else {
    answer.text = std::string("error: ") + error->message;
    g_clear_error(&error);
  }
  answer.isDone = true;
}

}  // namespace

std::string evaluate(WebKitWebView* view, const std::string& script) {
  ScriptAnswer answer;
  webkit_web_view_evaluate_javascript(
      view, script.c_str(), -1, nullptr, nullptr, nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        GError* error = nullptr;
        JSCValue* value = webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), result, &error);
        take(*static_cast<ScriptAnswer*>(data), value, error);
      },
      &answer);
  runUntil([&] { return answer.isDone; });
  return answer.text;
}

std::string evaluateAsynchronously(WebKitWebView* view, const std::string& functionBody) {
  ScriptAnswer answer;
  webkit_web_view_call_async_javascript_function(
      view, functionBody.c_str(), -1, nullptr, nullptr, nullptr, nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        GError* error = nullptr;
        JSCValue* value =
            webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(source), result, &error);
        take(*static_cast<ScriptAnswer*>(data), value, error);
      },
      &answer);
  runUntil([&] { return answer.isDone; });
  return answer.text;
}

void letPageSettle(WebKitWebView* view) {
  evaluateAsynchronously(view, "await new Promise(done => setTimeout(done, 200)); return 0;");
}

struct CountingServer::Visit {
  CountingServer* server;
  GSocketConnection* connection;
  std::array<char, 8192> bytes{};
};

CountingServer::CountingServer(Answer answer)
    : service_(g_socket_service_new()), cancellable_(g_cancellable_new()), answer_(std::move(answer)) {
  port_ = g_socket_listener_add_any_inet_port(G_SOCKET_LISTENER(service_), nullptr, nullptr);
  g_signal_connect(
      service_, "incoming",
      G_CALLBACK(+[](GSocketService*, GSocketConnection* connection, GObject*, gpointer self) -> gboolean {
        static_cast<CountingServer*>(self)->receive(connection);
        return TRUE;
      }),
      this);
  g_socket_service_start(service_);
}

CountingServer::~CountingServer() {
  g_cancellable_cancel(cancellable_);
  g_signal_handlers_disconnect_by_data(service_, this);
  g_socket_service_stop(service_);
  g_socket_listener_close(G_SOCKET_LISTENER(service_));
  g_object_unref(service_);
  g_object_unref(cancellable_);
}

void CountingServer::receive(GSocketConnection* connection) {
  ++visits_;
  auto* visit = new Visit{this, G_SOCKET_CONNECTION(g_object_ref(connection))};
  g_input_stream_read_async(g_io_stream_get_input_stream(G_IO_STREAM(connection)), visit->bytes.data(),
                            visit->bytes.size(), G_PRIORITY_DEFAULT, cancellable_, &received, visit);
}

void CountingServer::received(GObject* source, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Visit> visit(static_cast<Visit*>(data));
  GError* error = nullptr;
  const gssize count = g_input_stream_read_finish(G_INPUT_STREAM(source), result, &error);
  const bool isGone = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
  g_clear_error(&error);
  if (!isGone && count > 0) {
    const std::string request(visit->bytes.data(), static_cast<std::size_t>(count));
    visit->server->requests_.push_back(request.substr(0, request.find("\r\n")));
    if (visit->server->answer_) {
      const std::string answer = visit->server->answer_(request);
      g_output_stream_write_all(g_io_stream_get_output_stream(G_IO_STREAM(visit->connection)), answer.data(),
                                answer.size(), nullptr, nullptr, nullptr);
    }
  }
  g_io_stream_close(G_IO_STREAM(visit->connection), nullptr, nullptr);
  g_object_unref(visit->connection);
}

void useAsProxy(WebKitWebView* view, const CountingServer& server) {
  WebKitNetworkProxySettings* settings = webkit_network_proxy_settings_new(server.address().c_str(), nullptr);
  webkit_network_session_set_proxy_settings(webkit_web_view_get_network_session(view),
                                            WEBKIT_NETWORK_PROXY_MODE_CUSTOM, settings);
  webkit_network_proxy_settings_free(settings);
}

PageTest::~PageTest() {
  window_.unset_child();
}

void PageTest::present(Gtk::Widget& widget) {
  window_.set_default_size(600, 400);
  window_.set_child(widget);
  window_.present();
}

ui::HTMLView& PageTest::view() {
  if (!view_) {
    view_ = std::make_unique<ui::HTMLView>(proxy_);
    present(*view_);
  }
  return *view_;
}

void PageTest::show(const std::string& html) {
  bool isLoaded = false;
  sigc::connection connection = view().signalLoaded().connect([&] { isLoaded = true; });
  view().update(std::make_shared<const std::string>(html), HTMLAppearance::light, false);
  EXPECT_TRUE(runUntil([&] { return isLoaded; }));
  connection.disconnect();
}

}  // namespace tidewrack
