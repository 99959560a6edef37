#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/regex.h>

#include "platform/unicode.h"
#include "reading/html_document.h"

namespace tidewrack {
namespace {

constexpr auto light = HTMLAppearance::light;
constexpr auto dark = HTMLAppearance::dark;

std::optional<HTMLAppearance> hintOf(const std::string& html) {
  return appearanceHint(html);
}

std::string metaTag(const std::string& content) {
  return R"(<html><head><meta name="color-scheme" content=")" + content + R"("></head></html>)";
}

TEST(DeclaredColorScheme, LightDarkIsLightAndOnlyDarkIsDark) {
  EXPECT_EQ(declaredColorScheme(metaTag("light dark")), light);
  EXPECT_EQ(declaredColorScheme(metaTag("dark light")), dark);
  EXPECT_EQ(declaredColorScheme(metaTag("only dark")), dark);
  EXPECT_EQ(declaredColorScheme(metaTag("ONLY LIGHT")), light);
}

TEST(DeclaredColorScheme, AMetaTagThatNamesNeitherIsFinalAndTheStyleIsNotTried) {
  EXPECT_EQ(declaredColorScheme(metaTag("normal") + "<style>:root { color-scheme: dark; }</style>"),
            std::nullopt);
}

TEST(DeclaredColorScheme, WithoutAMetaTagTheFirstStyleCounts) {
  EXPECT_EQ(declaredColorScheme("<style>:root { color-scheme: dark light; }</style>"), dark);
  EXPECT_EQ(declaredColorScheme("I like color-scheme : light, she does not"), light);
  EXPECT_EQ(declaredColorScheme("<p>nothing of that kind</p>"), std::nullopt);
}

TEST(DeclaredColorScheme, AttributesMayStandBetweenAndTheOrderIsNameBeforeContent) {
  EXPECT_EQ(declaredColorScheme("<META id=1 NAME = 'Color-Scheme' x CONTENT = 'dark'>"), dark);
  EXPECT_EQ(declaredColorScheme("<meta content='dark' name='color-scheme'>"), std::nullopt);
  EXPECT_EQ(declaredColorScheme("<meta name='color-scheme'><meta content='dark'>"), std::nullopt);
}

TEST(DeclaredColorScheme, OfTwoContentsTheLastOneWithAValueCounts) {
  EXPECT_EQ(declaredColorScheme("<meta name='color-scheme' content='dark' content='light'>"), light);
  EXPECT_EQ(declaredColorScheme("<meta name='color-scheme' content='dark' content=''>"), dark);
}

TEST(DeclaredColorScheme, OfOneStyleValueTheFirstWordWins) {
  EXPECT_EQ(declaredColorScheme("a{color-scheme:;} b{color-scheme:   } c{color-scheme: dark}"), std::nullopt);
  EXPECT_EQ(declaredColorScheme("a{color-scheme:;} c{color-scheme: dark}"), dark);
}

TEST(BodyBackground, AttributeAndStylesOfTheBodyTagAreFound) {
  EXPECT_EQ(bodyBackgroundValue("<body bgcolor=\"#000\">"), "#000");
  EXPECT_EQ(bodyBackgroundValue("<BODY style='COLOR: red; Background-Color : #808080 '>"), "#808080");
  EXPECT_EQ(bodyBackgroundValue("<body style='background: blue; background-color: red'>"), "red");
  EXPECT_EQ(bodyBackgroundValue("<body style='background: blue'>"), "blue");
  EXPECT_EQ(bodyBackgroundValue("<body data-bgcolor='#123' bgcolor='#456'>"), "#123");
}

TEST(BodyBackground, WithoutQuotesOrATagThereIsNone) {
  EXPECT_EQ(bodyBackgroundValue("<body bgcolor=#000000>"), std::nullopt);
  EXPECT_EQ(bodyBackgroundValue("<body bgcolor='#000'"), std::nullopt);
  EXPECT_EQ(bodyBackgroundValue("<p>"), std::nullopt);
  EXPECT_EQ(bodyBackgroundValue("<body><div bgcolor='#000'>"), std::nullopt);
  EXPECT_EQ(bodyBackgroundValue("<body style='x-background: red'>"), std::nullopt);
}

TEST(AppearanceHint, ABodyWithBgcolorBlackHasLuminanceZeroAndIsDark) {
  EXPECT_EQ(colorLuminance("#000"), 0.0);
  EXPECT_EQ(hintOf("<body bgcolor=\"#000\">"), dark);
}

TEST(AppearanceHint, AStyleOfMediumGrayIsLight) {
  EXPECT_NEAR(colorLuminance("#808080").value(), 0.50196, 0.00001);
  EXPECT_EQ(hintOf("<body style=\"background-color: #808080\">"), light);
}

TEST(AppearanceHint, ALuminanceOfExactlyFourTenthsIsLight) {
  // 0.4 × 255 = 102 = 0x66.
  EXPECT_EQ(hintOf("<body bgcolor='#666666'>"), light);
  EXPECT_EQ(hintOf("<body bgcolor='#656565'>"), dark);
}

TEST(AppearanceHint, AShorthandBackgroundWithAPictureGivesNone) {
  EXPECT_EQ(bodyBackgroundValue("<body style=\"background: #fff url(x.png)\">"), "#fff url(x.png)");
  EXPECT_EQ(hintOf("<body style=\"background: #fff url(x.png)\">"), std::nullopt);
}

TEST(AppearanceHint, RgbNumbersCountAndPercentagesDoNot) {
  EXPECT_NEAR(colorLuminance("rgb(10, 20, 30)").value(), (2.99 + 11.74 + 3.42) / 255.0, 1e-12);
  EXPECT_EQ(hintOf("<body style=\"background-color: rgb(10, 20, 30)\">"), dark);
  EXPECT_EQ(hintOf("<body style=\"background-color: rgb(10%, 20%, 30%)\">"), std::nullopt);
}

TEST(AppearanceHint, FiveHexadecimalCharactersGiveNone) {
  EXPECT_EQ(colorLuminance("#12345"), std::nullopt);
  EXPECT_EQ(hintOf("<body bgcolor='#12345'>"), std::nullopt);
}

TEST(AppearanceHint, ADeclaredSchemeComesBeforeTheBackground) {
  EXPECT_EQ(hintOf("<style>a{color-scheme:light}</style><body bgcolor='#000'>"), light);
  EXPECT_EQ(hintOf("<meta name='color-scheme' content='normal'><body bgcolor='#000'>"), dark);
}

TEST(ColorLuminance, ReadsShortAndLongHexadecimalFormsAndIgnoresAlpha) {
  EXPECT_DOUBLE_EQ(colorLuminance("#abc").value(), colorLuminance("#aabbcc").value());
  EXPECT_EQ(colorLuminance("#ABCD"), colorLuminance("#abc"));
  EXPECT_EQ(colorLuminance("#11223344"), colorLuminance("#112233"));
  EXPECT_DOUBLE_EQ(colorLuminance("#ffffff").value(), 1.0);
  EXPECT_EQ(colorLuminance("#"), std::nullopt);
  EXPECT_EQ(colorLuminance("#123456789"), std::nullopt);
}

TEST(ColorLuminance, APairThatIsNoNumberCountsAsZero) {
  EXPECT_DOUBLE_EQ(colorLuminance("#zz00ff").value(), 0.114);
  EXPECT_DOUBLE_EQ(colorLuminance("#xff").value(), 0.587 + 0.114);
  EXPECT_DOUBLE_EQ(colorLuminance("#ééé").value(), 0.0);
}

TEST(ColorLuminance, NamesAreBlackAndWhiteOnly) {
  EXPECT_EQ(colorLuminance(" Black \n"), 0.0);
  EXPECT_EQ(colorLuminance("WHITE"), 1.0);
  for (const auto* value : {"", "  ", "transparent", "none", "inherit", "red", "#fff !important"}) {
    EXPECT_EQ(colorLuminance(value), std::nullopt) << value;
  }
}

TEST(ColorLuminance, FunctionsTakeTheFirstThreeNumbersBetweenTheParentheses) {
  EXPECT_DOUBLE_EQ(colorLuminance("rgba(255, 255, 255, 0.1)").value(), 1.0);
  EXPECT_DOUBLE_EQ(colorLuminance("RGB(,255,,0 , 0,x)").value(), 0.299);
  EXPECT_DOUBLE_EQ(colorLuminance("rgb(.5,1.,+2)").value(), (0.299 * 0.5 + 0.587 + 0.114 * 2) / 255.0);
  for (const auto* value : {"rgb(1,2)", "rgb(1 2 3)", "rgb(1,2,3", "rgb", "rgb(1,2,1e2)", "rgb(1,nan,3)",
                            "rgb(1,inf,3)", "rgb(1, ,3)", "rgb(0x1,2,3)", "rgb(+-1,2,3)"}) {
    EXPECT_EQ(colorLuminance(value), std::nullopt) << value;
  }
}

// The rules as ICU reads them.
class Expression {
 public:
  explicit Expression(const std::string& pattern) {
    UErrorCode error = U_ZERO_ERROR;
    pattern_.reset(
        icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(pattern), UREGEX_CASE_INSENSITIVE, error));
    EXPECT_TRUE(U_SUCCESS(error)) << pattern;
  }

