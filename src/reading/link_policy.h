#pragma once

#include <string_view>

/// Where the links and the remote parts of a mail may lead. Pure; safe from any thread.
namespace tidewrack {

/// Whether a pressed link may be handed to the desktop: only the schemes http, https and mailto.
bool mayOpenOutside(std::string_view url);

/// Whether a page may go to this address by itself (a frame, a refresh, a picture): http and https outside
/// this computer and its network, and the page's own "about:", "data:" and "cid:" addresses.
/// A text that is no URL may not.
bool mayLoad(std::string_view url);

}  // namespace tidewrack
