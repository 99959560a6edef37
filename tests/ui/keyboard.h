#pragma once

#include <string>

#include <gtkmm.h>

namespace tidewrack {

/// A keyboard for the windows of this process: real key presses, which the display server delivers to the
/// window that has its focus. Each call waits until the program has dealt with them.
class Keyboard {
 public:
  /// Gives a window the display's focus, as a window manager would, and waits until it has noticed.
  static void focus(GtkWindow* window);

  /// Presses and releases a key ("Tab", "Return", "a") with the modifiers held ("Control_L").
  static void press(const std::string& key, const std::string& modifier = {});
  /// Types ASCII text.
  static void type(const std::string& text);

  /// Presses Tab until the focus of the window lies on the widget of this name, or within it; false when it
  /// never does.
  static bool tabTo(GtkWindow* window, const std::string& name);
};

/// The widget that has the focus of a window, or null.
GtkWidget* focusedWidget(GtkWindow* window);

/// The names of a widget and of all that it lies in, for messages of tests.
std::string describe(GtkWidget* widget);

}  // namespace tidewrack
