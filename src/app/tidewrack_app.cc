#include "app/tidewrack_app.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "platform/log.h"
#include "sync/store_bootstrap.h"

namespace tidewrack {
namespace {

constexpr std::array<std::string_view, 11> languages = {"en", "es", "fr", "de", "it",     "pt-BR",
                                                        "ru", "ar", "hi", "ja", "zh-Hans"};

const Logger& logger() {
  return Logger::of("App");
}

// The name that gettext knows a language by.
std::string gettextName(std::string_view code) {
  if (code == "pt-BR") {
    return "pt_BR";
  }
  return code == "zh-Hans" ? "zh_CN" : std::string(code);
}

}  // namespace

std::string_view languageCode(std::string_view appLanguage) {
  const auto* known = std::find(languages.begin(), languages.end(), appLanguage);
  return known == languages.end() ? std::string_view() : *known;
}

TidewrackApp::TidewrackApp(std::vector<std::string> arguments)
    : arguments_(std::move(arguments)), executor_(std::make_unique<MainLoopExecutor>()) {
  settings_.writeFirstLaunchDefaults();
  applyLanguage();
}

TidewrackApp::~TidewrackApp() {
  executor_.reset();
}

void TidewrackApp::applyLanguage() {
  const std::string_view code = languageCode(settings_.string(SettingKey::appLanguage));
  if (!code.empty()) {
    ::setenv("LANGUAGE", gettextName(code).c_str(), 1);
  }
}

ContentView& TidewrackApp::start() {
  screen_ =
      std::make_unique<ContentView>(ContentViewServices{.executor = *executor_,
                                                        .settings = settings_,
                                                        .container = makeSharedModelContainer(arguments_),
                                                        .arguments = arguments_,
                                                        .tokenStore = &tokens_});
  logger().info("Aplicación iniciada en modo RELEASE");
  logger().info("Tidewrack v%s (build %s)", {std::string(TIDEWRACK_VERSION), std::string(TIDEWRACK_VERSION)});
  return *screen_;
}

void TidewrackApp::helpRequested() {
  logger().info("Usuario solicitó ayuda");
}

}  // namespace tidewrack
