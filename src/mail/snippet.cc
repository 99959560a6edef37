// The one-line preview of a message (declared in mail/headers.h).

#include "mail/headers.h"
#include "mail/html_text.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

// A beginning of a text whose white space is collapsed.
using Beginning = HTMLTextExtractor::Beginning;

Beginning plainBeginning(std::string_view text, std::size_t size) {
  Beginning beginning{collapseWhitespace(text, size), false};
  beginning.isWhole = beginning.text.size() < size;
  return beginning;
}

Beginning htmlBeginning(std::string_view html, std::size_t size) {
  return HTMLTextExtractor::extractBeginning(html, size);
}

}  // namespace

std::string makeSnippet(std::optional<std::string_view> plainBody, std::optional<std::string_view> htmlBody) {
  const bool isPlain = plainBody && !plainBody->empty();
  if (!isPlain && (!htmlBody || htmlBody->empty())) {
    return {};
  }
  // Bodies are long and snippets short: read a beginning, and a longer one if its characters turn out to be
  // so large that it does not reach. Two characters more than needed make sure that the cut is not the effect
  // of where the beginning ends, as the last one may be incomplete and the last but one a blank at the end.
  for (std::size_t size = longestSnippet + 16;; size *= 4) {
    const Beginning beginning = isPlain ? plainBeginning(*plainBody, size) : htmlBeginning(*htmlBody, size);
    const std::string_view text = beginning.text;
    const std::string_view known = graphemePrefix(text, longestSnippet + 2);
    if (!beginning.isWhole && (known.size() == text.size())) {
      continue;
    }
    const std::string_view kept = graphemePrefix(known, longestSnippet);
    if (kept.size() == text.size()) {
      return beginning.text;
    }
    return std::string(kept) + "…";
  }
}

}  // namespace tidewrack
