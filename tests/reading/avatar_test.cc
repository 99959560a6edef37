#include "reading/avatar.h"

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(AvatarHash, SpellingsThatDifferOnlyInCaseAndBlanksHaveOneHash) {
  EXPECT_EQ(avatarHash("  Ana@Example.ORG \n"), avatarHash("ana@example.org"));
  EXPECT_NE(avatarHash("ana@example.org"), avatarHash("eva@example.org"));
}

TEST(AvatarHash, IsSHA256InLowerCaseHexadecimal) {
  EXPECT_EQ(avatarHash("ABC"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(AvatarHash, ABlankAddressHasNone) {
  EXPECT_EQ(avatarHash(""), "");
  EXPECT_EQ(avatarHash(" \t\n"), "");
}

TEST(AvatarHue, TheEmptyAddressGivesThreeHundredFortyOneDegrees) {
  EXPECT_DOUBLE_EQ(avatarHue(""), 341.0 / 360.0);
}

TEST(AvatarHue, IsTheDjb2HashOfTheBytesAsTheyStand) {
  EXPECT_DOUBLE_EQ(avatarHue("a"), static_cast<double>((5381 * 33 + 97) % 360) / 360.0);
  EXPECT_NE(avatarHue("a"), avatarHue("A"));
  EXPECT_DOUBLE_EQ(avatarHue("é"), static_cast<double>(((5381 * 33 + 0xC3) * 33 + 0xA9) % 360) / 360.0);
}

TEST(Initials, OfOneWordAreItsFirstTwoCharacters) {
  EXPECT_EQ(initials(Text("Lee"), "x@y"), "LE");
  EXPECT_EQ(initials(Text("L"), "x@y"), "L");
}

TEST(Initials, OfAnEmptyNameThatIsPresentAreEmpty) {
  EXPECT_EQ(initials(Text(""), "x@y"), "");
}

TEST(Initials, OfSeveralWordsAreThoseOfTheFirstTwo) {
  EXPECT_EQ(initials(Text("First Second Third"), "x@y"), "FS");
  EXPECT_EQ(initials(Text("  ana   maría "), "x@y"), "AM");
  EXPECT_EQ(initials(Text("émile ßeta"), "x@y"), "ÉSS");
}

TEST(Initials, OfOneWordWithBlanksKeepTheBlanks) {
  EXPECT_EQ(initials(Text(" lee"), "x@y"), " L");
}

TEST(Initials, WithoutANameAreTheFirstTwoCharactersOfTheAddress) {
  EXPECT_EQ(initials(std::nullopt, "ana@example.org"), "AN");
  EXPECT_EQ(initials(std::nullopt, ""), "");
}

TEST(ColorFromHSB, GivesTheSixCornersOfTheWheel) {
  const auto near = [](const RGBColor& a, const RGBColor& b) {
    return std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue) < 1e-9;
  };
  EXPECT_TRUE(near(colorFromHSB(0, 1, 1), {1, 0, 0}));
  EXPECT_TRUE(near(colorFromHSB(1.0 / 6, 1, 1), {1, 1, 0}));
  EXPECT_TRUE(near(colorFromHSB(2.0 / 6, 1, 1), {0, 1, 0}));
  EXPECT_TRUE(near(colorFromHSB(3.0 / 6, 1, 1), {0, 1, 1}));
  EXPECT_TRUE(near(colorFromHSB(4.0 / 6, 1, 1), {0, 0, 1}));
  EXPECT_TRUE(near(colorFromHSB(5.0 / 6, 1, 1), {1, 0, 1}));
  EXPECT_TRUE(near(colorFromHSB(0.3, 0, 0.5), {0.5, 0.5, 0.5}));
}

}  // namespace
}  // namespace tidewrack
