#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/app_language.h"
#include "platform/observable.h"
#include "platform/program_version.h"
#include "platform/settings.h"
#include "screen/settings_panel.h"

namespace tidewrack {

/// The general tab of the settings. Everything but the language takes effect at once, through the setting
/// that a switch is bound to. Main thread only; `settings` outlives it.
class GeneralSettings {
 public:
  explicit GeneralSettings(Settings& settings) : settings_(settings) {}

  [[nodiscard]] static std::vector<SettingToggle> preferenceToggles();

  /// The language that the stored choice stands for.
  [[nodiscard]] AppLanguage language() const;
  /// Stores the choice, which takes effect at the next launch, and raises the alert that says so.
  void chooseLanguage(AppLanguage language);
  Observable<bool> showingLanguageRestartAlert{false};
  [[nodiscard]] static std::string languageRestartTitle();
  [[nodiscard]] static std::string languageRestartMessage();

  [[nodiscard]] static SettingToggle gravatarToggle();
  /// Says what is sent, and to whom.
  [[nodiscard]] static std::string gravatarFooter();

  static constexpr std::int64_t leastMaximum = 1'000;
  static constexpr std::int64_t greatestMaximum = 100'000;
  static constexpr std::int64_t maximumStep = 1'000;
  /// The stored number, also where it lies outside the range.
  [[nodiscard]] std::int64_t maximum() const;
  [[nodiscard]] std::string maximumLabel() const;
  /// Whether a step up or down leads anywhere.
  [[nodiscard]] bool canRaiseMaximum() const { return maximum() < greatestMaximum; }
  [[nodiscard]] bool canLowerMaximum() const { return maximum() > leastMaximum; }
  /// One step; a number outside the range comes back into it.
  void raiseMaximum() { stepMaximum(maximumStep); }
  void lowerMaximum() { stepMaximum(-maximumStep); }

  /// What the rows on the program itself say.
  [[nodiscard]] static std::string versionText(const ProgramVersion& version = programVersion());
  [[nodiscard]] static std::string buildText(const ProgramVersion& version = programVersion());

 private:
  void stepMaximum(std::int64_t step);

  Settings& settings_;
};

}  // namespace tidewrack
