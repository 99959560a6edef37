#pragma once

#include <memory>
#include <string>
#include <vector>

#include "classify/search_token_store.h"
#include "intelligence/intelligence_service.h"
#include "platform/main_loop_executor.h"
#include "platform/program_version.h"
#include "platform/settings.h"
#include "screen/content_view.h"
#include "sync/cloud_sync_monitor.h"

namespace tidewrack {

/// The services of one process, in the order in which they start. Nothing here knows a toolkit.
/// Main thread only.
class TidewrackApp {
 public:
  /// The steps before anything is shown or said: writes the settings of a first launch and applies the
  /// chosen language. `arguments` are those of the process, its own path included. Throws Failure when the
  /// settings cannot be used.
  explicit TidewrackApp(std::vector<std::string> arguments);
  /// Ends the flows first: they use everything else.
  ~TidewrackApp();
  TidewrackApp(const TidewrackApp&) = delete;
  TidewrackApp& operator=(const TidewrackApp&) = delete;

  /// The steps of the first instance, before its window: opens the store, starts the sync monitor (not for
  /// pictures), makes the screen and logs the banner. Once. Throws Failure when the store cannot be had.
  ContentView& start();

  /// The user has asked for help. There is a line in the log and nothing else.
  static void helpRequested();
  /// Says in the log that the program runs, and which version where that is known.
  static void logBanner(const ProgramVersion& version);

  [[nodiscard]] Settings& settings() { return settings_; }
  [[nodiscard]] IntelligenceService& intelligence() { return intelligence_; }
  [[nodiscard]] iCloudSyncMonitor& syncMonitor() { return syncMonitor_; }

 private:
  [[nodiscard]] bool hasArgument(std::string_view argument) const;

  std::vector<std::string> arguments_;
  std::unique_ptr<MainLoopExecutor> executor_;
  Settings settings_;
  PersistedSearchTokenStore tokens_;
  UnavailableIntelligenceService intelligence_;
  StoreSyncEvents syncEvents_;
  iCloudSyncMonitor syncMonitor_;
  std::unique_ptr<ContentView> screen_;
};

}  // namespace tidewrack
