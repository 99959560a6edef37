#include "screen/settings_panel.h"

#include <cstddef>

namespace tidewrack {
namespace {

struct TabRow {
  std::string_view rawValue;
  std::string_view symbol;
};

constexpr std::array<TabRow, allSettingsTabs.size()> rows = {{
    {"General", "gear"},
    {"Sincronización", "icloud"},
    {"Spotlight", "magnifyingglass"},
    {"Inteligencia", "sparkles"},
}};

}  // namespace

std::string_view rawValue(SettingsPanel::SettingsTab tab) {
  return rows.at(static_cast<std::size_t>(tab)).rawValue;
}

std::string_view symbol(SettingsPanel::SettingsTab tab) {
  return rows.at(static_cast<std::size_t>(tab)).symbol;
}

}  // namespace tidewrack
