#include "screen/settings_panel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "screen/cloud_settings.h"
#include "screen/general_settings.h"
#include "screen/help_page.h"
#include "screen/intelligence_settings.h"
#include "screen/spotlight_settings.h"
#include "support/temporary_folder.h"
#include "support/virtual_executor.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using Availability = IntelligenceService::Availability;

class SettingsPanelTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  Settings settings{folder / "settings.ini"};
};

/// A model that is as available as it is told.
class FakeIntelligence : public UnavailableIntelligenceService {
 public:
  [[nodiscard]] Availability checkAvailability() const override { return availability; }
  Availability availability;
};

TEST_F(SettingsPanelTest, HasItsFourTabsInOrder) {
  std::vector<std::string> tabs;
  for (const auto tab : allSettingsTabs) {
    tabs.push_back(std::string(rawValue(tab)) + ":" + std::string(symbol(tab)));
  }
  EXPECT_THAT(tabs, ElementsAre("General:gear", "Sincronización:icloud", "Spotlight:magnifyingglass",
                                "Inteligencia:sparkles"));
  EXPECT_EQ(SettingsPanel().selectedTab(), SettingsPanel::SettingsTab::general);
  EXPECT_EQ(SettingsPanel::width, 600);
  EXPECT_EQ(SettingsPanel::height, 500);
}

TEST_F(SettingsPanelTest, ThePreferencesStandInOrder) {
  std::vector<SettingKey> keys;
  for (const auto& toggle : GeneralSettings::preferenceToggles()) {
    keys.push_back(toggle.key);
    EXPECT_FALSE(toggle.help.empty());
  }
  EXPECT_THAT(keys, ElementsAre(SettingKey::enableSearchIndexing, SettingKey::autoOpenLastLibrary,
                                SettingKey::confirmBeforeDelete, SettingKey::showMessagePreview));
  EXPECT_EQ(GeneralSettings::gravatarToggle().key, SettingKey::avatarGravatarEnabled);
  EXPECT_THAT(GeneralSettings::gravatarFooter(), HasSubstr(" www.gravatar.com "));
  EXPECT_STREQ(exportHelpURL, "https://support.google.com/accounts/answer/3024190");
}

TEST_F(SettingsPanelTest, AChosenLanguageIsStoredAndRaisesTheAlertAndNothingElse) {
  GeneralSettings general(settings);
  EXPECT_EQ(general.language(), AppLanguage::system);
  general.chooseLanguage(AppLanguage::chineseHans);
  EXPECT_EQ(settings.string(SettingKey::appLanguage), "zh-Hans");
  EXPECT_TRUE(general.showingLanguageRestartAlert());
  EXPECT_EQ(GeneralSettings::languageRestartTitle(), "Reinicio requerido") << "the texts stay as they were";
}

TEST_F(SettingsPanelTest, AStoredLanguageThatMatchesNoCaseShowsSystem) {
  GeneralSettings general(settings);
  settings.set(SettingKey::appLanguage, std::string("EN"));
  EXPECT_EQ(general.language(), AppLanguage::system);
  EXPECT_EQ(settings.string(SettingKey::appLanguage), "EN");
}

