#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "mail/records.h"

/// Turns a stored HTML body into the document that the reader shows. Everything here is pure, linear in the
/// size of its input and safe from any thread.
namespace tidewrack {

enum class HTMLAppearance { light, dark };

/// "light" or "dark".
std::string_view rawValue(HTMLAppearance appearance);
/// The colours that an appearance gives a page, as "#rrggbb".
std::string_view textColor(HTMLAppearance appearance);
std::string_view backgroundColor(HTMLAppearance appearance);

/// What a message's HTML comes to.
struct ResolvedHTML {
  std::optional<std::string> html;     ///< The body with its inline images in it; absent without a body.
  std::optional<HTMLAppearance> hint;  ///< The appearance that the message was made for, where it tells.
  friend bool operator==(const ResolvedHTML&, const ResolvedHTML&) = default;
};

/// Replaces the `cid:` references of the body by `data:` URLs with the inline attachments' bytes, and finds
/// the message's own appearance. A Content-ID is replaced wherever it stands, also at the head of a longer
/// one. Throws StoreFailure when a stored body or attachment cannot be read, and nothing else.
ResolvedHTML resolveInlineHTML(const EmailMessage& message);
/// Whether resolving replaces anything at all: some attachment is inline and has a Content-ID.
bool hasInlineReferences(const EmailMessage& message);

/// The appearance that a stored body was made for: the one that it declares, or else a dark or light one by
/// the luminance of its body's background (below 0.4 is dark).
std::optional<HTMLAppearance> appearanceHint(std::string_view html);

/// The appearance that a `color-scheme` meta tag declares or, without such a tag, the first `color-scheme:`
/// anywhere in the text. Of two words the first wins.
std::optional<HTMLAppearance> declaredColorScheme(std::string_view html);

/// The background of the first `body` tag as written: its `bgcolor`, or `background-color` or `background`
/// of its `style`.
std::optional<std::string> bodyBackgroundValue(std::string_view html);

/// How bright a colour is, from 0.0 for black to 1.0 for white (ITU-R BT.601 weights). Knows #rgb, #rgba,
/// #rrggbb, #rrggbbaa, rgb(), rgba(), "black" and "white"; nothing for any other text.
std::optional<double> colorLuminance(std::string_view value);

/// The document for the web view: the body with a viewport and style block in its head. With
/// `invertContent` a filter turns light and dark over, and media back again.
std::string buildDocument(std::string_view html, HTMLAppearance appearance, bool invertContent);

}  // namespace tidewrack
