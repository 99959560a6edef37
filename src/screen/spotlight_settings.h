#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/observable.h"
#include "platform/settings.h"
#include "screen/settings_panel.h"

namespace tidewrack {

/// The tab of the system-wide search index: what goes into it, and how much is in it. Its state goes with
/// the view. Main thread only; `settings` outlives it.
class SpotlightSettings {
 public:
  explicit SpotlightSettings(Settings& settings);

  [[nodiscard]] static SettingToggle enabledToggle();
  [[nodiscard]] static std::vector<SettingToggle> optionToggles();
  /// Shown while the index is on: how many messages it holds, and when it was last written.
  [[nodiscard]] bool isEnabled() const;
  [[nodiscard]] std::string indexedCountText() const;
  [[nodiscard]] std::optional<std::string> lastUpdateText() const;

  /// The options were changed since the index was last rebuilt, even if they were changed back.
  Observable<bool> needsRebuild{false};
  [[nodiscard]] static InformativeRow staleWarning();

  [[nodiscard]] static std::vector<InformativeRow> aboutRows();
  [[nodiscard]] static std::vector<InformativeRow> platformRows();

 private:
  Settings& settings_;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack
