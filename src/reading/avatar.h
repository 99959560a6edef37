#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "mail/records.h"

/// What a sender's avatar is made of. Everything here is pure and safe from any thread.
namespace tidewrack {

/// SHA-256 of the trimmed, lower-cased address as 64 lower-case hexadecimal digits; empty for a blank one.
std::string avatarHash(std::string_view address);

/// One or two upper-cased characters: of the first two words of a name, or the first two characters of a
/// name of one word, or, without a name, of the address.
std::string initials(const std::optional<Text>& name, std::string_view address);

/// A hue from 0 up to 1, always the same for the same text (djb2 over its bytes).
double avatarHue(std::string_view address);

/// A colour in sRGB, each part from 0.0 to 1.0.
struct RGBColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  friend bool operator==(const RGBColor&, const RGBColor&) = default;
};
RGBColor colorFromHSB(double hue, double saturation, double brightness);
/// The colour of a text's avatar or label: hue avatarHue, saturation 0.6, brightness 0.8.
RGBColor avatarColor(std::string_view text);

/// Part of the avatar's width that the initials are high.
inline constexpr double avatarTextScale = 0.42;

}  // namespace tidewrack
