#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tidewrack {

struct HTTPResponse {
  unsigned status = 0;  ///< RFC 9110, section 15.
  std::string body;
};

/// Fetches over HTTP and HTTPS on the GLib main context of the thread that uses it. Keeps no cookies, sends
/// no referrer and follows no redirects. Main thread only.
class HTTPClient {
 public:
  /// A request under way. Letting go of it changes nothing; cancelling it ends it without a response.
  class Request {
   public:
    virtual ~Request() = default;
    virtual void cancel() = 0;
  };
  /// Called once, from the main loop; nothing where no response came (no network, time-out, cancelled, or a
  /// body larger than allowed).
  using Completion = std::function<void(std::optional<HTTPResponse>)>;

  /// `timeout`: how long the connection may be silent. `largestBody`: in bytes.
  HTTPClient(std::chrono::seconds timeout, std::size_t largestBody);
  ~HTTPClient();
  HTTPClient(const HTTPClient&) = delete;
  HTTPClient& operator=(const HTTPClient&) = delete;

  /// Starts a GET. A text that is no http or https address gives null and never completes.
  std::shared_ptr<Request> get(const std::string& url, Completion completion);

 private:
  struct Session;
  std::unique_ptr<Session> session_;
};

}  // namespace tidewrack
