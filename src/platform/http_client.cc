#include "platform/http_client.h"

#include <array>
#include <utility>

#include <libsoup/soup.h>

namespace tidewrack {
namespace {

constexpr std::size_t chunkSize = 16UL * 1024;  // bytes

template <typename Object>
struct Unref {
  void operator()(Object* object) const { g_object_unref(object); }
};
template <typename Object>
using ObjectPointer = std::unique_ptr<Object, Unref<Object>>;

/// Lives from the start of a request to its completion, held by the callbacks of the operations under way.
class SoupRequest final : public HTTPClient::Request, public std::enable_shared_from_this<SoupRequest> {
 public:
  SoupRequest(SoupMessage* message, std::size_t largestBody, HTTPClient::Completion completion)
      : message_(message),
        cancellable_(g_cancellable_new()),
        largestBody_(largestBody),
        completion_(std::move(completion)) {}

  void cancel() override { g_cancellable_cancel(cancellable_.get()); }

  void start(SoupSession* session) {
    soup_session_send_async(session, message_.get(), G_PRIORITY_DEFAULT, cancellable_.get(), &onSent, keep());
  }

 private:
  using Self = std::shared_ptr<SoupRequest>;

  /// One reference for a C callback, which takes it back with `taken`.
  Self* keep() { return new Self(shared_from_this()); }
  static Self taken(gpointer data) {
    const std::unique_ptr<Self> holder(static_cast<Self*>(data));
    return *holder;
  }

  static void onSent(GObject* session, GAsyncResult* result, gpointer data) {
    const Self self = taken(data);
    self->stream_.reset(soup_session_send_finish(SOUP_SESSION(session), result, nullptr));
    if (!self->stream_) {
      self->finish(std::nullopt);
      return;
    }
    self->response_.status = soup_message_get_status(self->message_.get());
    self->readOn();
  }

  void readOn() {
    g_input_stream_read_async(stream_.get(), chunk_.data(), chunk_.size(), G_PRIORITY_DEFAULT,
                              cancellable_.get(), &onRead, keep());
  }

  static void onRead(GObject* stream, GAsyncResult* result, gpointer data) {
    const Self self = taken(data);
    const gssize count = g_input_stream_read_finish(G_INPUT_STREAM(stream), result, nullptr);
    if (count == 0) {
      self->finish(std::move(self->response_));
      return;
    }
    if (count < 0 || self->response_.body.size() + static_cast<std::size_t>(count) > self->largestBody_) {
      self->finish(std::nullopt);
      return;
    }
    self->response_.body.append(self->chunk_.data(), static_cast<std::size_t>(count));
    self->readOn();
  }

  void finish(std::optional<HTTPResponse> response) {
    const auto completion = std::exchange(completion_, nullptr);
    if (completion) {
      completion(std::move(response));
    }
  }

  ObjectPointer<SoupMessage> message_;
  ObjectPointer<GCancellable> cancellable_;
  ObjectPointer<GInputStream> stream_;
  std::size_t largestBody_;
  HTTPClient::Completion completion_;
  HTTPResponse response_;
  std::array<char, chunkSize> chunk_{};
};

}  // namespace

struct HTTPClient::Session {
  ObjectPointer<SoupSession> soup;
  std::size_t largestBody;
};

HTTPClient::HTTPClient(std::chrono::seconds timeout, std::size_t largestBody)
    : session_(
          std::make_unique<Session>(Session{ObjectPointer<SoupSession>(soup_session_new()), largestBody})) {
  soup_session_set_timeout(session_->soup.get(), static_cast<guint>(timeout.count()));
}

HTTPClient::~HTTPClient() {
  soup_session_abort(session_->soup.get());
}

std::shared_ptr<HTTPClient::Request> HTTPClient::get(const std::string& url, Completion completion) {
  SoupMessage* message = soup_message_new(SOUP_METHOD_GET, url.c_str());
  if (message == nullptr) {
    return nullptr;
  }
  soup_message_add_flags(message, SOUP_MESSAGE_NO_REDIRECT);
  const auto request = std::make_shared<SoupRequest>(message, session_->largestBody, std::move(completion));
  request->start(session_->soup.get());
  return request;
}

}  // namespace tidewrack
