#include "platform/date.h"

#include <limits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tidewrack {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

Date at(std::int64_t secondsSinceEpoch) {
  return Date(seconds(secondsSinceEpoch));
}

TEST(DateTest, ISO8601HasWholeSecondsInUTC) {
  EXPECT_EQ(formatISO8601(at(0)), "1970-01-01T00:00:00Z");
  EXPECT_EQ(formatISO8601(at(1778752800)), "2026-05-14T10:00:00Z");
  EXPECT_EQ(formatISO8601(Date(milliseconds(1999))), "1970-01-01T00:00:01Z");
  EXPECT_EQ(formatISO8601(Date(milliseconds(-1))), "1969-12-31T23:59:59Z");
  EXPECT_EQ(formatISO8601(at(951782400)), "2000-02-29T00:00:00Z");
}

TEST(DateTest, EveryInstantHasAForm) {
  EXPECT_EQ(formatISO8601(at(253402300800)), "+10000-01-01T00:00:00Z");
  EXPECT_EQ(formatISO8601(at(-62135596800)), "0001-01-01T00:00:00Z");
  EXPECT_EQ(formatISO8601(at(-62198755200)), "-0001-01-01T00:00:00Z");
  EXPECT_EQ(formatISO8601(Date::min()).front(), '-');
  EXPECT_EQ(formatISO8601(Date::max()).front(), '+');
}

TEST(DateTest, ReadsBackWhatItWrites) {
  std::mt19937_64 random(29);
  for (int round = 0; round < 2000; ++round) {
    const auto value = static_cast<std::int64_t>(random() % 800'000'000'000) - 400'000'000'000;
    ASSERT_EQ(parseISO8601(formatISO8601(at(value))), at(value));
  }
  EXPECT_EQ(parseISO8601(formatISO8601(Date::min())), Date::min());
  EXPECT_EQ(parseISO8601(formatISO8601(Date::max())), std::chrono::floor<seconds>(Date::max()));
}

TEST(DateTest, ReadsNoOtherText) {
  for (const auto* text : {"",
                           "2026-05-14",
                           "2026-05-14T10:00:00",
                           "2026-05-14 10:00:00Z",
                           "2026-05-14T10:00:00z",
                           "2026-05-14T10:00:00.0Z",
                           "2026-05-14T10:00:00+00:00",
                           "2026-02-30T10:00:00Z",
                           "2026-13-01T10:00:00Z",
                           "2026-00-01T10:00:00Z",
                           "2026-05-14T24:00:00Z",
                           "2026-05-14T10:60:00Z",
                           "26-05-14T10:00:00Z",
                           "+2026-05-14T10:00:00Z",
                           "02026-05-14T10:00:00Z",
                           "-0000-05-14T10:00:00Z",
                           " 2026-05-14T10:00:00Z",
                           "2026-05-14T10:00:00Z ",
                           "+999999999-01-01T00:00:00Z",
                           "2026-+5-14T10:00:00Z"}) {
    EXPECT_FALSE(parseISO8601(text)) << text;
  }
}

TEST(DateTest, SecondsKeepMilliseconds) {
  const Date date(milliseconds(1778752800123));
  EXPECT_EQ(dateFromSeconds(secondsSince1970(date)), date);
  EXPECT_EQ(dateFromSeconds(-0.001), Date(milliseconds(-1)));
  EXPECT_EQ(dateFromSeconds(std::numeric_limits<double>::infinity()), Date::max());
  EXPECT_EQ(dateFromSeconds(-std::numeric_limits<double>::infinity()), Date::min());
  EXPECT_EQ(dateFromSeconds(std::numeric_limits<double>::quiet_NaN()), Date::min());
  EXPECT_EQ(dateFromSeconds(secondsSince1970(distantPast)), distantPast);
}

TEST(DateTest, MediumDateAndShortTimeNameTheDayAndTheTime) {
  const std::string text = formatMediumDateShortTime(at(1778752800));
  EXPECT_THAT(text, testing::HasSubstr("2026"));
  EXPECT_THAT(text, testing::HasSubstr(":"));
  EXPECT_NE(formatMediumDateShortTime(at(0)), text);
}

}  // namespace
}  // namespace tidewrack
