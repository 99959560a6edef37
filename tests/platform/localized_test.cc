#include "platform/localized.h"

#include <unicode/locid.h>

#include "platform/byte_count.h"

namespace tidewrack {
namespace {

TEST(Localized, ATextWithoutATranslationIsItsDefault) {
  EXPECT_EQ(localized("no_such_key", "Import Error", "A comment"), "Import Error");
  EXPECT_EQ(localized("no_such_key", "Loading…", "A comment"), "Loading…");
}

TEST(FormatText, FillsPlaceholdersInOrder) {
  EXPECT_EQ(formatText("%d of %d file(s)", {1LL, 3LL}), "1 of 3 file(s)");
  EXPECT_EQ(formatText("%@\n%d message(s) affected\n%@", {"Work", 12LL, "Preparing…"}),
            "Work\n12 message(s) affected\nPreparing…");
}

TEST(FormatText, FillsPlaceholdersByPosition) {
  EXPECT_EQ(formatText("%2$d in %1$@", {"Work", 4LL}), "4 in Work");
  EXPECT_EQ(formatText("%1$@ and %1$@", {"a"}), "a and a");
}

TEST(FormatText, DoublesThePercentSignForItself) {
  EXPECT_EQ(formatText("100%% of %d", {2LL}), "100% of 2");
}

TEST(FormatText, LeavesAPlaceholderWithoutAValueAsItStands) {
  EXPECT_EQ(formatText("%d and %d", {1LL}), "1 and %d");
  EXPECT_EQ(formatText("%9$@", {"a"}), "%9$@");
  EXPECT_EQ(formatText("%0$@ %1@ %x 50%", {"a"}), "%0$@ %1@ %x 50%");
}

TEST(FormatText, DoesNotFillWhatAValueBroughtIn) {
  EXPECT_EQ(formatText("%@ %@", {"%@ 100%%", "b"}), "%@ 100%% b");
}

class ByteCount : public testing::Test {
 protected:
  ByteCount() : before_(icu::Locale::getDefault()) { use("en_US"); }
  ~ByteCount() override {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(before_, status);
  }
  static void use(const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale(locale), status);
  }

 private:
  icu::Locale before_;
};

TEST_F(ByteCount, CountsInUnitsOfAThousand) {
  EXPECT_EQ(formatByteCount(0), "Zero KB");
  EXPECT_EQ(formatByteCount(1), "1 byte");
  EXPECT_EQ(formatByteCount(999), "999 bytes");
  EXPECT_EQ(formatByteCount(1'000), "1 KB");
  EXPECT_EQ(formatByteCount(12'345), "12 KB");
  EXPECT_EQ(formatByteCount(1'200'000), "1.2 MB");
  EXPECT_EQ(formatByteCount(25'000'000), "25 MB");
  EXPECT_EQ(formatByteCount(3'456'000'000), "3.46 GB");
  EXPECT_EQ(formatByteCount(2'000'000'000'000), "2 TB");
}

TEST_F(ByteCount, TakesTheNextUnitWhereRoundingWouldReachAThousand) {
  EXPECT_EQ(formatByteCount(999'499), "999 KB");
  EXPECT_EQ(formatByteCount(999'500), "1 MB");
  EXPECT_EQ(formatByteCount(999'950'000), "1 GB");
}

TEST_F(ByteCount, WritesTheNumberInTheLocale) {
  use("de_DE");
  EXPECT_EQ(formatByteCount(1'200'000), "1,2 MB");
}

}  // namespace
}  // namespace tidewrack
