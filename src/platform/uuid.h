#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tidewrack {

/// A 128-bit identifier (RFC 4122).
struct UUID {
  std::array<std::uint8_t, 16> bytes{};

  /// A fresh random identifier (RFC 4122, section 4.4). Safe from any thread.
  static UUID make();
  /// Reads the 36-character form in either case; nothing for any other text.
  static std::optional<UUID> parse(std::string_view text);
  /// 36 characters, upper-case hexadecimal, hyphenated.
  [[nodiscard]] std::string string() const;
  /// The same in lower case.
  [[nodiscard]] std::string lowerCaseString() const;

  friend bool operator==(const UUID&, const UUID&) = default;
  friend auto operator<=>(const UUID&, const UUID&) = default;
};

}  // namespace tidewrack

template <>
struct std::hash<tidewrack::UUID> {
  std::size_t operator()(const tidewrack::UUID& id) const noexcept;
};