TEST_F(SettingsPanelTest, AMaximumOutsideTheRangeIsShownAsItIsAndStepsBackIntoIt) {
  GeneralSettings general(settings);
  EXPECT_EQ(general.maximumLabel(), "Máximo de mensajes por importación: 10000");
  settings.set(SettingKey::maxMessagesPerImport, std::int64_t{7});
  EXPECT_EQ(general.maximumLabel(), "Máximo de mensajes por importación: 7");
  EXPECT_FALSE(general.canLowerMaximum());
  general.raiseMaximum();
  EXPECT_EQ(general.maximum(), 1'007);
  settings.set(SettingKey::maxMessagesPerImport, std::numeric_limits<std::int64_t>::max());
  EXPECT_FALSE(general.canRaiseMaximum());
  general.lowerMaximum();
  EXPECT_EQ(general.maximum(), 100'000);
  settings.set(SettingKey::maxMessagesPerImport, std::numeric_limits<std::int64_t>::min());
  general.raiseMaximum();
  EXPECT_EQ(general.maximum(), 1'000);
}

TEST_F(SettingsPanelTest, TheMaximumStaysWithinTheRange) {
  GeneralSettings general(settings);
  general.raiseMaximum();
  EXPECT_EQ(general.maximum(), 11'000);
  settings.set(SettingKey::maxMessagesPerImport, std::int64_t{99'500});
  general.raiseMaximum();
  EXPECT_EQ(general.maximum(), 100'000);
  EXPECT_FALSE(general.canRaiseMaximum());
  settings.set(SettingKey::maxMessagesPerImport, std::int64_t{1'000});
  EXPECT_FALSE(general.canLowerMaximum());
}

TEST_F(SettingsPanelTest, AMissingVersionIsUnknown) {
  EXPECT_EQ(GeneralSettings::versionText(), TIDEWRACK_VERSION);
  EXPECT_EQ(GeneralSettings::buildText(), "1");
  EXPECT_EQ(GeneralSettings::versionText({}), "Desconocida");
  EXPECT_EQ(GeneralSettings::buildText({}), "Desconocida");
}

TEST_F(SettingsPanelTest, TheSyncSwitchAsksForARestartInEitherDirection) {
  iCloudSyncMonitor monitor(settings);
  CloudSettings cloud(settings, monitor);
  EXPECT_TRUE(cloud.showsStatus());
  cloud.switchSync(false);
  EXPECT_TRUE(cloud.showingSyncRestart());
  EXPECT_FALSE(settings.boolean(SettingKey::iCloudSyncEnabled));
  EXPECT_FALSE(cloud.showsStatus()) << "the status goes while the monitor keeps working";
  cloud.showingSyncRestart.set(false);
  cloud.switchSync(true);
  EXPECT_TRUE(cloud.showingSyncRestart());
}

TEST_F(SettingsPanelTest, SyncSwitchedOffElsewhereShowsOffWithoutAnAlert) {
  iCloudSyncMonitor monitor(settings);
  CloudSettings cloud(settings, monitor);
  settings.set(SettingKey::iCloudSyncEnabled, false);
  EXPECT_FALSE(cloud.showsStatus());
  EXPECT_FALSE(cloud.showingSyncRestart());
}

TEST_F(SettingsPanelTest, TheLastSyncIsADateOrWaitedForOrNotMentioned) {
  iCloudSyncMonitor monitor(settings);
  CloudSettings cloud(settings, monitor);
  EXPECT_EQ(cloud.lastSyncText(), "Waiting for the first sync to complete…");
  monitor.handleEvent({StoreSyncEvent::setupType, std::nullopt, std::nullopt});
  EXPECT_EQ(cloud.lastSyncText(), std::nullopt);
  EXPECT_EQ(cloud.statusRow().title, "Preparing iCloud…");
  monitor.handleEvent({StoreSyncEvent::importType, std::nullopt, Date(std::chrono::seconds(1'780'000'000))});
  ASSERT_TRUE(cloud.lastSyncText());
  EXPECT_THAT(*cloud.lastSyncText(), testing::StartsWith("Last sync: "));
  EXPECT_THAT(*cloud.lastSyncText(), HasSubstr("2026"));
  EXPECT_THAT(CloudSettings::aboutRows(), SizeIs(3));
}

TEST_F(SettingsPanelTest, SwitchingAnIndexOptionOnAndOffAgainStillShowsTheStaleWarning) {
  SpotlightSettings spotlight(settings);
  EXPECT_FALSE(spotlight.needsRebuild());
  settings.set(SettingKey::indexAttachments, false);
  settings.set(SettingKey::indexAttachments, true);
  EXPECT_TRUE(spotlight.needsRebuild());
  EXPECT_FALSE(SpotlightSettings(settings).needsRebuild()) << "a view that is opened anew shows no warning";
}

TEST_F(SettingsPanelTest, TheIndexStatusFollowsTheSettings) {
  SpotlightSettings spotlight(settings);
  EXPECT_EQ(spotlight.indexedCountText(), "0");
  EXPECT_EQ(spotlight.lastUpdateText(), std::nullopt);
  settings.set(SettingKey::spotlightIndexedCount, std::int64_t{42});
  settings.set(SettingKey::lastIndexUpdate, 1'780'000'000.0);
  EXPECT_EQ(spotlight.indexedCountText(), "42");
  EXPECT_THAT(spotlight.lastUpdateText().value_or(""), testing::StartsWith("Última actualización: "));
  settings.set(SettingKey::spotlightIndexingEnabled, false);
  EXPECT_FALSE(spotlight.isEnabled());
}

TEST_F(SettingsPanelTest, TheAvailabilityIsAskedForWhenTheTabAppears) {
  VirtualExecutor executor;
  FakeIntelligence service;
  service.availability = {Availability::Kind::available, {}};
  IntelligenceSettings intelligence(settings, service, executor);
  intelligence.appear();
  EXPECT_TRUE(intelligence.isCheckingAvailability());
  EXPECT_FALSE(intelligence.modelAvailability());
  EXPECT_FALSE(intelligence.requirements()[2].isMet);
  executor.runUntilIdle();
  EXPECT_FALSE(intelligence.isCheckingAvailability());
  EXPECT_EQ(intelligence.modelAvailability(), service.availability);
  EXPECT_TRUE(intelligence.requirements()[2].isMet);
}

TEST_F(SettingsPanelTest, ACheckThatComesAfterTheTabHasGoneDoesNothing) {
  VirtualExecutor executor;
  FakeIntelligence service;
  {
    IntelligenceSettings intelligence(settings, service, executor);
    intelligence.appear();
  }
  executor.runUntilIdle();
}

TEST_F(SettingsPanelTest, TheTwoFixedRequirementsStayMetWhenTheDeviceIsNotEligible) {
  VirtualExecutor executor;
  FakeIntelligence service;
  service.availability = {Availability::Kind::deviceNotEligible, {}};
  IntelligenceSettings intelligence(settings, service, executor);
  intelligence.appear();
  executor.runUntilIdle();
  const auto requirements = intelligence.requirements();
  ASSERT_THAT(requirements, SizeIs(3));
  EXPECT_TRUE(requirements[0].isMet);
  EXPECT_TRUE(requirements[1].isMet);
  EXPECT_FALSE(requirements[2].isMet);
  EXPECT_EQ(requirements[2].symbol(), "xmark.circle.fill");
}

TEST_F(SettingsPanelTest, EachAvailabilityHasItsRow) {
  struct Expected {
    Availability availability;
    const char* symbol;
    const char* title;
    const char* printed;
  };
  using Kind = Availability::Kind;
  for (const Expected& expected : {
           Expected{
               {Kind::available, {}}, "checkmark.circle.fill", "Apple Intelligence disponible", "available"},
           Expected{{Kind::deviceNotEligible, {}},
                    "xmark.circle.fill",
                    "Dispositivo no compatible",
                    "deviceNotEligible"},
           Expected{{Kind::appleIntelligenceNotEnabled, {}},
                    "exclamationmark.triangle.fill",
                    "Apple Intelligence desactivado",
                    "appleIntelligenceNotEnabled"},
           Expected{
               {Kind::modelNotReady, {}}, "arrow.down.circle.fill", "Modelo descargándose", "modelNotReady"},
           Expected{{Kind::unsupportedOS, {}}, "xmark.circle.fill", "Sistema no compatible", "unsupportedOS"},
           Expected{{Kind::unavailable, "why"},
                    "questionmark.circle.fill",
                    "No disponible",
                    "unavailable(\"why\")"},
       }) {
    const auto row = IntelligenceSettings::statusRow(expected.availability);
    EXPECT_EQ(row.symbol, expected.symbol);
    EXPECT_EQ(row.title, expected.title);
    EXPECT_EQ(printed(expected.availability), expected.printed);
    EXPECT_EQ(IntelligenceSettings::offersSystemSettings(expected.availability),
              expected.availability.kind == Kind::appleIntelligenceNotEnabled);
  }
  EXPECT_EQ(IntelligenceSettings::statusRow({Kind::unavailable, "why"}).text, "why");
}

TEST_F(SettingsPanelTest, TheFeaturesShowWhileTheMasterSwitchIsOn) {
  VirtualExecutor executor;
  FakeIntelligence service;
  IntelligenceSettings intelligence(settings, service, executor);
  EXPECT_TRUE(intelligence.showsFeatures());
  settings.set(SettingKey::intelligenceEnabled, false);
  EXPECT_FALSE(intelligence.showsFeatures());
  std::vector<SettingKey> keys;
  for (const auto& toggle : IntelligenceSettings::featureToggles()) {
    keys.push_back(toggle.key);
  }
  EXPECT_THAT(keys, ElementsAre(SettingKey::enableSmartSummaries, SettingKey::enableSmartReply,
                                SettingKey::enableCategoryDetection, SettingKey::enableSentimentAnalysis));
}

}  // namespace
}  // namespace tidewrack
