#include "reading/html_document.h"

#include "reading/caseless.h"

namespace tidewrack {
namespace {

// A text of nothing but "<html>" tags would grow two hundredfold. Past this many bytes of growth, only the
// first tag gets the head block; a browser ignores the others anyway.
constexpr std::size_t maximumGrowth = std::size_t{256} << 20U;

// The message's own style sheets come behind this block; what must hold against them is marked important.
std::string makeHeadBlock(HTMLAppearance appearance, bool invertContent) {
  const std::string text(textColor(appearance));
  const std::string background(backgroundColor(appearance));
  std::string inversion;
  if (invertContent) {
    // The filter makes the white body black, whichever the appearance; media are filtered back.
    inversion = "html { background: " + background +
                " !important; }\n"
                "body { filter: invert(1) hue-rotate(180deg); background: #ffffff !important; }\n"
                "img, picture, video, iframe, svg, canvas,\n"
                "[style*=\"background-image\"], [background] {\n"
                "    filter: invert(1) hue-rotate(180deg);\n"
                "}";
  }
  return "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1.0, maximum-scale=3.0\">\n"
         "<style>\n"
         ":root { color-scheme: " +
         std::string(rawValue(appearance)) +
         "; }\n"
         "html {\n"
         "    -webkit-text-size-adjust: 100%;\n"
         "    background: " +
         background +
         ";\n"
         "}\n"
         "body {\n"
         "    margin: 0 !important;\n"
         "    padding: 0 !important;\n"
         "    max-width: 100vw !important;\n"
         "    overflow-x: hidden !important;\n"
         "    overflow-wrap: anywhere;\n"
         "    color: " +
         text +
         ";\n"
         "    background: " +
         background +
         ";\n"
         "}\n"
         "*, *::before, *::after {\n"
         "    box-sizing: border-box !important;\n"
         "}\n"
         "img, video, canvas, svg {\n"
         "    max-width: 100% !important;\n"
         "    height: auto !important;\n"
         "}\n"
         "table {\n"
         "    max-width: 100% !important;\n"
         "    border-collapse: collapse;\n"
         "}\n"
         "table[width], td[width], th[width], div[style*=\"width\"], section[style*=\"width\"], "
         "article[style*=\"width\"] {\n"
         "    max-width: 100% !important;\n"
         "}\n"
         "pre, code {\n"
         "    white-space: pre-wrap !important;\n"
         "    overflow-wrap: anywhere !important;\n"
         "}\n" +
         inversion + "\n</style>";
}

// The position behind the first "<head…>"; the search is for its five characters, so a `header` will do.
std::size_t behindHeadTag(std::string_view html) {
  const auto head = findTag(html, "<head", 0);
  const auto end = head ? html.find('>', head.end) : notFound;
  return end == notFound ? notFound : end + 1;
}

// Every "<html>" without attributes gets a head. A tag with attributes stays, and the page has no style.
std::string withHeadInHTMLTags(std::string_view html, const std::string& headBlock) {
  const std::string replacement = "<html><head>" + headBlock + "</head>";
  std::size_t count = 0;
  for (auto tag = findTag(html, "<html>", 0); tag; tag = findTag(html, "<html>", tag.end)) {
    ++count;
  }
  if (count > maximumGrowth / replacement.size()) {
    count = 1;
  }
  std::string document;
  document.reserve(html.size() + count * replacement.size());
  std::size_t position = 0;
  for (; count > 0; --count) {
    const auto tag = findTag(html, "<html>", position);
    document += html.substr(position, tag.begin - position);
    document += replacement;
    position = tag.end;
  }
  document += html.substr(position);
  return document;
}

}  // namespace

std::string_view rawValue(HTMLAppearance appearance) {
  return appearance == HTMLAppearance::dark ? "dark" : "light";
}

std::string_view textColor(HTMLAppearance appearance) {
  return appearance == HTMLAppearance::dark ? "#e6e6e6" : "#1d1d1f";
}

std::string_view backgroundColor(HTMLAppearance appearance) {
  return appearance == HTMLAppearance::dark ? "#1c1c1e" : "#ffffff";
}

std::string buildDocument(std::string_view html, HTMLAppearance appearance, bool invertContent) {
  const std::string headBlock = makeHeadBlock(appearance, invertContent);
  if (const auto position = behindHeadTag(html); position != notFound) {
    std::string document;
    document.reserve(html.size() + headBlock.size());
    document += html.substr(0, position);
    document += headBlock;
    document += html.substr(position);
    return document;
  }
  if (findTag(html, "<html", 0)) {
    return withHeadInHTMLTags(html, headBlock);
  }
  std::string document;
  document.reserve(html.size() + headBlock.size() + 64);
  document += "<!doctype html>\n<html>\n<head>";
  document += headBlock;
  document += "</head>\n<body>";
  document += html;
  document += "</body>\n</html>";
  return document;
}

}  // namespace tidewrack
