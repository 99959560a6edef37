#include "sync/cloud_sync_monitor.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using Kind = iCloudSyncMonitor::Phase::Kind;

class CloudSyncMonitor : public testing::Test {
 protected:
  CloudSyncMonitor() {
    subscription_ = monitor.observeImportDidComplete([this] { ++notifications; });
    phases_ = monitor.phase.observe([this] { ++phaseChanges; });
  }

  static StoreSyncEvent running(int type) { return {type, std::nullopt, std::nullopt}; }
  static StoreSyncEvent ended(int type) { return {type, std::nullopt, date}; }
  Kind phase() { return monitor.phase().kind; }

  static constexpr Date date{std::chrono::seconds(1'780'000'000)};
  TemporaryFolder folder;
  Settings settings{folder / "settings.ini"};
  iCloudSyncMonitor monitor{settings};
  int notifications = 0;
  int phaseChanges = 0;

 private:
  Subscription subscription_;
  Subscription phases_;
};

TEST_F(CloudSyncMonitor, StartsIdleAndWithoutADateForAStoredZero) {
  EXPECT_EQ(phase(), Kind::idle);
  EXPECT_FALSE(monitor.lastSuccessfulImport());
  settings.set(SettingKey::lastSuccessfulSync, 0.0);
  EXPECT_FALSE(iCloudSyncMonitor(settings).lastSuccessfulImport());
  settings.set(SettingKey::lastSuccessfulSync, -5.0);
  EXPECT_FALSE(iCloudSyncMonitor(settings).lastSuccessfulImport());
}

TEST_F(CloudSyncMonitor, EachStepHasItsPhase) {
  monitor.handleEvent(running(StoreSyncEvent::setupType));
  EXPECT_EQ(phase(), Kind::setup);
  monitor.handleEvent(ended(StoreSyncEvent::setupType));
  EXPECT_EQ(phase(), Kind::completed);
  monitor.handleEvent(running(StoreSyncEvent::importType));
  EXPECT_EQ(phase(), Kind::importing);
  EXPECT_EQ(notifications, 0);
  monitor.handleEvent(running(StoreSyncEvent::exportType));
  EXPECT_EQ(phase(), Kind::exporting);
  monitor.handleEvent(ended(7));
  EXPECT_EQ(phase(), Kind::exporting) << "an unknown type changes nothing";
}

TEST_F(CloudSyncMonitor, AnImportThatEndsMovesTheDateAndPostsOnceAlsoWhenCompletedAlready) {
  monitor.handleEvent(ended(StoreSyncEvent::setupType));
  monitor.handleEvent(ended(StoreSyncEvent::importType));
  EXPECT_EQ(phase(), Kind::completed);
  EXPECT_EQ(notifications, 1);
  EXPECT_EQ(phaseChanges, 1) << "a phase that stays notifies nobody";
  EXPECT_EQ(monitor.lastSuccessfulImport(), date);
  EXPECT_EQ(settings.number(SettingKey::lastSuccessfulSync), 1'780'000'000.0);
  EXPECT_EQ(iCloudSyncMonitor(settings).lastSuccessfulImport(), date);
}

TEST_F(CloudSyncMonitor, AnImportWithAnErrorAndAnEndFailsMovesNoDateAndPostsNothing) {
  monitor.handleEvent({StoreSyncEvent::importType, "The line is dead.", date});
  EXPECT_EQ(monitor.phase(), (iCloudSyncMonitor::Phase{Kind::failed, "The line is dead."}));
  EXPECT_FALSE(monitor.lastSuccessfulImport());
  EXPECT_FALSE(settings.isPresent(SettingKey::lastSuccessfulSync));
  EXPECT_EQ(notifications, 0);
}

TEST_F(CloudSyncMonitor, AnExportThatEndsCompletesAndLeavesTheDateAlone) {
  monitor.handleEvent(ended(StoreSyncEvent::exportType));
  EXPECT_EQ(phase(), Kind::completed);
  EXPECT_FALSE(monitor.lastSuccessfulImport());
  EXPECT_EQ(notifications, 0);
}

TEST_F(CloudSyncMonitor, AFailureLastsUntilTheNextEventWithoutAnError) {
  monitor.handleEvent({StoreSyncEvent::exportType, "No space.", std::nullopt});
  EXPECT_EQ(title(monitor.phase()), "iCloud sync error: No space.");
  EXPECT_EQ(symbol(monitor.phase()), "exclamationmark.icloud.fill");
  monitor.handleEvent(running(StoreSyncEvent::exportType));
  EXPECT_EQ(phase(), Kind::exporting);
}

TEST_F(CloudSyncMonitor, ListensOnceHoweverOftenItIsStarted) {
  StoreSyncEvents events;
  events.post(ended(StoreSyncEvent::importType));
  EXPECT_EQ(notifications, 0);
  monitor.start(events);
  monitor.start(events);
  events.post(ended(StoreSyncEvent::importType));
  EXPECT_EQ(notifications, 1);
}

TEST_F(CloudSyncMonitor, KeepsWorkingWhenTheSettingIsSwitchedOff) {
  settings.set(SettingKey::iCloudSyncEnabled, false);
  monitor.handleEvent(ended(StoreSyncEvent::importType));
  EXPECT_EQ(phase(), Kind::completed);
  EXPECT_EQ(notifications, 1);
}

TEST_F(CloudSyncMonitor, EachPhaseHasASymbolAndATitle) {
  EXPECT_EQ(symbol({Kind::idle, {}}), "icloud");
  EXPECT_EQ(title(iCloudSyncMonitor::Phase{Kind::idle, {}}), "iCloud sync is on");
  EXPECT_EQ(symbol({Kind::setup, {}}), "icloud.circle");
  EXPECT_EQ(title(iCloudSyncMonitor::Phase{Kind::setup, {}}), "Preparing iCloud…");
  EXPECT_EQ(symbol({Kind::importing, {}}), "icloud.and.arrow.down");
  EXPECT_EQ(title(iCloudSyncMonitor::Phase{Kind::importing, {}}), "Downloading from iCloud…");
  EXPECT_EQ(symbol({Kind::exporting, {}}), "icloud.and.arrow.up");
  EXPECT_EQ(title(iCloudSyncMonitor::Phase{Kind::exporting, {}}), "Uploading to iCloud…");
  EXPECT_EQ(symbol({Kind::completed, {}}), "checkmark.icloud.fill");
  EXPECT_EQ(title(iCloudSyncMonitor::Phase{Kind::completed, {}}), "iCloud sync is up to date");
}

}  // namespace
}  // namespace tidewrack
