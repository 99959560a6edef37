#include "platform/byte_count.h"

#include <array>

#include <unicode/locid.h>
#include <unicode/numberformatter.h>

#include "platform/localized.h"

namespace tidewrack {

namespace {

struct Unit {
  std::uint64_t size;
  int decimals;
  const char* key;
  const char* format;
};

constexpr std::array units = {
    Unit{1'000, 0, "byte_count_kilobytes", "%@ KB"},
    Unit{1'000'000, 1, "byte_count_megabytes", "%@ MB"},
    Unit{1'000'000'000, 2, "byte_count_gigabytes", "%@ GB"},
    Unit{1'000'000'000'000, 2, "byte_count_terabytes", "%@ TB"},
    Unit{1'000'000'000'000'000, 2, "byte_count_petabytes", "%@ PB"},
};

std::string formatNumber(double number, int decimals) {
  UErrorCode status = U_ZERO_ERROR;
  std::string text;
  icu::number::NumberFormatter::withLocale(icu::Locale::getDefault())
      .precision(icu::number::Precision::maxFraction(decimals))
      .roundingMode(UNUM_ROUND_HALFUP)
      .formatDouble(number, status)
      .toString(status)
      .toUTF8String(text);
  return U_SUCCESS(status) ? text : std::to_string(static_cast<std::uint64_t>(number));
}

// Whether the number would be written as 1,000 of this unit or more.
bool overflows(std::uint64_t bytes, const Unit& unit) {
  double half = 0.5;
  for (int i = 0; i < unit.decimals; ++i) {
    half /= 10;
  }
  return static_cast<double>(bytes) / static_cast<double>(unit.size) >= 1'000 - half;
}

}  // namespace

std::string formatByteCount(std::uint64_t bytes) {
  if (bytes == 0) {
    return localized("byte_count_zero", "Zero KB", "Size of an empty file");
  }
  if (bytes == 1) {
    return localized("byte_count_one", "1 byte", "Size of a file");
  }
  if (bytes < units[0].size) {
    return formatText(localized("byte_count_bytes", "%@ bytes", "Size of a file"),
                      {formatNumber(static_cast<double>(bytes), 0)});
  }
  std::size_t at = 0;
  while (at + 1 < units.size() && overflows(bytes, units[at])) {
    ++at;
  }
  const Unit& unit = units[at];
  return formatText(
      localized(unit.key, unit.format, "Size of a file"),
      {formatNumber(static_cast<double>(bytes) / static_cast<double>(unit.size), unit.decimals)});
}

}  // namespace tidewrack