  std::optional<std::string> firstCapture(const std::string& text) const {
    UErrorCode error = U_ZERO_ERROR;
    const auto unicode = icu::UnicodeString::fromUTF8(text);
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern_->matcher(unicode, error));
    if (!matcher->find(error)) {
      return std::nullopt;
    }
    std::string capture;
    matcher->group(1, error).toUTF8String(capture);
    return capture;
  }

 private:
  std::unique_ptr<icu::RegexPattern> pattern_;
};

std::optional<HTMLAppearance> decide(const std::string& value) {
  const auto lower = lowercase(value);
  const auto d = lower.find("dark");
  const auto l = lower.find("light");
  if (d == l) {
    return std::nullopt;
  }
  return d < l ? dark : light;
}

std::optional<HTMLAppearance> expectedColorScheme(const std::string& html) {
  static const Expression meta(
      R"(<meta\s+[^>]*name\s*=\s*["']color-scheme["'][^>]*content\s*=\s*["']([^"']+)["'])");
  static const Expression style(R"(color-scheme\s*:\s*([^;"'>}]+))");
  if (const auto value = meta.firstCapture(html)) {
    return decide(*value);
  }
  const auto value = style.firstCapture(html);
  return value ? decide(*value) : std::nullopt;
}

std::optional<std::string> expectedAttribute(const std::string& tag, const std::string& name) {
  return Expression(name + R"(\s*=\s*["']([^"']+)["'])").firstCapture(tag);
}

