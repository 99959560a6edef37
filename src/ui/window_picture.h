#pragma once

#include <string>

#include <gtkmm.h>

namespace tidewrack::ui {

/// Writes what a window shows into a PNG file; whether that succeeded. The window must be on the screen.
bool writePicture(Gtk::Window& window, const std::string& file);

}  // namespace tidewrack::ui
