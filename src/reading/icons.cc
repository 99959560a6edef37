#include "reading/icons.h"

#include <algorithm>

namespace tidewrack {
namespace {

struct IconEntry {
  std::string_view symbol;
  std::string_view icon;
};

// Made from data/icons.txt when the build is configured, in ascending order of the symbols.
constexpr IconEntry iconTable[] = {
#include "icon_table.inc"
};

constexpr std::string_view unknownIcon = "question-circle";

}  // namespace

std::string iconName(std::string_view symbol) {
  const auto* const entry = std::ranges::lower_bound(iconTable, symbol, {}, &IconEntry::symbol);
  const bool isKnown = entry != std::end(iconTable) && entry->symbol == symbol;
  std::string name = "tw-";
  name += isKnown ? entry->icon : unknownIcon;
  name += "-symbolic";
  return name;
}

std::vector<std::string_view> knownSymbols() {
  std::vector<std::string_view> symbols;
  for (const auto& entry : iconTable) {
    symbols.push_back(entry.symbol);
  }
  return symbols;
}

}  // namespace tidewrack
