#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "mail/records.h"

namespace tidewrack {

/// Hands over the texts of a message that the search covers, in order: subject, snippet, plain body, the HTML
/// body with blanks for its markup, sender, recipients, copies, labels. Between any two stands at least a
/// blank, so that no word spans them. Bodies are read now; a stored body that cannot be read throws
/// StoreFailure.
/// `room` is where a body is decoded, kept from message to message so that its memory is.
void forEachSearchableText(const EmailMessage& message, std::string& room,
                           const std::function<void(std::string_view)>& visit);

/// Whether two messages are found by the same words for certain. Texts and bodies are shared between the
/// versions of a message, so this compares little more than pointers and reads no body; a false answer says
/// nothing.
bool haveSameSearchableText(const EmailMessage& a, const EmailMessage& b);

}  // namespace tidewrack
