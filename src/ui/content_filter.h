#pragma once

#include <functional>
#include <string>

#include <webkit/webkit.h>

namespace tidewrack::ui {

/// The rules of the content filter, as WebKit's content blocker JSON: http and https pass, and so do the
/// page's own "data:", "cid:" and "about:" addresses; every other scheme, this computer and its network are
/// blocked, whatever asks for them (pictures, frames, preconnections, redirects).
std::string contentFilterRules();

/// Compiles the rules and attaches them to `manager`; calls `done` with whether that succeeded, unless
/// `cancellable` has been cancelled before. Main thread only.
void attachContentFilter(WebKitUserContentManager* manager, GCancellable* cancellable,
                         std::function<void(bool succeeded)> done);

}  // namespace tidewrack::ui
