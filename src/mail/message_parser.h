#pragma once

#include <string_view>

#include "mail/records.h"

namespace tidewrack {

/// Builds a message out of its raw text (RFC 5322 and MIME, read generously). There is no text for which it
/// gives none: what is missing gets a fallback. `raw` is valid UTF-8 with any line ends; the message keeps a
/// copy of it behind its bodies and attachments. Linear, whatever the text; safe from any thread. Pure, but
/// for the identifiers of attachments and that of a message without a Message-ID, which are random.
EmailMessage parseMessage(std::string_view raw, const Text& libraryID, const Text& libraryName);

}  // namespace tidewrack
