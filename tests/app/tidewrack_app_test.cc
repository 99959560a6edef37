#include "app/tidewrack_app.h"

#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <unicode/locid.h>

#include "app/launch_world.h"
#include "platform/files.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;

class Launch : public LaunchWorld {
 protected:
  Launch() : locale_(icu::Locale::getDefault()) { ::unsetenv("LANGUAGE"); }
  ~Launch() override {
    ::unsetenv("LANGUAGE");
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale_, status);
  }

  static bool hasStoreOnDisk() { return fileExists(applicationSupportFolder() / "default.store"); }
  static std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
  }

 private:
  icu::Locale locale_;
};

TEST_F(Launch, AFirstOneEndsWithTheFourKeysPresentAndTrueAndNoLanguage) {
  TidewrackApp app({"tidewrack"});
  for (const auto& setting : settingDefinitions()) {
    EXPECT_EQ(app.settings().isPresent(setting.key), setting.isWrittenAtFirstLaunch) << setting.name;
  }
  for (const SettingKey key : {SettingKey::iCloudSyncEnabled, SettingKey::spotlightIndexingEnabled,
                               SettingKey::indexMessageBodies, SettingKey::indexAttachments}) {
    EXPECT_TRUE(app.settings().boolean(key));
  }
  EXPECT_EQ(app.settings().string(SettingKey::appLanguage), "system");
  EXPECT_EQ(environment("LANGUAGE"), "");
}

TEST_F(Launch, LeavesSyncOffThatIsStoredAsOff) {
  Settings().set(SettingKey::iCloudSyncEnabled, false);
  TidewrackApp app({"tidewrack"});
  EXPECT_FALSE(app.settings().boolean(SettingKey::iCloudSyncEnabled));
}

TEST_F(Launch, TreatsAnUnknownLanguageAsThatOfTheSystemAndKeepsTheStoredText) {
  Settings().set(SettingKey::appLanguage, std::string("xx"));
  TidewrackApp app({"tidewrack"});
  EXPECT_EQ(app.settings().string(SettingKey::appLanguage), "xx");
  EXPECT_EQ(environment("LANGUAGE"), "");
}

TEST_F(Launch, TakesTheChosenLanguageInPlaceOfOneSetByHand) {
  ::setenv("LANGUAGE", "fr", 1);
  Settings().set(SettingKey::appLanguage, std::string("pt-BR"));
  TidewrackApp app({"tidewrack"});
  EXPECT_EQ(environment("LANGUAGE"), "pt_BR");
  EXPECT_STREQ(icu::Locale::getDefault().getName(), "pt_BR");
}

TEST_F(Launch, AnOrdinaryOneOpensTheStoreOnDiskAndStartsTheSyncMonitor) {
  TidewrackApp app({"tidewrack"});
  app.start();
  EXPECT_TRUE(hasStoreOnDisk());
  EXPECT_TRUE(app.syncMonitor().isStarted());
}

TEST_F(Launch, DemoDataAloneStillStartsTheSyncMonitorAndOpensTheStoreOnDisk) {
  TidewrackApp app({"tidewrack", "--demo-data"});
  app.start();
  EXPECT_TRUE(hasStoreOnDisk());
  EXPECT_TRUE(app.syncMonitor().isStarted());
}

TEST_F(Launch, ScreenshotsWorkInMemoryWithoutTheSyncMonitor) {
  TidewrackApp app({"tidewrack", "--demo-data", "--screenshots"});
  app.start();
  EXPECT_FALSE(hasStoreOnDisk());
  EXPECT_FALSE(app.syncMonitor().isStarted());
  EXPECT_EQ(app.syncMonitor().phase().kind, iCloudSyncMonitor::Phase::Kind::idle);
}

TEST_F(Launch, ScreenshotsWithAValueJoinedToItDoesNotMatch) {
  TidewrackApp app({"tidewrack", "--screenshots=1"});
  app.start();
  EXPECT_TRUE(hasStoreOnDisk());
  EXPECT_TRUE(app.syncMonitor().isStarted());
}

TEST_F(Launch, LogsItsBannerLast) {
  TidewrackApp app({"tidewrack"});
  app.start();
  const auto& lines = loggedLines();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2], "App: Aplicación iniciada en modo RELEASE");
  EXPECT_EQ(lines.back(), "App: Tidewrack v" TIDEWRACK_VERSION " (build 1)");
}

TEST_F(Launch, MissingVersionInformationCostsTheBannerLineOnly) {
  TidewrackApp::logBanner({"1.0", std::nullopt});
  TidewrackApp::logBanner({std::nullopt, "7"});
  EXPECT_THAT(loggedLines(), ElementsAre("App: Aplicación iniciada en modo RELEASE",
                                         "App: Aplicación iniciada en modo RELEASE"));
}

TEST_F(Launch, ARequestForHelpWritesOneLine) {
  TidewrackApp::helpRequested();
  EXPECT_THAT(loggedLines(), ElementsAre("App: Usuario solicitó ayuda"));
}

}  // namespace
}  // namespace tidewrack
