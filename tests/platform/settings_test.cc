#include "platform/settings.h"

#define G_SETTINGS_ENABLE_BACKEND
#include <fstream>
#include <set>
#include <sstream>

#include <gio/gio.h>

#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

std::string textOf(const std::filesystem::path& file) {
  std::ifstream in(file);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

TEST(Settings, HaveTheirDocumentedNamesTypesAndDefaults) {
  const std::vector<std::pair<std::string, SettingValue>> expected = {
      {"maxMessagesPerImport", std::int64_t{10000}},
      {"enableSearchIndexing", true},
      {"autoOpenLastLibrary", false},
      {"confirmBeforeDelete", true},
      {"showMessagePreview", true},
      {"avatarGravatarEnabled", false},
      {"appLanguage", std::string("system")},
      {"intelligenceEnabled", true},
      {"enableSmartSummaries", true},
      {"enableSmartReply", true},
      {"enableCategoryDetection", true},
      {"enableSentimentAnalysis", false},
      {"iCloudSyncEnabled", true},
      {"spotlightIndexingEnabled", true},
      {"indexMessageBodies", true},
      {"indexAttachments", true},
      {"spotlightIndexedCount", std::int64_t{0}},
      {"lastIndexUpdate", 0.0},
      {"htmlBackgroundMode", std::string("auto")},
      {"lastSuccessfulSync", 0.0},
  };
  const auto definitions = settingDefinitions();
  ASSERT_EQ(definitions.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(static_cast<std::size_t>(definitions[i].key), i);
    EXPECT_EQ(definitions[i].name, expected[i].first);
    EXPECT_EQ(definitions[i].defaultValue, expected[i].second) << expected[i].first;
  }
}

TEST(Settings, AnAbsentKeyReadsAsItsDefault) {
  const TemporaryFolder folder;
  const Settings settings(folder / "settings.ini");
  for (const auto& setting : settingDefinitions()) {
    SCOPED_TRACE(setting.name);
    EXPECT_FALSE(settings.isPresent(setting.key));
    struct {
      const Settings& settings;
      SettingKey key;
      void operator()(bool value) const { EXPECT_EQ(settings.boolean(key), value); }
      void operator()(std::int64_t value) const { EXPECT_EQ(settings.integer(key), value); }
      void operator()(double value) const { EXPECT_EQ(settings.number(key), value); }
      void operator()(const std::string& value) const { EXPECT_EQ(settings.string(key), value); }
    } check{settings, setting.key};
    std::visit(check, setting.defaultValue);
  }
  EXPECT_FALSE(std::filesystem::exists(folder / "settings.ini")) << "reading writes nothing";
}

TEST(Settings, AFirstLaunchWritesExactlyTheFourKeys) {
  const TemporaryFolder folder;
  Settings settings(folder / "settings.ini");
  settings.writeFirstLaunchDefaults();
  std::set<std::string> present;
  for (const auto& setting : settingDefinitions()) {
    if (settings.isPresent(setting.key)) {
      present.insert(setting.name);
      EXPECT_TRUE(settings.boolean(setting.key));
    }
  }
  EXPECT_EQ(present, (std::set<std::string>{"iCloudSyncEnabled", "spotlightIndexingEnabled",
                                            "indexMessageBodies", "indexAttachments"}));
  const std::string text = textOf(folder / "settings.ini");
  EXPECT_NE(text.find("iCloudSyncEnabled=true"), std::string::npos);
  EXPECT_EQ(text.find("appLanguage"), std::string::npos);
}

TEST(Settings, AValueStoredAsFalseStaysFalseAtTheFirstLaunch) {
  const TemporaryFolder folder;
  Settings settings(folder / "settings.ini");
  settings.set(SettingKey::iCloudSyncEnabled, false);
  settings.writeFirstLaunchDefaults();
  EXPECT_FALSE(settings.boolean(SettingKey::iCloudSyncEnabled));
  EXPECT_TRUE(settings.boolean(SettingKey::indexAttachments));
}

TEST(Settings, AnUnknownLanguageIsKeptAsItIsStored) {
  const TemporaryFolder folder;
  Settings settings(folder / "settings.ini");
  settings.set(SettingKey::appLanguage, std::string("xx"));
  EXPECT_EQ(Settings(folder / "settings.ini").string(SettingKey::appLanguage), "xx");
}

TEST(Settings, ANumberOutsideThePanelsRangeIsKept) {
  const TemporaryFolder folder;
  {
    std::ofstream file(folder / "settings.ini");
    file << "[Tidewrack]\nmaxMessagesPerImport=int64 7\n";
  }
  EXPECT_EQ(Settings(folder / "settings.ini").integer(SettingKey::maxMessagesPerImport), 7);
}

TEST(Settings, AStoredValueOfTheWrongTypeCountsAsAbsent) {
  const TemporaryFolder folder;
  {
    std::ofstream file(folder / "settings.ini");
    file << "[Tidewrack]\niCloudSyncEnabled='perhaps'\n";
  }
  Settings settings(folder / "settings.ini");
  EXPECT_TRUE(settings.boolean(SettingKey::iCloudSyncEnabled));
  EXPECT_FALSE(settings.isPresent(SettingKey::iCloudSyncEnabled));
}

TEST(Settings, ValuesSurviveTheObjectAndCanBeTakenAway) {
  const TemporaryFolder folder;
  {
    Settings settings(folder / "settings.ini");
    settings.set(SettingKey::htmlBackgroundMode, std::string("dark"));
    settings.set(SettingKey::spotlightIndexedCount, std::int64_t{5'000'000'000});
    settings.set(SettingKey::lastIndexUpdate, 1234.5);
  }
  Settings settings(folder / "settings.ini");
  EXPECT_EQ(settings.string(SettingKey::htmlBackgroundMode), "dark");
  EXPECT_EQ(settings.integer(SettingKey::spotlightIndexedCount), 5'000'000'000);
  EXPECT_EQ(settings.number(SettingKey::lastIndexUpdate), 1234.5);
  settings.reset(SettingKey::htmlBackgroundMode);
  EXPECT_FALSE(settings.isPresent(SettingKey::htmlBackgroundMode));
  EXPECT_EQ(settings.string(SettingKey::htmlBackgroundMode), "auto");
}

TEST(Settings, TellTheObserversOfTheChangedKeyAlone) {
  const TemporaryFolder folder;
  Settings settings(folder / "settings.ini");
  int changes = 0;
  auto subscription = settings.observe(SettingKey::intelligenceEnabled, [&changes] { ++changes; });
  settings.set(SettingKey::intelligenceEnabled, false);
  EXPECT_EQ(changes, 1);
  settings.set(SettingKey::enableSmartReply, false);
  EXPECT_EQ(changes, 1);
  subscription.reset();
  settings.set(SettingKey::intelligenceEnabled, true);
  EXPECT_EQ(changes, 1);
}

TEST(Settings, AnObserverMayEndItsOwnSubscription) {
  const TemporaryFolder folder;
  Settings settings(folder / "settings.ini");
  int changes = 0;
  Subscription subscription;
  subscription = settings.observe(SettingKey::intelligenceEnabled, [&] {
    ++changes;
    subscription.reset();
  });
  settings.set(SettingKey::intelligenceEnabled, false);
  settings.set(SettingKey::intelligenceEnabled, true);
  EXPECT_EQ(changes, 1);
}

TEST(Settings, TheFileAndItsFolderArePrivate) {
  const TemporaryFolder folder;
  const auto file = folder / "config" / "Tidewrack" / "settings.ini";
  Settings settings(file);
  settings.writeFirstLaunchDefaults();
  using std::filesystem::perms;
  const auto others = perms::group_all | perms::others_all;
  EXPECT_EQ(std::filesystem::status(file).permissions() & others, perms::none);
  EXPECT_EQ(std::filesystem::status(file.parent_path()).permissions() & others, perms::none);
}

TEST(Settings, TheSchemaHasTheSameDefaultsAsTheTable) {
  const TemporaryFolder folder;
  GSettingsSchemaSource* source = g_settings_schema_source_new_from_directory(
      TIDEWRACK_BINARY_DIR "/share/tidewrack/schemas", nullptr, FALSE, nullptr);
  ASSERT_NE(source, nullptr);
  GSettingsSchema* schema = g_settings_schema_source_lookup(source, "io.marloon.Tidewrack", FALSE);
  ASSERT_NE(schema, nullptr);
  char** keys = g_settings_schema_list_keys(schema);
  EXPECT_EQ(g_strv_length(keys), settingDefinitions().size());
  g_strfreev(keys);
  for (const auto& setting : settingDefinitions()) {
    ASSERT_TRUE(g_settings_schema_has_key(schema, setting.name)) << setting.name;
    GSettingsSchemaKey* key = g_settings_schema_get_key(schema, setting.name);
    GVariant* value = g_settings_schema_key_get_default_value(key);
    SettingValue found;
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN)) {
      found = g_variant_get_boolean(value) != FALSE;
    } else if (g_variant_is_of_type(value, G_VARIANT_TYPE_INT64)) {
      found = std::int64_t{g_variant_get_int64(value)};
    } else if (g_variant_is_of_type(value, G_VARIANT_TYPE_DOUBLE)) {
      found = g_variant_get_double(value);
    } else {
      found = std::string(g_variant_get_string(value, nullptr));
    }
    EXPECT_EQ(found, setting.defaultValue) << setting.name;
    g_variant_unref(value);
    g_settings_schema_key_unref(key);
  }
  g_settings_schema_unref(schema);
  g_settings_schema_source_unref(source);
}

}  // namespace
}  // namespace tidewrack
