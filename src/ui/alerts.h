#pragma once

#include <functional>
#include <string>

#include <gtkmm.h>

namespace tidewrack::ui {

/// Shows a message with one button, "OK", over the window of `anchor`; `dismissed` is called once when it
/// goes, unless the anchor is gone by then. Main thread only.
void showAlert(Gtk::Widget& anchor, const std::string& title, const std::string& message,
               std::function<void()> dismissed);

}  // namespace tidewrack::ui
