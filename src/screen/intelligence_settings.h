#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "intelligence/intelligence_service.h"
#include "platform/executor.h"
#include "platform/observable.h"
#include "platform/settings.h"
#include "platform/task.h"
#include "screen/settings_panel.h"

namespace tidewrack {

/// The tab of the on-device model: whether it is there, and what it may do. Main thread only; what it is
/// given outlives it.
class IntelligenceSettings {
 public:
  using Availability = IntelligenceService::Availability;

  IntelligenceSettings(Settings& settings, IntelligenceService& service, Executor& executor);

  /// The tab has come on screen: asks the model, in a task of its own.
  void appear();
  Observable<std::optional<Availability>> modelAvailability;
  Observable<bool> isCheckingAvailability{true};

  /// The row of an availability.
  [[nodiscard]] static InformativeRow statusRow(const Availability& availability);
  /// Whether a button under it leads to the settings of the system.
  [[nodiscard]] static bool offersSystemSettings(const Availability& availability);
  static constexpr const char* systemSettingsURL =
      "x-apple.systempreferences:com.apple.preferences.AppleIntelligence";

  [[nodiscard]] static SettingToggle masterToggle();
  /// Shown while the master switch is on.
  [[nodiscard]] static std::vector<SettingToggle> featureToggles();
  [[nodiscard]] bool showsFeatures() const;
  [[nodiscard]] static std::vector<InformativeRow> featureDescriptions();
  [[nodiscard]] static std::vector<InformativeRow> privacyRows();

  struct Requirement {
    std::string requirement;
    bool isMet = false;
    [[nodiscard]] std::string_view symbol() const {
      return isMet ? "checkmark.circle.fill" : "xmark.circle.fill";
    }
  };
  [[nodiscard]] std::vector<Requirement> requirements() const;

 private:
  static Task<> check(IntelligenceSettings* self, std::weak_ptr<int> alive, Executor& executor);

  Settings& settings_;
  IntelligenceService& service_;
  Executor& executor_;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);  ///< A check that comes too late finds it gone.
};

/// The case of an availability in words, for the log: "available", "unavailable(\"reason\")".
std::string printed(const IntelligenceService::Availability& availability);

}  // namespace tidewrack
