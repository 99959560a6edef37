#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "classify/search_token_store.h"
#include "intelligence/intelligence_service.h"
#include "platform/main_loop_executor.h"
#include "platform/settings.h"
#include "screen/content_view.h"

namespace tidewrack {

/// The language of the interface that a setting asks for: its BCP 47 code, or empty for that of the system
/// (which is also what an unknown text stands for).
std::string_view languageCode(std::string_view appLanguage);

/// The services of one process, in the order in which they start. Nothing here knows a toolkit.
/// Main thread only.
class TidewrackApp {
 public:
  /// The steps before anything is shown or said: writes the settings of a first launch and applies the
  /// chosen language. Throws Failure when the settings cannot be used.
  explicit TidewrackApp(std::vector<std::string> arguments);
  /// Ends the flows first: they use everything else.
  ~TidewrackApp();
  TidewrackApp(const TidewrackApp&) = delete;
  TidewrackApp& operator=(const TidewrackApp&) = delete;

  /// The steps of the first instance, before its window: opens the store, makes the screen and logs the
  /// banner. Once. Throws Failure when the store cannot be had.
  ContentView& start();

  /// The user has asked for help.
  static void helpRequested();

  [[nodiscard]] IntelligenceService& intelligence() { return intelligence_; }

 private:
  void applyLanguage();

  std::vector<std::string> arguments_;
  std::unique_ptr<MainLoopExecutor> executor_;
  Settings settings_;
  PersistedSearchTokenStore tokens_;
  UnavailableIntelligenceService intelligence_;
  std::unique_ptr<ContentView> screen_;
};

}  // namespace tidewrack
