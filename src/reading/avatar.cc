#include "reading/avatar.h"

#include <cmath>
#include <cstdint>

#include "platform/digest.h"
#include "platform/unicode.h"

namespace tidewrack {

std::string avatarHash(std::string_view address) {
  const std::string key = lowercase(trimWhitespaceAndNewlines(address));
  return key.empty() ? std::string() : sha256Hex(key);
}

std::string initials(const std::optional<Text>& name, std::string_view address) {
  if (!name) {
    return uppercase(graphemePrefix(address, 2));
  }
  // The first two words between blanks.
  std::string_view words[2];
  std::size_t count = 0;
  for (std::string_view rest = name->view(); count < 2;) {
    const auto begin = rest.find_first_not_of(' ');
    if (begin == std::string_view::npos) {
      break;
    }
    rest.remove_prefix(begin);
    const auto end = std::min(rest.find(' '), rest.size());
    words[count++] = rest.substr(0, end);
    rest.remove_prefix(end);
  }
  if (count < 2) {
    return uppercase(graphemePrefix(name->view(), 2));
  }
  std::string letters(graphemePrefix(words[0], 1));
  letters += graphemePrefix(words[1], 1);
  return uppercase(letters);
}

double avatarHue(std::string_view address) {
  std::uint64_t value = 5381;
  for (const char byte : address) {
    value = value * 33 + static_cast<std::uint8_t>(byte);
  }
  return static_cast<double>(value % 360) / 360.0;
}

RGBColor colorFromHSB(double hue, double saturation, double brightness) {
  const double sector = hue * 6.0;
  const double whole = std::floor(sector);
  const double fraction = sector - whole;
  const double low = brightness * (1.0 - saturation);
  const double falling = brightness * (1.0 - saturation * fraction);
  const double rising = brightness * (1.0 - saturation * (1.0 - fraction));
  switch (static_cast<int>(whole) % 6) {
    case 0:
      return {brightness, rising, low};
    case 1:
      return {falling, brightness, low};
    case 2:
      return {low, brightness, rising};
    case 3:
      return {low, falling, brightness};
    case 4:
      return {rising, low, brightness};
    default:
      return {brightness, low, falling};
  }
}

RGBColor avatarColor(std::string_view text) {
  return colorFromHSB(avatarHue(text), 0.6, 0.8);
}

}  // namespace tidewrack
