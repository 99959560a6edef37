#pragma once

#include <array>
#include <string>
#include <string_view>

/// The language of the interface. A process has one, from its start to its end.
namespace tidewrack {

/// The languages that the program speaks, in the order in which they are offered. `system` is whatever the
/// user's environment says.
enum class AppLanguage {
  system,
  english,
  spanish,
  french,
  german,
  italian,
  portugueseBR,
  russian,
  arabic,
  hindi,
  japanese,
  chineseHans
};

inline constexpr std::array allAppLanguages = {
    AppLanguage::system, AppLanguage::english, AppLanguage::spanish,      AppLanguage::french,
    AppLanguage::german, AppLanguage::italian, AppLanguage::portugueseBR, AppLanguage::russian,
    AppLanguage::arabic, AppLanguage::hindi,   AppLanguage::japanese,     AppLanguage::chineseHans};

/// The form in which the setting `appLanguage` stores it: "system", or a BCP 47 code such as "pt-BR".
std::string_view rawValue(AppLanguage language);

/// The language of a stored text, by exact match; any other text stands for `system`.
AppLanguage appLanguageFromRawValue(std::string_view rawValue);

/// Its BCP 47 code; empty for `system`.
std::string_view languageCode(AppLanguage language);

/// The folder of its catalog of translations, which is gettext's name for it ("pt_BR"); empty for `system`.
std::string_view catalogName(AppLanguage language);

/// Its name in itself, for the picker. That of `system` is in the language of the interface.
std::string displayName(AppLanguage language);

/// Makes it the language of this process: of its texts, its dates and its numbers. With `system` the
/// environment decides. A region of the environment is kept where it belongs to the language (de_AT stays
/// Austrian). Call it after setlocale(LC_ALL, ""), before the first localised text and before there is a
/// second thread.
void applyLanguage(AppLanguage language);

/// Whether the texts of the interface run from right to left.
bool isInterfaceRightToLeft();

}  // namespace tidewrack
