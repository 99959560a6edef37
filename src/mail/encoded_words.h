#pragma once

#include <string>
#include <string_view>

namespace tidewrack {

/// Decodes the encoded words of a header text (RFC 2047, read generously: any word that matches
/// `=\?([^?]+)\?([bBqQ])\?([^?]*)\?=`, wherever it stands). A text without one comes back as it is.
/// Otherwise a gap of nothing but white space before a word vanishes, each word is decoded alone (one
/// whose Base64 is broken stays as it stands), and in the end runs of white space become one blank and
/// both ends are trimmed. Takes and gives valid UTF-8; linear; never fails. Safe from any thread.
std::string decodeHeaderText(std::string_view text);

}  // namespace tidewrack
