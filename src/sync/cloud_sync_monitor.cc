#include "sync/cloud_sync_monitor.h"

#include <utility>

#include "platform/localized.h"
#include "platform/log.h"

namespace tidewrack {
namespace {

using Kind = iCloudSyncMonitor::Phase::Kind;

const Logger& logger() {
  return Logger::of("iCloudSync");
}

}  // namespace

void StoreSyncEvents::post(const StoreSyncEvent& event) {
  const auto* outer = std::exchange(present_, &event);
  signal_.notify();
  present_ = outer;
}

Subscription StoreSyncEvents::observe(std::function<void(const StoreSyncEvent&)> observer) {
  return signal_.observe([this, observer = std::move(observer)] { observer(*present_); });
}

iCloudSyncMonitor::iCloudSyncMonitor(Settings& settings) : settings_(settings) {
  const double stored = settings_.number(SettingKey::lastSuccessfulSync);
  if (stored > 0) {
    lastSuccessfulImport.set(dateFromSeconds(stored));
  }
}

void iCloudSyncMonitor::start(StoreSyncEvents& events) {
  if (isStarted_) {
    return;
  }
  isStarted_ = true;
  events_ = events.observe([this](const StoreSyncEvent& event) { handleEvent(event); });
  logger().debug("iCloudSyncMonitor iniciado");
}

void iCloudSyncMonitor::handleEvent(const StoreSyncEvent& event) {
  if (event.error) {
    logger().error("Evento CloudKit con error: %s", {*event.error});
    phase.set({Kind::failed, *event.error});
    return;
  }
  const bool inProgress = !event.endDate;
  switch (event.type) {
    case StoreSyncEvent::setupType:
      phase.set({inProgress ? Kind::setup : Kind::completed, {}});
      break;
    case StoreSyncEvent::exportType:
      phase.set({inProgress ? Kind::exporting : Kind::completed, {}});
      break;
    case StoreSyncEvent::importType:
      phase.set({inProgress ? Kind::importing : Kind::completed, {}});
      if (!inProgress) {
        importEnded(*event.endDate);
      }
      break;
    default:
      break;
  }
}

void iCloudSyncMonitor::importEnded(Date date) {
  settings_.set(SettingKey::lastSuccessfulSync, secondsSince1970(date));
  lastSuccessfulImport.set(date);
  importDidComplete_.notify();
  logger().info("Import desde iCloud completado");
}

std::string_view symbol(const iCloudSyncMonitor::Phase& phase) {
  switch (phase.kind) {
    case Kind::idle:
      return "icloud";
    case Kind::setup:
      return "icloud.circle";
    case Kind::importing:
      return "icloud.and.arrow.down";
    case Kind::exporting:
      return "icloud.and.arrow.up";
    case Kind::completed:
      return "checkmark.icloud.fill";
    case Kind::failed:
      break;
  }
  return "exclamationmark.icloud.fill";
}

std::string title(const iCloudSyncMonitor::Phase& phase) {
  switch (phase.kind) {
    case Kind::idle:
      return localized("icloud_phase_idle", "iCloud sync is on", "Idle phase title");
    case Kind::setup:
      return localized("icloud_phase_setup", "Preparing iCloud…", "Setup phase title");
    case Kind::importing:
      return localized("icloud_phase_importing", "Downloading from iCloud…", "Importing phase title");
    case Kind::exporting:
      return localized("icloud_phase_exporting", "Uploading to iCloud…", "Exporting phase title");
    case Kind::completed:
      return localized("icloud_phase_completed", "iCloud sync is up to date", "Completed phase title");
    case Kind::failed:
      break;
  }
  return formatText(localized("icloud_phase_failed", "iCloud sync error: %@", "Failed phase title"),
                    {phase.failure});
}

}  // namespace tidewrack