std::optional<std::string> expectedProperty(const std::string& style, const std::string& name) {
  auto value = Expression(R"((?:^|;)\s*)" + name + R"(\s*:\s*([^;]+))").firstCapture(style);
  return value ? std::optional(std::string(trimWhitespaceAndNewlines(*value))) : std::nullopt;
}

std::optional<std::string> expectedBackground(const std::string& html) {
  const auto lower = lowercase(html);  // Of the same length for the words of this test.
  const auto begin = lower.find("<body");
  const auto end = begin == std::string::npos ? begin : html.find('>', begin);
  if (end == std::string::npos) {
    return std::nullopt;
  }
  const auto tag = html.substr(begin, end + 1 - begin);
  if (auto value = expectedAttribute(tag, "bgcolor")) {
    return value;
  }
  const auto style = expectedAttribute(tag, "style");
  if (!style) {
    return std::nullopt;
  }
  auto value = expectedProperty(*style, "background-color");
  return value ? value : expectedProperty(*style, "background");
}

std::string randomText(std::mt19937& random, const std::vector<std::string>& words, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += words[random() % words.size()];
  }
  return text;
}

TEST(DeclaredColorScheme, EqualsTheRegularExpressionsOnAnyText) {
  const std::vector<std::string> words = {"<meta ",
                                          "<META\u00a0",
                                          "<meta",
                                          " name",
                                          "NaMe",
                                          "=",
                                          "=\"",
                                          "='",
                                          "\"",
                                          "'",
                                          "\"color-scheme\"",
                                          "color-scheme",
                                          "COLOR-\u017Fcheme",
                                          " content",
                                          "CONTENT=\"",
                                          "content='dark'",
                                          " ",
                                          "\n",
                                          "\u3000",
                                          ">",
                                          "dark",
                                          "light",
                                          "LIGHT",
                                          ":",
                                          ": ",
                                          ";",
                                          "}",
                                          "x",
                                          "é",
                                          "name='color-scheme'",
                                          "-"};
  std::mt19937 random(1);
  int found = 0;
  for (int i = 0; i < 60'000; ++i) {
    auto text = randomText(random, words, 3 + random() % 20);
    if (i % 2 == 0) {
      text = "<meta " + randomText(random, words, random() % 3) + "name='color-scheme'" + text;
    }
    const auto expected = expectedColorScheme(text);
    found += expected ? 1 : 0;
    ASSERT_EQ(declaredColorScheme(text), expected) << text;
  }
  EXPECT_GT(found, 1'500);
}

TEST(BodyBackground, EqualsTheRegularExpressionsOnAnyText) {
  const std::vector<std::string> words = {"<body ",
                                          "bgcolor",
                                          "BGCOLOR=",
                                          "style",
                                          "\u017Ftyle=\"",
                                          "\uFB05yle='",
                                          "\uFB06YLE=\"",
                                          "style=\"",
                                          "=",
                                          "=\"",
                                          "\"",
                                          "'",
                                          " ",
                                          "\t",
                                          ";",
                                          ":",
                                          ": #fff",
                                          "background",
                                          "bac\u212Aground",
                                          "-color",
                                          "background-color:",
                                          "background:",
                                          "red",
                                          "x",
                                          "\u2003",
                                          ">"};
  std::mt19937 random(2);
  int found = 0;
  for (int i = 0; i < 15'000; ++i) {
    auto text = "<body " + randomText(random, words, 2 + random() % 14);
    text += random() % 8 != 0 ? "\">" : "";
    const auto expected = expectedBackground(text);
    found += expected ? 1 : 0;
    ASSERT_EQ(bodyBackgroundValue(text), expected) << text;
  }
  EXPECT_GT(found, 500);
}

// Each of these would take minutes if it cost the square of its size.
TEST(AppearanceHint, HostileBodiesTakeLinearTime) {
  const auto repeat = [](std::string_view part) {
    std::string text;
    while (text.size() < 400'000) {
      text += part;
    }
    return text;
  };
  for (const auto* part :
       {"<meta ", "<meta name='color-scheme' ", "<meta name=", "content=", "content='",
        "color-scheme:", "color-scheme ", "color-scheme:;", "-", "bgcolor='", "bgcolor=", "style=", "; ",
        ";background", "background:", "<body", "name='color-scheme' content='"}) {
    const auto text = repeat(part);
    EXPECT_NO_FATAL_FAILURE(appearanceHint(text));
    EXPECT_NO_FATAL_FAILURE(appearanceHint("<meta " + text));
    EXPECT_NO_FATAL_FAILURE(appearanceHint("<body " + text + ">"));
    EXPECT_NO_FATAL_FAILURE(appearanceHint("<body style=\"" + text + "\">"));
  }
}

}  // namespace
}  // namespace tidewrack
