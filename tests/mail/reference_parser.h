#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "mail/headers.h"
#include "mail/records.h"

/// The parser once more, written for nothing but likeness to the rules: step by step, with copies and
/// recursion. The tests compare the real one with it. It rests on the same text services (charsets, encoded
/// words, transfer decoding, dates, HTML text), which have tests of their own.
namespace tidewrack::reference {

std::vector<EmailMessage> parseArchive(std::string_view bytes, const Text& libraryID,
                                       const Text& libraryName);
EmailMessage parseMessage(const std::string& raw, const Text& libraryID, const Text& libraryName);
HeaderMap parseHeaders(const std::string& headerText);
std::vector<std::string> splitMultipart(const std::string& body, const std::string& boundary);

}  // namespace tidewrack::reference
