#include "platform/app_language.h"

#include <clocale>
#include <cstdlib>
#include <set>
#include <string>

#include <unicode/locid.h>

#include "platform/byte_count.h"
#include "platform/date.h"

namespace tidewrack {
namespace {

class AppLanguageTest : public testing::Test {
 protected:
  AppLanguageTest() : locale_(icu::Locale::getDefault()) {
    ::unsetenv("LANGUAGE");
    std::setlocale(LC_ALL, "C");
  }
  ~AppLanguageTest() override {
    ::unsetenv("LANGUAGE");
    std::setlocale(LC_ALL, "C");
    use(locale_);
  }
  static void use(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale, status);
  }
  static std::string language() {
    const char* value = std::getenv("LANGUAGE");
    return value == nullptr ? "" : value;
  }

 private:
  icu::Locale locale_;
};

TEST_F(AppLanguageTest, StoredTextsAreMatchedExactly) {
  EXPECT_EQ(allAppLanguages.size(), 12U);
  std::set<std::string_view> texts;
  for (const AppLanguage language : allAppLanguages) {
    EXPECT_EQ(appLanguageFromRawValue(rawValue(language)), language);
    texts.insert(rawValue(language));
  }
  EXPECT_EQ(texts.size(), allAppLanguages.size());
  EXPECT_EQ(appLanguageFromRawValue("EN"), AppLanguage::system);
  EXPECT_EQ(appLanguageFromRawValue(""), AppLanguage::system);
  EXPECT_EQ(appLanguageFromRawValue("pt_BR"), AppLanguage::system);
  EXPECT_EQ(appLanguageFromRawValue("pt-BR"), AppLanguage::portugueseBR);
  EXPECT_EQ(appLanguageFromRawValue("zh-Hans"), AppLanguage::chineseHans);
}

TEST_F(AppLanguageTest, EachLanguageIsNamedInItself) {
  EXPECT_EQ(displayName(AppLanguage::system), "Sistema");
  EXPECT_EQ(displayName(AppLanguage::english), "English");
  EXPECT_EQ(displayName(AppLanguage::portugueseBR), "Português (Brasil)");
  EXPECT_EQ(displayName(AppLanguage::arabic), "العربية");
  EXPECT_EQ(displayName(AppLanguage::chineseHans), "中文（简体）");
}

TEST_F(AppLanguageTest, TheSystemsLanguageLeavesTheEnvironmentAlone) {
  use("fr_CA");
  ::setenv("LANGUAGE", "fr:de", 1);
  applyLanguage(AppLanguage::system);
  EXPECT_EQ(language(), "fr:de");
  EXPECT_STREQ(icu::Locale::getDefault().getName(), "fr_CA");
  EXPECT_EQ(languageCode(AppLanguage::system), "");
}

TEST_F(AppLanguageTest, AChosenLanguageTakesTheNumbersAndDatesWithIt) {
  use("en_US");
  EXPECT_EQ(formatByteCount(1'200'000), "1.2 MB");
  applyLanguage(AppLanguage::german);
  EXPECT_EQ(language(), "de");
  EXPECT_EQ(formatByteCount(1'200'000), "1,2 MB");
  use("en_US");
  applyLanguage(AppLanguage::chineseHans);
  EXPECT_EQ(language(), "zh_CN");
  EXPECT_STREQ(icu::Locale::getDefault().getLanguage(), "zh");
}

TEST_F(AppLanguageTest, ARegionOfTheSameLanguageIsKept) {
  use("de_AT");
  applyLanguage(AppLanguage::german);
  EXPECT_STREQ(icu::Locale::getDefault().getName(), "de_AT");
  use("en_US_POSIX");
  applyLanguage(AppLanguage::english);
  EXPECT_STREQ(icu::Locale::getDefault().getName(), "en");
}

TEST_F(AppLanguageTest, AChoiceWorksWhereTheSystemHasNoLocaleAtAll) {
  EXPECT_STREQ(std::setlocale(LC_MESSAGES, nullptr), "C");
  applyLanguage(AppLanguage::french);
  EXPECT_STRNE(std::setlocale(LC_MESSAGES, nullptr), "C");
  EXPECT_STREQ(icu::Locale::getDefault().getLanguage(), "fr");
}

}  // namespace
}  // namespace tidewrack
