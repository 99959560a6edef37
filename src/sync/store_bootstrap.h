#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "library/model_container.h"
#include "platform/date.h"
#include "platform/files.h"
#include "platform/settings.h"

namespace tidewrack {

/// One way to open the store.
struct StoreConfiguration {
  bool isStoredInMemoryOnly = false;
  /// Identifier of the private cloud database that the store is replicated through; empty for none.
  std::string cloudKitDatabase = {};

  friend bool operator==(const StoreConfiguration&, const StoreConfiguration&) = default;
};

/// What the start of the store works with.
struct StoreBootstrap {
  /// Of the process.
  std::vector<std::string> arguments;
  Settings& settings;
  /// Where "default.store" is; empty when there is no place for it.
  std::filesystem::path folder = applicationSupportFolder();
  /// Opens a store, or throws a Failure whose description names "CloudKit" or "iCloud" where the replication
  /// is to blame. Null for the real stores, which have no channel to replicate through: they open the same
  /// with a cloud database and without.
  std::function<std::shared_ptr<ModelContainer>(const StoreConfiguration&)> open = {};
  /// The present time; the system's when null.
  std::function<Date()> now = {};
};

inline constexpr const char* cloudContainerIdentifier = "iCloud.io.marloon.Tidewrack";

/// Builds the one store container of the process, before the first window: in memory when the arguments hold
/// "--screenshots", otherwise on disk, replicated when the setting iCloudSyncEnabled says so. When that fails
/// it gives up the cloud before the data (the setting is then switched off) and the data before the process.
/// Given-up store files are moved into a dated folder beside the store, whose path is logged, and a fresh
/// store takes their place. Main thread.
///
/// Throws StoreInUseFailure when another process has the store open, with nothing touched: nothing is wrong
/// with the store then. Throws StoreFailure ("Could not create ModelContainer: " and the first failure) when
/// every attempt fails; it has been logged, and the process has to end with it.
std::shared_ptr<ModelContainer> makeSharedModelContainer(const StoreBootstrap& bootstrap);

}  // namespace tidewrack
