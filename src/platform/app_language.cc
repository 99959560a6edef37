#include "platform/app_language.h"

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <unicode/locid.h>

#include "platform/localized.h"

namespace tidewrack {
namespace {

struct LanguageRow {
  std::string_view rawValue;
  std::string_view catalog;
  const char* name;
};

constexpr std::array<LanguageRow, allAppLanguages.size()> rows = {{
    {"system", "", ""},
    {"en", "en", "English"},
    {"es", "es", "Español"},
    {"fr", "fr", "Français"},
    {"de", "de", "Deutsch"},
    {"it", "it", "Italiano"},
    {"pt-BR", "pt_BR", "Português (Brasil)"},
    {"ru", "ru", "Русский"},
    {"ar", "ar", "العربية"},
    {"hi", "hi", "हिन्दी"},
    {"ja", "ja", "日本語"},
    {"zh-Hans", "zh_CN", "中文（简体）"},
}};

const LanguageRow& row(AppLanguage language) {
  return rows.at(static_cast<std::size_t>(language));
}

// gettext does not look for catalogs in the plain C locale; C.UTF-8 is the same with catalogs.
void leavePlainLocale() {
  const char* present = std::setlocale(LC_MESSAGES, nullptr);
  if (present == nullptr || std::strcmp(present, "C") == 0 || std::strcmp(present, "POSIX") == 0) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    std::setlocale(LC_MESSAGES, "C.UTF-8");
  }
}

}  // namespace

std::string_view rawValue(AppLanguage language) {
  return row(language).rawValue;
}

AppLanguage appLanguageFromRawValue(std::string_view rawValue) {
  const auto* found = std::ranges::find(rows, rawValue, &LanguageRow::rawValue);
  return found == rows.end() ? AppLanguage::system : allAppLanguages.at(found - rows.begin());
}

std::string_view languageCode(AppLanguage language) {
  return language == AppLanguage::system ? std::string_view() : row(language).rawValue;
}

std::string_view catalogName(AppLanguage language) {
  return row(language).catalog;
}

std::string displayName(AppLanguage language) {
  return language == AppLanguage::system
             ? localized("language_system", "Sistema", "Language option: follow system")
             : std::string(row(language).name);
}

void applyLanguage(AppLanguage language) {
  if (language == AppLanguage::system) {
    return;
  }
  leavePlainLocale();
  ::setenv("LANGUAGE", std::string(catalogName(language)).c_str(), 1);
  UErrorCode status = U_ZERO_ERROR;
  const auto chosen = icu::Locale::forLanguageTag(std::string(languageCode(language)), status);
  const icu::Locale present = icu::Locale::getDefault();
  const bool isRegional = *chosen.getCountry() == '\0' && *present.getCountry() != '\0' &&
                          std::strcmp(present.getVariant(), "POSIX") != 0;
  if (U_SUCCESS(status) && !(isRegional && std::strcmp(chosen.getLanguage(), present.getLanguage()) == 0)) {
    icu::Locale::setDefault(chosen, status);
  }
}

bool isInterfaceRightToLeft() {
  return localized("text_direction", "ltr",
                   "Not shown: \"rtl\" where the texts of this language run from right to left, "
                   "otherwise \"ltr\"") == "rtl";
}

}  // namespace tidewrack
