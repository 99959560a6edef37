#pragma once

#include <functional>
#include <string>

#include <gtkmm.h>

namespace tidewrack::ui {

/// Shows a message with one button, "OK", over the window of `anchor`; `dismissed` is called once when the
/// user lets it go, unless the anchor is gone by then. Gives a function that takes the alert away without
/// calling `dismissed` and does nothing once it has gone. Main thread only.
std::function<void()> showAlert(Gtk::Widget& anchor, const std::string& title, const std::string& message,
                                std::function<void()> dismissed);

}  // namespace tidewrack::ui
