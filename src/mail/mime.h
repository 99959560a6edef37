#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail/headers.h"
#include "mail/records.h"

/// The MIME structure of a body (RFC 2045, RFC 2046, read generously). Nothing here fails, any depth of
/// nesting is walked, and everything is linear and safe from any thread. `decodeTransfer` and
/// `decodeQuotedPrintable` are in mail/transfer_decoding.h.
namespace tidewrack {

/// What a body holds: at most one plain text, at most one HTML text, and attachments in document order.
struct ParsedBody {
  std::optional<Content> plainBody;
  std::optional<Content> htmlBody;
  std::vector<EmailAttachment> attachments;
};

/// Walks a body under its headers. In a multipart of any kind the first plain and the first HTML leaf that
/// are not empty become the bodies; further text leaves are lost. A body that is no multipart is present even
/// when it is empty. `body` is valid UTF-8; the result keeps a copy of it.
ParsedBody parseBody(std::string_view body, const HeaderMap& headers);

/// The raw parts between the delimiter lines of `boundary`, trimmed, without empty ones. Delimiter lines are
/// compared whole: trailing blanks make them ordinary. A part that no delimiter line ends is lost.
std::vector<std::string> splitMultipart(std::string_view body, std::string_view boundary);

/// The decoded `filename` of Content-Disposition, or else the `name` of Content-Type.
std::optional<std::string> attachmentFileName(const HeaderMap& headers);

}  // namespace tidewrack
