#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "platform/files.h"
#include "platform/observable.h"

namespace tidewrack {

/// Every preference of the program, in the order of the table in settings.cc.
enum class SettingKey {
  maxMessagesPerImport,
  enableSearchIndexing,
  autoOpenLastLibrary,
  confirmBeforeDelete,
  showMessagePreview,
  avatarGravatarEnabled,
  appLanguage,
  intelligenceEnabled,
  enableSmartSummaries,
  enableSmartReply,
  enableCategoryDetection,
  enableSentimentAnalysis,
  iCloudSyncEnabled,
  spotlightIndexingEnabled,
  indexMessageBodies,
  indexAttachments,
  spotlightIndexedCount,
  lastIndexUpdate,
  htmlBackgroundMode,
  lastSuccessfulSync
};

using SettingValue = std::variant<bool, std::int64_t, double, std::string>;

/// One row of the table of settings.
struct SettingDefinition {
  SettingKey key;
  const char* name;             ///< As it stands in the settings file and in the schema.
  SettingValue defaultValue;    ///< Holds for as long as the key is absent; also tells the type.
  bool isWrittenAtFirstLaunch;  ///< Present in the user's file from the first start on.
};

/// All settings, each key once, in the order of SettingKey.
std::span<const SettingDefinition> settingDefinitions();
const SettingDefinition& definition(SettingKey key);

/// The user's preferences, kept in a key file ("settings.ini") through GSettings. Several objects (and
/// processes) on one file see each other's changes. Main thread only.
class Settings {
 public:
  /// The user's own file, in the settings folder.
  Settings() : Settings(settingsFolder() / "settings.ini") {}
  /// Any file. It and its folder (private to the user) are made with the first value that is written.
  /// Throws Failure when the schema that belongs to the program cannot be found.
  explicit Settings(const std::filesystem::path& file);
  ~Settings();
  Settings(const Settings&) = delete;
  Settings& operator=(const Settings&) = delete;

  /// The stored value, or the default. Asking with the wrong type is a programming error.
  [[nodiscard]] bool boolean(SettingKey key) const;
  [[nodiscard]] std::int64_t integer(SettingKey key) const;
  [[nodiscard]] double number(SettingKey key) const;
  [[nodiscard]] std::string string(SettingKey key) const;

  /// Stores a value of the key's own type. It is in the file when this returns.
  void set(SettingKey key, const SettingValue& value);
  /// Takes the stored value away; the default holds again.
  void reset(SettingKey key);
  /// Whether the user's file holds a value for the key, whatever it is.
  [[nodiscard]] bool isPresent(SettingKey key) const;

  /// Writes `true` for each of the four keys of the first launch that is not present.
  void writeFirstLaunchDefaults();

  /// Calls `observer` after each change of the key's value until the subscription dies.
  [[nodiscard]] Subscription observe(SettingKey key, std::function<void()> observer);

 private:
  struct Store;
  std::shared_ptr<Store> store_;
};

}  // namespace tidewrack
