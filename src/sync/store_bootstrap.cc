#include "sync/store_bootstrap.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>
#include <system_error>

#include "library/store_lock.h"
#include "platform/log.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;

constexpr const char* storeName = "default.store";
// The store with all that SQLite keeps beside it. A journal left behind would be rolled back into whatever
// store comes next.
constexpr const char* storeSuffixes[] = {"", "-shm", "-wal", "-journal"};

const Logger& logger() {
  return Logger::of("App");
}

bool namesTheCloud(std::string_view description) {
  return description.find("CloudKit") != std::string_view::npos ||
         description.find("iCloud") != std::string_view::npos;
}

// "20261121-143059", in UTC.
std::string stamp(Date date) {
  std::string text = formatISO8601(date).substr(0, 19);
  std::erase_if(text, [](char character) { return character == '-' || character == ':'; });
  std::replace(text.begin(), text.end(), 'T', '-');
  return text;
}

// A folder beside the store that is not there yet.
fs::path freshFolder(const fs::path& store, Date now) {
  const std::string base = store.string() + "." + stamp(now);
  fs::path folder = base;
  for (int number = 2; fileExists(folder); ++number) {
    folder = base + "-" + std::to_string(number);
  }
  return folder;
}

/// The attempts of one start.
class Chain {
 public:
  explicit Chain(const StoreBootstrap& bootstrap) : bootstrap_(bootstrap) {}

  std::shared_ptr<ModelContainer> run() {
    if (hasArgument("--screenshots")) {
      if (auto container = attempt({.isStoredInMemoryOnly = true})) {
        logger().info("ModelContainer en memoria para modo screenshot");
        return container;
      }
    }
    const bool isCloudWanted = bootstrap_.settings.boolean(SettingKey::iCloudSyncEnabled);
    const StoreConfiguration primary{.cloudKitDatabase = isCloudWanted ? cloudContainerIdentifier : ""};
    if (auto container = attempt(primary)) {
      logger().info("ModelContainer inicializado %s iCloud", {std::string(isCloudWanted ? "con" : "sin")});
      return container;
    }
    const std::string firstFailure = lastFailure_;
    logger().error("Error al crear ModelContainer: %s", {firstFailure});
    if (namesTheCloud(firstFailure)) {
      logger().error("Fallback: reintentando sin iCloud (revisa capability + container '%s')",
                     {std::string(cloudContainerIdentifier)});
      if (auto container = attempt({})) {
        bootstrap_.settings.set(SettingKey::iCloudSyncEnabled, false);
        return container;
      }
    }
    if (!bootstrap_.folder.empty()) {
      moveStoreAway();
      if (auto container = attempt(primary)) {
        logger().info("ModelContainer recreado tras limpiar el store antiguo");
        return container;
      }
    }
    const std::string fatal = "Could not create ModelContainer: " + firstFailure;
    logger().fault("%s", {fatal});
    throw StoreFailure(fatal);
  }

 private:
  [[nodiscard]] bool hasArgument(std::string_view argument) const {
    return std::ranges::find(bootstrap_.arguments, argument) != bootstrap_.arguments.end();
  }

  // Null when it fails; why is then in `lastFailure_`.
  std::shared_ptr<ModelContainer> attempt(const StoreConfiguration& configuration) {
    try {
      return bootstrap_.open ? bootstrap_.open(configuration) : openStore(configuration);
    } catch (const StoreInUseFailure&) {
      throw;
    } catch (const Failure& failure) {
      lastFailure_ = failure.what();
      return nullptr;
    }
  }

  [[nodiscard]] std::shared_ptr<ModelContainer> openStore(const StoreConfiguration& configuration) const {
    return configuration.isStoredInMemoryOnly ? ModelContainer::inMemory()
                                              : ModelContainer::open(bootstrap_.folder / storeName);
  }

  // Puts the store's files where they can still be found. One that cannot be moved stays.
  void moveStoreAway() const {
    const fs::path store = bootstrap_.folder / storeName;
    std::optional<StoreLock> lock;
    try {
      lock.emplace(store.string() + ".lock");
    } catch (const StoreInUseFailure&) {
      throw;
    } catch (const StoreFailure&) {
      return;  // Where not even that file can be made, none can be moved.
    }
    fs::path folder;
    for (const char* suffix : storeSuffixes) {
      const fs::path file = store.string() + suffix;
      if (!fileExists(file)) {
        continue;
      }
      if (folder.empty()) {
        folder = freshFolder(store, now());
        try {
          createPrivateFolders(folder);
        } catch (const FileFailure&) {
          return;
        }
      }
      std::error_code ignored;
      fs::rename(file, folder / file.filename(), ignored);
    }
    if (!folder.empty()) {
      logger().error("El store antiguo se ha movido a %{public}s", {displayPath(folder)});
    }
  }

  [[nodiscard]] Date now() const {
    return bootstrap_.now
               ? bootstrap_.now()
               : std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
  }

  const StoreBootstrap& bootstrap_;
  std::string lastFailure_;
};

}  // namespace

std::shared_ptr<ModelContainer> makeSharedModelContainer(const StoreBootstrap& bootstrap) {
  return Chain(bootstrap).run();
}

}  // namespace tidewrack
