#include "reading/html_document.h"

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

constexpr auto light = HTMLAppearance::light;
constexpr auto dark = HTMLAppearance::dark;

// The whole block, written out once more as one text.
const std::string lightBlock =
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1.0, maximum-scale=3.0\">\n<style>\n"
    ":root { color-scheme: light; }\nhtml {\n    -webkit-text-size-adjust: 100%;\n    background: #ffffff;\n"
    "}\nbody {\n    margin: 0 !important;\n    padding: 0 !important;\n    max-width: 100vw !important;\n"
    "    overflow-x: hidden !important;\n    overflow-wrap: anywhere;\n    color: #1d1d1f;\n"
    "    background: #ffffff;\n}\n*, *::before, *::after {\n    box-sizing: border-box !important;\n}\n"
    "img, video, canvas, svg {\n    max-width: 100% !important;\n    height: auto !important;\n}\ntable {\n"
    "    max-width: 100% !important;\n    border-collapse: collapse;\n}\n"
    "table[width], td[width], th[width], div[style*=\"width\"], section[style*=\"width\"], "
    "article[style*=\"width\"] {\n    max-width: 100% !important;\n}\npre, code {\n"
    "    white-space: pre-wrap !important;\n    overflow-wrap: anywhere !important;\n}\n\n</style>";

bool contains(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

TEST(BuildDocument, AFragmentWithNoTagsIsWrappedInAWholeDocument) {
  EXPECT_EQ(buildDocument("Hello", light, false),
            "<!doctype html>\n<html>\n<head>" + lightBlock + "</head>\n<body>Hello</body>\n</html>");
}

TEST(BuildDocument, ABodyWithHeadInCapitalsGetsTheBlockAfterThatTag) {
  EXPECT_EQ(buildDocument("<HTML><HEAD id=1><title>x</title></HEAD>", light, false),
            "<HTML><HEAD id=1>" + lightBlock + "<title>x</title></HEAD>");
}

TEST(BuildDocument, AHeaderTagCountsAsAHead) {
  EXPECT_EQ(buildDocument("<header>x</header>", light, false), "<header>" + lightBlock + "x</header>");
}

TEST(BuildDocument, AnHTMLTagWithAttributesAndNoHeadIsShownUnstyled) {
  EXPECT_EQ(buildDocument("<html lang=\"en\"><body>x", light, false), "<html lang=\"en\"><body>x");
}

TEST(BuildDocument, AnHTMLTagInCapitalsIsRewritten) {
  EXPECT_EQ(buildDocument("<HTML><body>x", light, false), "<html><head>" + lightBlock + "</head><body>x");
  EXPECT_EQ(buildDocument("<html a><HTML>x<Html>", light, false),
            "<html a><html><head>" + lightBlock + "</head>x<html><head>" + lightBlock + "</head>");
}

TEST(BuildDocument, AHeadThatNeverEndsIsNone) {
  EXPECT_EQ(buildDocument("<html><head", light, false), "<html><head>" + lightBlock + "</head><head");
  EXPECT_TRUE(buildDocument("<head", light, false).starts_with("<!doctype html>"));
}

TEST(BuildDocument, InvertedAndDarkTheHTMLBackgroundIsDarkWithImportantAndTheBodyIsWhite) {
  const auto document = buildDocument("x", dark, true);
  EXPECT_TRUE(contains(document,
                       "html { background: #1c1c1e !important; }\n"
                       "body { filter: invert(1) hue-rotate(180deg); background: #ffffff "
                       "!important; }\nimg, picture, video, iframe, svg, canvas,\n"
                       "[style*=\"background-image\"], [background] {\n"
                       "    filter: invert(1) hue-rotate(180deg);\n}\n</style>"));
  EXPECT_TRUE(contains(document, ":root { color-scheme: dark; }"));
  EXPECT_TRUE(contains(document, "color: #e6e6e6;\n    background: #1c1c1e;"));
}

TEST(BuildDocument, WithoutInversionThereIsNoFilter) {
  EXPECT_FALSE(contains(buildDocument("x", dark, false), "filter"));
}

TEST(BuildDocument, MillionsOfHTMLTagsDoNotFillTheMemory) {
  std::string html;
  for (int i = 0; i < 1'500'000; ++i) {
    html += "<html>";
  }
  const auto document = buildDocument(html, light, false);
  EXPECT_LT(document.size(), html.size() + 10'000);
  EXPECT_TRUE(document.starts_with("<html><head><meta name=\"viewport\""));
}

TEST(HTMLAppearance, HasItsRawValues) {
  EXPECT_EQ(rawValue(light), "light");
  EXPECT_EQ(rawValue(dark), "dark");
}

}  // namespace
}  // namespace tidewrack
