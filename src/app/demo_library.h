#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "library/library_catalog.h"
#include "mail/records.h"
#include "screen/content_view.h"

/// A fixed set of made-up mail, for the launch modes that show the program without the user's own. It is
/// built in memory from literal values: nothing is read, and every call gives identical values, ids and
/// dates. All addresses lie in domains that are reserved for examples (RFC 2606). Safe from any thread.
namespace tidewrack {

/// Three libraries, newest first.
std::vector<MBOXLibrary> demoLibraries();

/// Fifteen messages, spread over the three libraries; not sorted by date.
MessageList demoMessages();

/// Both together, as the screen takes them.
DemoLibrary demoLibrary();

/// A whole HTML document around `body`, with a preheader that mail programs show as a preview.
std::string demoHTMLDocument(std::string_view title, std::string_view preheader, std::string_view body);

}  // namespace tidewrack
