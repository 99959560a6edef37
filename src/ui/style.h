#pragma once

#include <string>
#include <string_view>

#include "reading/avatar.h"

namespace tidewrack::ui {

/// Puts the program's style sheets and icons on the default display, and keeps the dark sheet in step with
/// the desktop's appearance. Once, after adw_init(). Everything here belongs to the main thread.
void installStyle();

/// Whether the window is drawn dark at the moment.
bool isDark();

/// The style class that colours text and symbols in a named colour ("blue", "indigo", ...); "secondary" is
/// the colour of secondary text.
std::string tintClass(std::string_view colour);

/// The style class that does so in any colour. Each colour is made known when first asked for.
std::string colourClass(const RGBColor& colour);

}  // namespace tidewrack::ui
