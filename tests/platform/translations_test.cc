#include <clocale>
#include <cstdlib>
#include <map>
#include <string>

#include <unicode/locid.h>

#include "platform/app_language.h"
#include "platform/count_text.h"
#include "platform/date.h"
#include "platform/localized.h"

// What gettext has found so far is forgotten when this changes. A process has one language; only a test goes
// through all of them.
extern "C" int _nl_msg_cat_cntr;

namespace tidewrack {
namespace {

class Translations : public testing::Test {
 protected:
  Translations() : locale_(icu::Locale::getDefault()) {}
  ~Translations() override {
    ::unsetenv("LANGUAGE");
    std::setlocale(LC_ALL, "C");
    ++_nl_msg_cat_cntr;
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale_, status);
  }
  static void speak(AppLanguage language) {
    applyLanguage(language);
    ++_nl_msg_cat_cntr;
  }

 private:
  icu::Locale locale_;
};

TEST_F(Translations, EachLanguageHasItsTexts) {
  const std::map<AppLanguage, std::string> expected = {
      {AppLanguage::english, "Language"}, {AppLanguage::spanish, "Idioma"},
      {AppLanguage::french, "Langue"},    {AppLanguage::german, "Sprache"},
      {AppLanguage::italian, "Lingua"},   {AppLanguage::portugueseBR, "Idioma"},
      {AppLanguage::russian, "Язык"},     {AppLanguage::arabic, "اللغة"},
      {AppLanguage::hindi, "भाषा"},       {AppLanguage::japanese, "言語"},
      {AppLanguage::chineseHans, "语言"},
  };
  EXPECT_EQ(expected.size() + 1, allAppLanguages.size());
  for (const auto& [language, text] : expected) {
    speak(language);
    EXPECT_EQ(localized("language_label", "Idioma", "Language picker label"), text) << rawValue(language);
    EXPECT_EQ(isInterfaceRightToLeft(), language == AppLanguage::arabic) << rawValue(language);
  }
}

TEST_F(Translations, DatesAndNumbersAreThoseOfTheChosenLanguage) {
  const Date date(std::chrono::seconds(1'780'000'000));
  speak(AppLanguage::german);
  EXPECT_NE(formatMediumDateShortTime(date).find("2026"), std::string::npos);
  EXPECT_EQ(formatCount(1234), "1234");
  speak(AppLanguage::arabic);
  EXPECT_EQ(formatCount(-1205), "-١٢٠٥");
  EXPECT_EQ(formatText(localized("progress_messages_found_format", "%d message(s)",
                                 "Messages found progress detail"),
                       {12LL}),
            "الرسائل: ١٢");
}

TEST_F(Translations, AnAddressKeepsItsOrderAmongLettersFromRightToLeft) {
  EXPECT_EQ(formatText("From: %@", {"Ana <ana@example.org>"}), "From: Ana <ana@example.org>");
  speak(AppLanguage::arabic);
  EXPECT_EQ(formatText("%@", {"Ana <ana@example.org>"}), "\u2068Ana <ana@example.org>\u2069");
}

}  // namespace
}  // namespace tidewrack
