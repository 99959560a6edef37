#pragma once

#include <string>

#include "cli/command_line.h"
#include "mail/records.h"

namespace tidewrack {

/// The message as one JSON object on one line, with its line feed. `form` is not columns.
std::string messageLine(const EmailMessage& message, CommandLine::Form form);

/// ISO 8601 in UTC, or nothing for an undated message.
std::string dateText(const std::optional<Date>& date);

/// What a reader wants to see of a message in text form: header lines, attachments, and its text.
std::string overview(const EmailMessage& message);

/// The plain text body, or the text of the HTML body, or nothing.
std::string bodyText(const EmailMessage& message);

}  // namespace tidewrack
