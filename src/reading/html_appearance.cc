// Finds out whether a message was made for a light or a dark page. The rules are regular expressions, which
// stand beside each function; the code gives their first match and first capture in one pass, on any input.

#include <charconv>
#include <cmath>

#include "platform/unicode.h"
#include "reading/caseless.h"
#include "reading/html_document.h"

namespace tidewrack {
namespace {

constexpr std::string_view quotes = "\"'";

bool isQuote(char byte) {
  return byte == '"' || byte == '\'';
}

// `\s*=\s*["']` at `position`: the position behind the quote, or notFound.
std::size_t skipEqualsAndQuote(std::string_view text, std::size_t position) {
  position = skipSpaces(text, position);
  if (position >= text.size() || text[position] != '=') {
    return notFound;
  }
  position = skipSpaces(text, position + 1);
  return position < text.size() && isQuote(text[position]) ? position + 1 : notFound;
}

// Where the first `name\s*=\s*["']color-scheme["']` ends that lies in `region` behind `from`.
std::size_t endOfNameAttribute(std::string_view region, std::size_t from) {
  for (auto name = findWord(region, "name", from); name; name = findWord(region, "name", name.begin + 1)) {
    const auto value = skipEqualsAndQuote(region, name.end);
    const auto end = value == notFound ? notFound : endOfWord(region, value, "color-scheme");
    if (end != notFound && end < region.size() && isQuote(region[end])) {
      return end + 1;
    }
  }
  return notFound;
}

// `<meta\s+[^>]*name\s*=\s*["']color-scheme["'][^>]*content\s*=\s*["']([^"']+)["']`
//
// All up to the last opening quote lies before the first ">" behind the tag's name. Being greedy, the
// second `[^>]*` reaches for the last `content` there whose value is not empty and has an end; any `name`
// attribute before it will do. What fails for one "<meta" fails for all that follow it before the same ">".
std::optional<std::string_view> metaColorScheme(std::string_view html) {
  const auto lastQuote = html.find_last_of(quotes);
  if (lastQuote == notFound) {
    return std::nullopt;
  }
  auto tag = findTag(html, "<meta", 0);
  while (tag) {
    const auto attributes = skipSpaces(html, tag.end);
    if (attributes == tag.end) {
      tag = findTag(html, "<meta", tag.end);
      continue;
    }
    const auto regionEnd = std::min(html.find('>', attributes), html.size());
    const auto region = html.substr(0, regionEnd);
    const auto nameEnd = endOfNameAttribute(region, attributes);
    std::optional<std::size_t> value;
    if (nameEnd != notFound) {
      for (auto content = findWord(region, "content", nameEnd); content;
           content = findWord(region, "content", content.end)) {
        const auto begin = skipEqualsAndQuote(region, content.end);
        if (begin != notFound && begin < lastQuote && !isQuote(html[begin])) {
          value = begin;
        }
      }
    }
    if (value) {
      return html.substr(*value, html.find_first_of(quotes, *value) - *value);
    }
    tag = findTag(html, "<meta", regionEnd);
  }
  return std::nullopt;
}

// `color-scheme\s*:\s*([^;"'>}]+)`; the hyphen is the rarest of its characters.
std::optional<std::string_view> styleColorScheme(std::string_view html) {
  constexpr std::string_view before = "color";
  for (auto hyphen = html.find('-'); hyphen != notFound; hyphen = html.find('-', hyphen + 1)) {
    if (hyphen < before.size() || endOfWord(html, hyphen - before.size(), before) != hyphen) {
      continue;
    }
    auto end = endOfWord(html, hyphen + 1, "scheme");
    if (end == notFound) {
      continue;
    }
    end = skipSpaces(html, end);
    if (end >= html.size() || html[end] != ':') {
      continue;
    }
    const auto value = end + 1;
    const auto valueEnd = std::min(html.find_first_of(";\"'>}", value), html.size());
    if (valueEnd > value) {  // White space alone is a value as well: `\s*` gives it back.
      return html.substr(value, valueEnd - value);
    }
  }
  return std::nullopt;
}

std::optional<HTMLAppearance> appearanceNamedIn(std::string_view value) {
  const std::string lower = lowercase(value);
  const auto dark = lower.find("dark");
  const auto light = lower.find("light");
  if (dark == light) {  // Neither is there.
    return std::nullopt;
  }
  return dark < light ? HTMLAppearance::dark : HTMLAppearance::light;
}

// NAME`\s*=\s*["']([^"']+)["']`
std::optional<std::string_view> attributeValue(std::string_view tag, std::string_view name) {
  for (auto place = findWord(tag, name, 0); place; place = findWord(tag, name, place.begin + 1)) {
    const auto value = skipEqualsAndQuote(tag, place.end);
    if (value == notFound) {
      continue;
    }
    const auto end = tag.find_first_of(quotes, value);
    if (end == notFound) {
      return std::nullopt;  // No later value has an end either.
    }
    if (end > value) {
      return tag.substr(value, end - value);
    }
  }
  return std::nullopt;
}

// `(?:^|;)\s*`NAME`\s*:\s*([^;]+)`, trimmed
std::optional<std::string_view> propertyValue(std::string_view style, std::string_view name) {
  for (std::size_t start = 0; start != notFound;) {
    auto end = endOfWord(style, skipSpaces(style, start), name);
    if (end != notFound) {
      end = skipSpaces(style, end);
    }
    if (end != notFound && end < style.size() && style[end] == ':') {
      const auto value = style.substr(end + 1, style.find(';', end + 1) - (end + 1));
      if (!value.empty()) {
        return trimWhitespaceAndNewlines(value);
      }
    }
    const auto semicolon = style.find(';', start);
    start = semicolon == notFound ? notFound : semicolon + 1;
  }
  return std::nullopt;
}

double weightedSum(double red, double green, double blue) {
  return 0.299 * red + 0.587 * green + 0.114 * blue;
}

int hexDigit(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  return digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

// Two characters as a hexadecimal number out of 255; 0 when they are none.
double channel(std::string_view first, std::string_view second) {
  const int high = first.size() == 1 ? hexDigit(first.front()) : -1;
  const int low = second.size() == 1 ? hexDigit(second.front()) : -1;
  return high < 0 || low < 0 ? 0.0 : (high * 16 + low) / 255.0;
}

std::optional<double> hexLuminance(std::string_view digits) {
  constexpr std::size_t longest = 8;
  std::string_view characters[longest];
  std::size_t count = 0;
  while (!digits.empty()) {
    if (count == longest) {
      return std::nullopt;
    }
    characters[count] = graphemePrefix(digits, 1);
    digits.remove_prefix(characters[count].size());
    ++count;
  }
  const auto* c = characters;
  if (count == 3 || count == 4) {
    return weightedSum(channel(c[0], c[0]), channel(c[1], c[1]), channel(c[2], c[2]));
  }
  if (count == 6 || count == 8) {
    return weightedSum(channel(c[0], c[1]), channel(c[2], c[3]), channel(c[4], c[5]));
  }
  return std::nullopt;
}

// A sign, digits and a fraction; no exponent, no percent sign.
std::optional<double> plainDecimal(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) {
      return std::nullopt;
    }
  }
  if (text.find_first_not_of("-.0123456789") != notFound) {
    return std::nullopt;
  }
  double number = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::string_view trimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  return first == notFound ? std::string_view()
                           : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::optional<double> functionLuminance(std::string_view value) {
  const auto open = value.find('(');
  const auto close = open == notFound ? notFound : value.find(')', open);
  if (close == notFound) {
    return std::nullopt;
  }
  double channels[3];
  std::size_t count = 0;
  for (auto rest = value.substr(open + 1, close - open - 1); count < 3 && !rest.empty();) {
    const auto comma = std::min(rest.find(','), rest.size());
    if (comma > 0) {
      const auto number = plainDecimal(trimBlanks(rest.substr(0, comma)));
      if (!number) {
        return std::nullopt;
      }
      channels[count++] = *number;
    }
    rest.remove_prefix(std::min(comma + 1, rest.size()));
  }
  return count < 3 ? std::nullopt : std::optional(weightedSum(channels[0], channels[1], channels[2]) / 255.0);
}

}  // namespace

std::optional<HTMLAppearance> appearanceHint(std::string_view html) {
  if (const auto declared = declaredColorScheme(html)) {
    return declared;
  }
  constexpr double lightFrom = 0.4;
  const auto background = bodyBackgroundValue(html);
  const auto luminance = background ? colorLuminance(*background) : std::nullopt;
  if (!luminance) {
    return std::nullopt;
  }
  return *luminance < lightFrom ? HTMLAppearance::dark : HTMLAppearance::light;
}

std::optional<HTMLAppearance> declaredColorScheme(std::string_view html) {
  if (const auto value = metaColorScheme(html)) {
    return appearanceNamedIn(*value);
  }
  const auto value = styleColorScheme(html);
  return value ? appearanceNamedIn(*value) : std::nullopt;
}

std::optional<std::string> bodyBackgroundValue(std::string_view html) {
  const auto body = findTag(html, "<body", 0);
  const auto end = body ? html.find('>', body.end) : notFound;
  if (end == notFound) {
    return std::nullopt;
  }
  const auto tag = html.substr(body.begin, end + 1 - body.begin);
  auto value = attributeValue(tag, "bgcolor");
  if (!value) {
    const auto style = attributeValue(tag, "style");
    value = style ? propertyValue(*style, "background-color") : std::nullopt;
    if (style && !value) {
      value = propertyValue(*style, "background");
    }
  }
  return value ? std::optional(std::string(*value)) : std::nullopt;
}

std::optional<double> colorLuminance(std::string_view value) {
  const std::string color = lowercase(trimWhitespaceAndNewlines(value));
  if (color.empty() || color == "transparent" || color == "none" || color == "inherit") {
    return std::nullopt;
  }
  if (color.starts_with('#')) {
    return hexLuminance(std::string_view(color).substr(1));
  }
  if (color.starts_with("rgb")) {
    return functionLuminance(color);
  }
  if (color == "black") {
    return 0.0;
  }
  return color == "white" ? std::optional(1.0) : std::nullopt;
}

}  // namespace tidewrack
