#include "mail/html_text.h"

#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/regex.h>

#include "platform/unicode.h"
#include "test_sizes.h"

namespace tidewrack {
namespace {

std::string extractText(std::string_view html) {
  return HTMLTextExtractor::extractText(html);
}

TEST(HTMLText, EmptyTextGivesAnEmptyText) {
  EXPECT_EQ(extractText(""), "");
  EXPECT_EQ(extractText(" \n<p></p>&nbsp;"), "");
}

TEST(HTMLText, ScriptBlockSpanningSeveralLinesGoesAsAWholeInEitherCase) {
  EXPECT_EQ(extractText("a<script type=x>\nvar b = '<p>';\n</script>c"), "a c");
  EXPECT_EQ(extractText("a<SCRIPT>\nvar b;\n</Script>c"), "a c");
  EXPECT_EQ(extractText("a<style>p { }\n</STYLE>c"), "a c");
  EXPECT_EQ(extractText("a<scripts>b</script>c"), "a c");
}

TEST(HTMLText, ScriptTagWithoutAClosingTagKeepsItsCodeAsText) {
  EXPECT_EQ(extractText("a<script>var b;</p>c"), "a var b; c");
  EXPECT_EQ(extractText("a<style>p</styl>c"), "a p c");
  EXPECT_EQ(extractText("a<script"), "a<script");
}

TEST(HTMLText, TwoWordsDividedByALineBreakTagStayTwoWords) {
  EXPECT_EQ(extractText("one<br>two"), "one two");
  EXPECT_EQ(extractText("one<br/>\n<br />two"), "one two");
}

TEST(HTMLText, LessThanSignFollowedLaterByAGreaterThanSignTakesTheTextBetween) {
  EXPECT_EQ(extractText("1 < 2 and 3 > 2"), "1 2");
  EXPECT_EQ(extractText("1 < 2"), "1 < 2");
  EXPECT_EQ(extractText("1 <> 2"), "1 <> 2");
  EXPECT_EQ(extractText("2 > 1"), "2 > 1");
}

TEST(HTMLText, CommentsGoAsTagsWhenTheyHoldNoGreaterThanSign) {
  EXPECT_EQ(extractText("a<!-- note -->b"), "a b");
  EXPECT_EQ(extractText("a<!-- <b>x</b> -->c"), "a x -->c");
}

TEST(HTMLText, FourEntitiesAreDecodedAfterTheTags) {
  EXPECT_EQ(extractText("a&nbsp;b &lt;b&gt; &amp; c"), "a b <b> & c");
  EXPECT_EQ(extractText("&quot;&#39;&copy;&AMP;"), "&quot;&#39;&copy;&AMP;");
  EXPECT_EQ(extractText("&amp;lt; &amp;gt; &amp;nbsp; &amp;amp; &amp;amp;lt;"), "< > &nbsp; &amp; &amp;lt;");
  EXPECT_EQ(extractText("&am<b>p;"), "&am p;");
}

TEST(HTMLText, StylesAreSoughtInTheTextWithoutScripts) {
  EXPECT_EQ(extractText("a<style><script>></style></script>b</style>c"), "a c");
  EXPECT_EQ(extractText("a<style <script>></script>>b</style>c"), "a c");
  EXPECT_EQ(extractText("a<<script>></script>>b"), "a b");
  EXPECT_EQ(extractText("a<style><script></style>b"), "a b");
  EXPECT_EQ(extractText("a<style><script>b</script>c<script>d"), "a c d");
}

TEST(HTMLText, CaseFoldingKnowsTheLongS) {
  EXPECT_EQ(extractText("a<\u017Fcript>b</\u017FCRIPT>c"), "a c");
  EXPECT_EQ(extractText("a<\uFB05yle>b</\uFB06yle>c"), "a c");
}

// The definition as it is written, by regular expressions.
std::string extractedByRegex(const std::string& html) {
  UErrorCode status = U_ZERO_ERROR;
  auto text = icu::UnicodeString::fromUTF8(html);
  const auto replace = [&](const icu::RegexPattern& pattern) {
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern.matcher(text, status));
    text = matcher->replaceAll(" ", status);
  };
  const auto compile = [&](const char* pattern, std::uint32_t flags) {
    UParseError error;
    return std::unique_ptr<icu::RegexPattern>(icu::RegexPattern::compile(pattern, flags, error, status));
  };
  static const auto script = compile("<script[^>]*>[\\s\\S]*?</script>", UREGEX_CASE_INSENSITIVE);
  static const auto style = compile("<style[^>]*>[\\s\\S]*?</style>", UREGEX_CASE_INSENSITIVE);
  static const auto tag = compile("<[^>]+>", 0);
  static const auto spaces = compile("\\s+", 0);
  replace(*script);
  replace(*style);
  replace(*tag);
  text.findAndReplace("&nbsp;", " ");
  text.findAndReplace("&amp;", "&");
  text.findAndReplace("&lt;", "<");
  text.findAndReplace("&gt;", ">");
  replace(*spaces);
  std::string result;
  text.toUTF8String(result);
  return std::string(trimWhitespaceAndNewlines(result));
}

const std::vector<std::string>& pieces() {
  static const std::vector<std::string> list = {"<",
                                                ">",
                                                "/",
                                                "<script",
                                                "<SCRIPT>",
                                                "</script>",
                                                "<style",
                                                "<Style>",
                                                "</style>",
                                                "</STYLE",
                                                "<p>",
                                                "</p>",
                                                "&amp;",
                                                "&nbsp;",
                                                "lt;",
                                                "&lt;",
                                                "&gt;",
                                                "gt;",
                                                "&",
                                                "nbsp;",
                                                "amp;",
                                                " ",
                                                "\n",
                                                "\u00A0",
                                                "\u3000",
                                                "text",
                                                "\u00E9",
                                                "\u3042",
                                                "s",
                                                "\u017F",
                                                "cript>",
                                                "\uFB06yle>",
                                                "<\u017Fcript>",
                                                "</\u017Fcript>",
                                                "\U0001F600",
                                                "\u2028"};
  return list;
}

std::string randomHTML(std::mt19937& random) {
  std::string html;
  const std::size_t count = random() % 24;
  for (std::size_t index = 0; index < count; ++index) {
    html += pieces()[random() % pieces().size()];
  }
  return html;
}

TEST(HTMLText, EveryTextGivesWhatTheChainOfReplacementsGives) {
  std::mt19937 random(13);
  for (int round = 0; round < randomRounds; ++round) {
    const std::string html = randomHTML(random);
    ASSERT_EQ(extractText(html), extractedByRegex(html)) << html;
  }
}

TEST(HTMLText, BeginningIsABeginningOfTheWhole) {
  std::mt19937 random(17);
  for (int round = 0; round < randomRounds; ++round) {
    const std::string html = randomHTML(random);
    const std::string whole = extractText(html);
    const std::size_t size = random() % 24;
    const auto beginning = HTMLTextExtractor::extractBeginning(html, size);
    ASSERT_TRUE(whole.starts_with(beginning.text)) << html;
    ASSERT_TRUE(isValidUTF8(beginning.text)) << html;
    ASSERT_TRUE(beginning.text.size() >= size || beginning.text == whole) << html;
    ASSERT_TRUE(!beginning.isWhole || beginning.text == whole) << html;
    ASSERT_LE(beginning.text.size(), size + 5) << html;
  }
}

TEST(HTMLText, HostileTextsOfAnyLengthAreReadInLinearTime) {
  for (const auto* piece : {"<script",
                            "<script>",
                            "<",
                            "<style",
                            "<style>",
                            "<style><script>",
                            "<>",
                            "&",
                            "&amp;",
                            "</script>",
                            "<script></script>",
                            "<style></style>",
                            "<<script></script>",
                            "<style <script></script>",
                            "<p",
                            ">",
                            "<\n",
                            "&lt;script&gt;",
                            "\u017F",
                            "<a<style>"}) {
    std::string html;
    while (html.size() < hostileSize) {
      html += piece;
    }
    EXPECT_LE(extractText(html).size(), html.size()) << piece;
    EXPECT_LE(HTMLTextExtractor::extractBeginning(html, 1000).text.size(), 1003U) << piece;
  }
}

}  // namespace
}  // namespace tidewrack
