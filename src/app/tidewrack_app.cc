#include "app/tidewrack_app.h"

#include <algorithm>
#include <utility>

#include "app/demo_library.h"
#include "platform/app_language.h"
#include "platform/log.h"
#include "sync/store_bootstrap.h"

namespace tidewrack {
namespace {

const Logger& logger() {
  return Logger::of("App");
}

}  // namespace

TidewrackApp::TidewrackApp(std::vector<std::string> arguments)
    : arguments_(std::move(arguments)), syncMonitor_(settings_) {
  settings_.writeFirstLaunchDefaults();
  applyLanguage(appLanguageFromRawValue(settings_.string(SettingKey::appLanguage)));
  executor_ = std::make_unique<MainLoopExecutor>();  // Its threads must not see the language change.
}

TidewrackApp::~TidewrackApp() {
  executor_.reset();
}

ContentView& TidewrackApp::start() {
  auto container = makeSharedModelContainer({.arguments = arguments_, .settings = settings_});
  if (!hasArgument("--screenshots")) {
    syncMonitor_.start(syncEvents_);
  }
  screen_ = std::make_unique<ContentView>(ContentViewServices{.executor = *executor_,
                                                              .settings = settings_,
                                                              .container = std::move(container),
                                                              .arguments = arguments_,
                                                              .syncMonitor = &syncMonitor_,
                                                              .tokenStore = &tokens_,
                                                              .demoLibrary = demoLibrary});
  logBanner(programVersion());
  return *screen_;
}

void TidewrackApp::logBanner(const ProgramVersion& version) {
  logger().info("Aplicación iniciada en modo RELEASE");
  if (version.version && version.build) {
    logger().info("Tidewrack v%s (build %s)", {*version.version, *version.build});
  }
}

void TidewrackApp::helpRequested() {
  logger().info("Usuario solicitó ayuda");
}

bool TidewrackApp::hasArgument(std::string_view argument) const {
  return std::find(arguments_.begin(), arguments_.end(), argument) != arguments_.end();
}

}  // namespace tidewrack
