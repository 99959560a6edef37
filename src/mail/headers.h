#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail/records.h"

/// Header blocks and the values in them. Nothing here fails: what is missing gives nothing, what cannot be
/// understood stays text. All texts are valid UTF-8; every function is linear and safe from any thread.
/// A returned std::string_view points into the value that was given. `parseDate` is in mail/date_parser.h.
/// Where a pool is given, equal texts of many calls share their bytes.
namespace tidewrack {

class TextPool;

/// Header names in lower case, and their values with folded lines joined. Of a repeated header the last
/// occurrence counts.
using HeaderMap = std::map<std::string, std::string, std::less<>>;

/// Reads a header block. CR, LF and CRLF end lines. A line that begins with a blank or a tab continues the
/// header before it, joined by one blank; any other line without a colon is ignored, and what continues
/// behind it still goes to the header before.
HeaderMap parseHeaders(std::string_view headerText);

/// The parameter `name` (in any case) of a value such as `text/plain; charset=utf-8`, without the blanks and
/// quote marks around it. Semicolons separate parameters even within quotes; the first match counts; a
/// parameter with nothing behind its "=" gives its own name. Extended names (RFC 2231) are not understood.
std::optional<std::string_view> headerParameter(std::string_view name, std::string_view value);

/// The mailbox of a From header; nothing for an absent or blank value.
std::optional<EmailAddress> parseSender(std::optional<std::string_view> value, TextPool* pool = nullptr);

/// The mailboxes of a To or Cc header. Every comma separates, also one within quotes.
std::vector<EmailAddress> parseAddressList(std::optional<std::string_view> value, TextPool* pool = nullptr);

/// The Message-ID without brackets, quotes and blanks at its ends, or a fresh UUID in its text form.
std::string cleanMessageID(std::optional<std::string_view> value);

/// The same trim for In-Reply-To and Content-ID; nothing when nothing is left.
std::optional<std::string_view> cleanReference(std::optional<std::string_view> value);

/// The ids in angle brackets, in order, or, when there are none, the words between blanks.
std::vector<Text> parseReferences(std::optional<std::string_view> value, TextPool* pool = nullptr);

/// The entries between commas, decoded, without empty ones. Double quotes protect a comma and are not kept.
std::vector<Text> parseLabels(std::optional<std::string_view> value, TextPool* pool = nullptr);

/// Characters of a preview, as people perceive them, without the ellipsis.
inline constexpr std::size_t longestSnippet = 180;

/// A one-line preview: the plain body if it holds anything at all, even blanks, otherwise the text of the
/// HTML body; with white space collapsed, and cut behind `longestSnippet` characters by "…".
std::string makeSnippet(std::optional<std::string_view> plainBody, std::optional<std::string_view> htmlBody);

/// The subject as a thread key: no diacritics, lower case, without the prefixes "re:", "fw:" and "fwd:".
/// Empty when nothing else is left.
std::string normalizedConversationSubject(std::string_view subject);

}  // namespace tidewrack
