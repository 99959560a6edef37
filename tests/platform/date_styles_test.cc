#include "platform/date_styles.h"

#include <memory>
#include <random>

#include <gtest/gtest.h>
#include <unicode/dtptngen.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

namespace tidewrack {
namespace {

// Puts the default locale and time zone back.
class DateStylesTest : public testing::Test {
 protected:
  ~DateStylesTest() override {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale_, status);
    icu::TimeZone::adoptDefault(zone_.release());
  }
  static void use(const icu::Locale& locale, const char* zone) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale, status);
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone(zone));
  }
  static std::string withICU(const char* skeleton, Date date) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale& locale = icu::Locale::getDefault();
    const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    const icu::SimpleDateFormat format(patterns->getBestPattern(icu::UnicodeString(skeleton), status), locale,
                                       status);
    icu::UnicodeString text;
    format.format(static_cast<double>(date.time_since_epoch().count()), text);
    std::string bytes;
    return text.toUTF8String(bytes);
  }

 private:
  icu::Locale locale_ = icu::Locale::getDefault();
  std::unique_ptr<icu::TimeZone> zone_{icu::TimeZone::createDefault()};
};

TEST_F(DateStylesTest, EveryLocaleWritesItsDatesAsICUDoes) {
  constexpr const char* zones[] = {"UTC", "America/New_York", "Asia/Kolkata", "Pacific/Apia"};
  std::mt19937_64 random(7);
  std::uniform_int_distribution<std::int64_t> seconds(-11'000'000'000, 8'000'000'000);
  std::int32_t count = 0;
  const icu::Locale* locales = icu::Locale::getAvailableLocales(count);
  ASSERT_GT(count, 100);
  for (std::int32_t index = 0; index < count; index += 7) {
    use(locales[index], zones[static_cast<std::size_t>(index) % std::size(zones)]);
    SCOPED_TRACE(locales[index].getName());
    const auto longStyle = DateStyle::longDateAndTime();
    const auto numericStyle = DateStyle::numericDateAndTime();
    const auto shortStyle = DateStyle::abbreviatedDateAndTime();
    const auto dayStyle = DateStyle::abbreviatedDate();
    for (int turn = 0; turn < 4; ++turn) {
      const Date date{std::chrono::milliseconds(seconds(random) * 1000 + 999)};
      ASSERT_EQ(longStyle.format(date), withICU("yMMMMdjmmss", date));
      ASSERT_EQ(numericStyle.format(date), withICU("yMdjmmss", date));
      ASSERT_EQ(shortStyle.format(date), withICU("yMMMdjmmss", date));
      ASSERT_EQ(dayStyle.format(date), withICU("yMMMd", date));
    }
  }
}

TEST_F(DateStylesTest, TheSeparatorIsTheSameInEveryLocale) {
  use(icu::Locale("ar", "EG"), "America/New_York");
  EXPECT_EQ(DateStyle::mboxSeparator().format(*parseISO8601("2026-11-01T05:30:09Z")),
            "Sun Nov 01 01:30:09 2026");
  EXPECT_EQ(DateStyle::mboxSeparator().format(*parseISO8601("2026-11-01T06:30:09Z")),
            "Sun Nov 01 01:30:09 2026");
}

TEST_F(DateStylesTest, DatesAtTheEndsOfTimeAreWritten) {
  use(icu::Locale::getUS(), "UTC");
  const auto style = DateStyle::numericDateAndTime();
  for (const Date date : {distantPast, Date::max(), Date{}, *parseISO8601("1500-01-01T00:00:00Z")}) {
    EXPECT_EQ(style.format(date), withICU("yMdjmmss", date));
  }
}

}  // namespace
}  // namespace tidewrack
