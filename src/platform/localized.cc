#include "platform/localized.h"

#include <libintl.h>

#include "platform/app_language.h"
#include "platform/count_text.h"
#include "platform/resources.h"

namespace tidewrack {

namespace {

constexpr const char* textDomain = "tidewrack";

void bindDomain() {
  const auto folder = resourceFolder("locale", TIDEWRACK_LOCALE_FOLDER);
  bindtextdomain(textDomain, folder.c_str());
  bind_textdomain_codeset(textDomain, "UTF-8");
}

void appendValue(std::string& out, const FormatValue& value) {
  if (const auto* number = std::get_if<long long>(&value)) {
    out += formatCount(*number);
    return;
  }
  // Among letters that run the other way a name or an address keeps its own order (Unicode Annex 9,
  // isolates).
  const bool isIsolated = isInterfaceRightToLeft();
  out += isIsolated ? "\u2068" : "";
  out += std::get<std::string>(value);
  out += isIsolated ? "\u2069" : "";
}

// A placeholder at the start of `rest`: its length and, from `%1$@`, its position (0 without one).
struct Placeholder {
  std::size_t length = 0;
  std::size_t position = 0;
};

Placeholder placeholderAt(std::string_view rest) {
  Placeholder found;
  std::size_t at = 1;
  std::size_t number = 0;
  while (at < rest.size() && at < 4 && rest[at] >= '0' && rest[at] <= '9') {
    number = number * 10 + static_cast<std::size_t>(rest[at] - '0');
    ++at;
  }
  if (at > 1) {
    if (number == 0 || at >= rest.size() || rest[at] != '$') {
      return found;
    }
    found.position = number;
    ++at;
  }
  if (at < rest.size() && (rest[at] == 'd' || rest[at] == '@')) {
    found.length = at + 1;
  }
  return found;
}

}  // namespace

std::string localized(const char* key, const char* defaultText, const char* /*comment*/) {
  static const bool isBound = (bindDomain(), true);
  static_cast<void>(isBound);
  // The form in which gettext keeps a text with its context.
  std::string contextAndText(key);
  contextAndText += '\004';
  contextAndText += defaultText;
  const char* found = dgettext(textDomain, contextAndText.c_str());
  return found == contextAndText.c_str() ? std::string(defaultText) : std::string(found);
}

std::string formatText(std::string_view format, std::initializer_list<FormatValue> values) {
  std::string out;
  std::size_t next = 0;
  for (std::size_t at = 0; at < format.size();) {
    if (format[at] != '%') {
      out += format[at++];
      continue;
    }
    if (format.substr(at).starts_with("%%")) {
      out += '%';
      at += 2;
      continue;
    }
    const Placeholder placeholder = placeholderAt(format.substr(at));
    if (placeholder.length == 0) {
      out += format[at++];
      continue;
    }
    const std::size_t index = placeholder.position > 0 ? placeholder.position - 1 : next++;
    if (index < values.size()) {
      appendValue(out, values.begin()[index]);
    } else {
      out += format.substr(at, placeholder.length);
    }
    at += placeholder.length;
  }
  return out;
}

}  // namespace tidewrack
