#include "reading/gravatar_service.h"

#include <utility>

#include <glib.h>

#include "platform/failure.h"
#include "platform/files.h"
#include "reading/avatar.h"

namespace tidewrack {
namespace {

constexpr std::size_t largestPicture = 4UL * 1024 * 1024;  // bytes
constexpr unsigned statusOK = 200;

/// The cache is a convenience: a file that cannot be written or removed changes nothing else.
template <typename Operation>
void ignoringFileFailures(Operation operation) {
  try {
    operation();
  } catch (const FileFailure&) {
  }
}

std::shared_ptr<const Picture> pictureOnDisk(const std::filesystem::path& file) {
  try {
    return fileExists(file) ? decodePicture(readFile(file)) : nullptr;
  } catch (const FileFailure&) {
    return nullptr;
  }
}

}  // namespace

/// co_await WaitFor{flight}: goes on when the look-up has ended. Whoever waits keeps the flight alive: an
/// awaiter that owns something and is made by an initializer list in a co_await is destroyed twice by GCC 12.
struct GravatarService::WaitFor {
  Flight& flight;
  [[nodiscard]] bool await_ready() const noexcept { return flight.isDone; }
  void await_suspend(std::coroutine_handle<> waiting) const { flight.waiters.push_back(waiting); }
  void await_resume() const noexcept {}
};

GravatarService::GravatarService(std::filesystem::path folder, std::string baseURL,
                                 std::chrono::seconds timeout)
    : diskCacheURL_(std::move(folder)), baseURL_(std::move(baseURL)), session_(timeout, largestPicture) {
  ignoringFileFailures([this] { createPrivateFolders(diskCacheURL_); });
}

GravatarService& GravatarService::shared() {
  // Never destroyed: what is under way at the end of the program ends with it.
  static auto& service = *[] {
    auto folder = cachesFolder();
    try {
      createPrivateFolders(folder);
    } catch (const FileFailure&) {
      folder = g_get_tmp_dir();
    }
    return new GravatarService(folder / "Gravatar");
  }();
  return service;
}

void GravatarService::follow(Settings& settings) {
  setting_ = settings.observe(SettingKey::avatarGravatarEnabled, [this, &settings] {
    if (!settings.boolean(SettingKey::avatarGravatarEnabled)) {
      clearCache();
    }
  });
}

std::filesystem::path GravatarService::pictureFile(std::string_view hash) const {
  return diskCacheURL_ / hash;
}

std::filesystem::path GravatarService::missingFile(std::string_view hash) const {
  return diskCacheURL_ / (std::string(hash) + std::string(missingSentinelFilename));
}

Task<GravatarService::PicturePointer> GravatarService::avatar(std::string address) {
  const std::string hash = avatarHash(address);
  if (hash.empty()) {
    co_return nullptr;
  }
  if (const auto known = memoryCache_.find(hash); known != memoryCache_.end()) {
    co_return known->second.image;
  }
  auto running = inFlight_.find(hash);
  const bool isNew = running == inFlight_.end();
  if (isNew) {
    auto flight = std::make_shared<Flight>();
    flight->hash = hash;
    running = inFlight_.emplace(hash, std::move(flight)).first;
  }
  const auto flight = running->second;
  if (isNew) {
    resolve(flight);
  }
  co_await WaitFor{*flight};
  co_return flight->resolution.image;
}

void GravatarService::resolve(const std::shared_ptr<Flight>& flight) {
  if (fileExists(missingFile(flight->hash))) {
    finish(flight, {});
    return;
  }
  if (auto picture = pictureOnDisk(pictureFile(flight->hash))) {
    finish(flight, {std::move(picture)});
    return;
  }
  flight->request = session_.get(baseURL_ + "/avatar/" + flight->hash + "?s=160&d=404",
                                 [this, flight](const auto& response) { receive(flight, response); });
  if (!flight->request) {
    finish(flight, {});
  }
}

void GravatarService::receive(const std::shared_ptr<Flight>& flight,
                              const std::optional<HTTPResponse>& response) {
  Resolution resolution;
  // Without a response nothing is written, so that the next launch tries again. Any other answer than a
  // picture marks the address as having none, a passing error of the service included.
  if (response && !flight->isForgotten) {
    if (response->status == statusOK) {
      resolution.image = decodePicture(response->body);
    }
    ignoringFileFailures([&] {
      if (resolution.image) {
        writeFileAtomically(pictureFile(flight->hash), response->body);
      } else {
        writeFileAtomically(missingFile(flight->hash), {});
      }
    });
  }
  finish(flight, std::move(resolution));
}

void GravatarService::finish(const std::shared_ptr<Flight>& flight, Resolution resolution) {
  flight->resolution = std::move(resolution);
  flight->isDone = true;
  if (!flight->isForgotten) {
    memoryCache_[flight->hash] = flight->resolution;
    inFlight_.erase(flight->hash);
  }
  for (const auto waiter : std::exchange(flight->waiters, {})) {
    waiter.resume();
  }
}

void GravatarService::clearCache() {
  for (const auto& [hash, flight] : std::exchange(inFlight_, {})) {
    flight->isForgotten = true;
    if (flight->request) {
      flight->request->cancel();
    }
  }
  memoryCache_.clear();
  ignoringFileFailures([this] { removeItem(diskCacheURL_); });
  ignoringFileFailures([this] { createPrivateFolders(diskCacheURL_); });
}

}  // namespace tidewrack
