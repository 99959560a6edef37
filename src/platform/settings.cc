#include "platform/settings.h"

#define G_SETTINGS_ENABLE_BACKEND
#include <cassert>
#include <vector>

#include <gio/gio.h>
#include <gio/gsettingsbackend.h>

#include "platform/failure.h"
#include "platform/localized.h"
#include "platform/resources.h"

namespace tidewrack {

namespace {

constexpr const char* schemaID = "io.marloon.Tidewrack";
constexpr const char* schemaPath = "/io/marloon/Tidewrack/";
constexpr const char* fileGroup = "Tidewrack";

using enum SettingKey;

// The schema file in data/ says the same for GSettings; a test compares the two.
const std::vector<SettingDefinition>& table() {
  static const std::vector<SettingDefinition> rows = {
      {maxMessagesPerImport, "maxMessagesPerImport", std::int64_t{10000}, false},
      {enableSearchIndexing, "enableSearchIndexing", true, false},
      {autoOpenLastLibrary, "autoOpenLastLibrary", false, false},
      {confirmBeforeDelete, "confirmBeforeDelete", true, false},
      {showMessagePreview, "showMessagePreview", true, false},
      {avatarGravatarEnabled, "avatarGravatarEnabled", false, false},
      {appLanguage, "appLanguage", std::string("system"), false},
      {intelligenceEnabled, "intelligenceEnabled", true, false},
      {enableSmartSummaries, "enableSmartSummaries", true, false},
      {enableSmartReply, "enableSmartReply", true, false},
      {enableCategoryDetection, "enableCategoryDetection", true, false},
      {enableSentimentAnalysis, "enableSentimentAnalysis", false, false},
      {iCloudSyncEnabled, "iCloudSyncEnabled", true, true},
      {spotlightIndexingEnabled, "spotlightIndexingEnabled", true, true},
      {indexMessageBodies, "indexMessageBodies", true, true},
      {indexAttachments, "indexAttachments", true, true},
      {spotlightIndexedCount, "spotlightIndexedCount", std::int64_t{0}, false},
      {lastIndexUpdate, "lastIndexUpdate", 0.0, false},
      {htmlBackgroundMode, "htmlBackgroundMode", std::string("auto"), false},
      {lastSuccessfulSync, "lastSuccessfulSync", 0.0, false},
  };
  return rows;
}

GSettingsSchema* findSchema() {
  const auto folder = resourceFolder("tidewrack/schemas", TIDEWRACK_SCHEMA_FOLDER);
  GError* error = nullptr;
  GSettingsSchemaSource* source =
      g_settings_schema_source_new_from_directory(folder.c_str(), nullptr, FALSE, &error);
  if (!source) {
    const std::string reason = error->message;
    g_error_free(error);
    throw Failure(formatText(localized("settings_schema_error", "The settings cannot be opened: %@",
                                       "Startup failure; the placeholder is the system's reason"),
                             {reason}));
  }
  GSettingsSchema* schema = g_settings_schema_source_lookup(source, schemaID, FALSE);
  g_settings_schema_source_unref(source);
  if (!schema) {
    throw Failure(formatText(localized("settings_schema_error", "The settings cannot be opened: %@",
                                       "Startup failure; the placeholder is the system's reason"),
                             {folder.string()}));
  }
  return schema;
}

GVariant* toVariant(const SettingValue& value) {
  struct Visitor {
    GVariant* operator()(bool on) const { return g_variant_new_boolean(on); }
    GVariant* operator()(std::int64_t number) const { return g_variant_new_int64(number); }
    GVariant* operator()(double number) const { return g_variant_new_double(number); }
    GVariant* operator()(const std::string& text) const { return g_variant_new_string(text.c_str()); }
  };
  return std::visit(Visitor{}, value);
}

}  // namespace

std::span<const SettingDefinition> settingDefinitions() {
  return table();
}

const SettingDefinition& definition(SettingKey key) {
  return table()[static_cast<std::size_t>(key)];
}

struct Settings::Store {
  GSettings* settings = nullptr;

  ~Store() {
    if (settings) {
      g_object_unref(settings);
    }
  }
};

Settings::Settings(const std::filesystem::path& file) : store_(std::make_shared<Store>()) {
  GSettingsSchema* schema = findSchema();
  GSettingsBackend* backend = g_keyfile_settings_backend_new(file.c_str(), schemaPath, fileGroup);
  store_->settings = g_settings_new_full(schema, backend, schemaPath);
  g_object_unref(backend);
  g_settings_schema_unref(schema);
}

Settings::~Settings() = default;

bool Settings::boolean(SettingKey key) const {
  assert(std::holds_alternative<bool>(definition(key).defaultValue));
  return g_settings_get_boolean(store_->settings, definition(key).name) != FALSE;
}

std::int64_t Settings::integer(SettingKey key) const {
  assert(std::holds_alternative<std::int64_t>(definition(key).defaultValue));
  return g_settings_get_int64(store_->settings, definition(key).name);
}

double Settings::number(SettingKey key) const {
  assert(std::holds_alternative<double>(definition(key).defaultValue));
  return g_settings_get_double(store_->settings, definition(key).name);
}

std::string Settings::string(SettingKey key) const {
  assert(std::holds_alternative<std::string>(definition(key).defaultValue));
  char* text = g_settings_get_string(store_->settings, definition(key).name);
  std::string value(text);
  g_free(text);
  return value;
}

void Settings::set(SettingKey key, const SettingValue& value) {
  assert(value.index() == definition(key).defaultValue.index());
  g_settings_set_value(store_->settings, definition(key).name, toVariant(value));
}

void Settings::reset(SettingKey key) {
  g_settings_reset(store_->settings, definition(key).name);
}

bool Settings::isPresent(SettingKey key) const {
  GVariant* value = g_settings_get_user_value(store_->settings, definition(key).name);
  if (!value) {
    return false;
  }
  g_variant_unref(value);
  return true;
}

void Settings::writeFirstLaunchDefaults() {
  for (const auto& setting : table()) {
    if (setting.isWrittenAtFirstLaunch && !isPresent(setting.key)) {
      set(setting.key, true);
    }
  }
}

Subscription Settings::observe(SettingKey key, std::function<void()> observer) {
  // Lives as long as the subscription, and keeps the settings it listens to.
  struct Connection {
    std::shared_ptr<Store> store;
    std::function<void()> observer;
    gulong handler = 0;

    ~Connection() { g_signal_handler_disconnect(store->settings, handler); }
  };
  auto connection = std::make_shared<Connection>();
  connection->store = store_;
  connection->observer = std::move(observer);
  const std::string signal = std::string("changed::") + definition(key).name;
  connection->handler = g_signal_connect(
      store_->settings, signal.c_str(), G_CALLBACK(+[](GSettings*, const char*, gpointer data) {
        const auto run = static_cast<Connection*>(data)->observer;  // It may end its own subscription.
        run();
      }),
      connection.get());
  return Subscription(connection);
}

}  // namespace tidewrack
