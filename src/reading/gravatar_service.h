#pragma once

#include <coroutine>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/http_client.h"
#include "platform/picture.h"
#include "platform/settings.h"
#include "platform/task.h"

namespace tidewrack {

/// Looks up sender pictures at the Gravatar avatar service and keeps what it learns, good or bad, in memory
/// and on disk. One request at a time for an address, none for one that is settled in this launch or on
/// disk. Every failure ends without a picture. Main thread only; lives as long as any avatar is awaited.
class GravatarService {
 public:
  static constexpr const char* defaultHost = "www.gravatar.com";

  /// `folder` holds the cache: pictures as downloaded under the hash of the address, and empty files
  /// HASH.missing for addresses that have none. `baseURL` has no slash at its end. `timeout`: how long the
  /// service may be silent.
  explicit GravatarService(std::filesystem::path folder,
                           std::string baseURL = std::string("https://") + defaultHost,
                           std::chrono::seconds timeout = std::chrono::seconds(8));

  /// The one of the program, made when first asked for. Its folder is "Gravatar" in the folder for caches, or
  /// in that for temporary files where there is none.
  static GravatarService& shared();

  /// Clears the cache whenever the setting avatarGravatarEnabled is turned off. Settings outlive the service
  /// or are followed by others in their place.
  void follow(Settings& settings);

  using PicturePointer = std::shared_ptr<const Picture>;

  /// The picture of an address, or null.
  Task<PicturePointer> avatar(std::string address);

  /// Cancels what is under way and forgets everything, on disk as well.
  void clearCache();

 private:
  struct Resolution {
    PicturePointer image;  ///< Null: unavailable.
  };
  /// A running look-up and who waits for it.
  struct Flight {
    std::string hash;
    std::vector<std::coroutine_handle<>> waiters;
    std::shared_ptr<HTTPClient::Request> request;
    Resolution resolution;
    bool isDone = false;
    bool isForgotten = false;  ///< The cache was cleared meanwhile: its result is not kept.
  };
  struct WaitFor;

  void resolve(const std::shared_ptr<Flight>& flight);
  void receive(const std::shared_ptr<Flight>& flight, const std::optional<HTTPResponse>& response);
  void finish(const std::shared_ptr<Flight>& flight, Resolution resolution);
  [[nodiscard]] std::filesystem::path pictureFile(std::string_view hash) const;
  [[nodiscard]] std::filesystem::path missingFile(std::string_view hash) const;

  static constexpr std::string_view missingSentinelFilename = ".missing";

  std::map<std::string, Resolution, std::less<>> memoryCache_;
  std::map<std::string, std::shared_ptr<Flight>, std::less<>> inFlight_;
  std::filesystem::path diskCacheURL_;
  std::string baseURL_;
  HTTPClient session_;
  Subscription setting_;
};

}  // namespace tidewrack
