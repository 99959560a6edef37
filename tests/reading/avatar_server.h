#pragma once

#include <string>

#include <glib.h>
#include <gtest/gtest.h>
#include <libsoup/soup.h>

namespace tidewrack {

/// One red pixel as PNG.
inline std::string pngBytes() {
  gsize size = 0;
  guchar* decoded = g_base64_decode(
      "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mP8z8BQDwAEhQGAhKmMIQAAAABJRU5ErkJggg==",
      &size);
  std::string bytes(reinterpret_cast<char*>(decoded), size);
  g_free(decoded);
  return bytes;
}

/// An avatar service on a free loopback port.
class AvatarServer {
 public:
  enum class Answer { picture, rubbish, status, hang, cut };

  AvatarServer() : server_(soup_server_new(nullptr, nullptr)) {
    soup_server_add_handler(server_, nullptr, &handle, this, nullptr);
    EXPECT_TRUE(soup_server_listen_local(server_, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr));
    GSList* uris = soup_server_get_uris(server_);
    url = "http://127.0.0.1:" + std::to_string(g_uri_get_port(static_cast<GUri*>(uris->data)));
    g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
  }
  ~AvatarServer() {
    soup_server_disconnect(server_);
    g_object_unref(server_);
  }
  AvatarServer(const AvatarServer&) = delete;
  AvatarServer& operator=(const AvatarServer&) = delete;

  std::string url;
  int requests = 0;
  std::string lastPath;
  std::string lastQuery;
  Answer answer = Answer::picture;
  unsigned status = 200;

 private:
  static void handle(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer data) {
    auto* self = static_cast<AvatarServer*>(data);
    ++self->requests;
    self->lastPath = path;
    const char* query = g_uri_get_query(soup_server_message_get_uri(message));
    self->lastQuery = query == nullptr ? "" : query;
    const std::string png = pngBytes();
    switch (self->answer) {
      case Answer::picture:
        soup_server_message_set_status(message, 200, nullptr);
        soup_server_message_set_response(message, "image/png", SOUP_MEMORY_COPY, png.data(), png.size());
        break;
      case Answer::rubbish:
        soup_server_message_set_status(message, 200, nullptr);
        soup_server_message_set_response(message, "image/png", SOUP_MEMORY_COPY, "rubbish", 7);
        break;
      case Answer::status:
        soup_server_message_set_status(message, self->status, nullptr);
        break;
      case Answer::hang:
        soup_server_message_pause(message);
        break;
      case Answer::cut: {
        GIOStream* connection = soup_server_message_steal_connection(message);
        g_io_stream_close(connection, nullptr, nullptr);
        g_object_unref(connection);
        break;
      }
    }
  }

  SoupServer* server_;
};

}  // namespace tidewrack
