#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace tidewrack {

/// The user text of a key in the language of the interface, or `defaultText` when that language has none.
/// `comment` is for translators and is read by the catalog tools only. Safe from any thread.
std::string localized(const char* key, const char* defaultText, const char* comment);

/// One value for a placeholder of a localised format.
using FormatValue = std::variant<long long, std::string>;

/// Fills a format whose placeholders are `%d` (integer) and `%@` (text), in order, or `%1$d`, `%2$@` by
/// position; `%%` is a percent sign. A placeholder without a value stays as it stands. Integers are written
/// in the digits of the current locale; in a language from right to left each text is isolated, so that it
/// keeps its own direction.
std::string formatText(std::string_view format, std::initializer_list<FormatValue> values);

}  // namespace tidewrack
