#include "ui/keyboard.h"

#include "ui/window_fixture.h"

// X11 has macros for common words, so its headers come last.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <gdk/x11/gdkx.h>

namespace tidewrack {
namespace {

constexpr int mostTabs = 80;

Display* display() {
  return gdk_x11_display_get_xdisplay(gdk_display_get_default());
}

void sendKey(KeySym symbol, bool isDown) {
  XTestFakeKeyEvent(display(), XKeysymToKeycode(display(), symbol), isDown ? True : False, CurrentTime);
}

// Lets the server deliver what was sent, and the program answer it.
void settle() {
  XSync(display(), False);
  runPending();
  XSync(display(), False);
  runPending();
}

}  // namespace

void Keyboard::focus(GtkWindow* window) {
  runUntil([window] { return gtk_widget_get_mapped(GTK_WIDGET(window)) != FALSE; });
  GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
  settle();
  XSetInputFocus(display(), gdk_x11_surface_get_xid(surface), RevertToParent, CurrentTime);
  runUntil([window] { return gtk_window_is_active(window) != FALSE; });
  settle();
}

void Keyboard::press(const std::string& key, const std::string& modifier) {
  const KeySym symbol = XStringToKeysym(key.c_str());
  const KeyCode code = XKeysymToKeycode(display(), symbol);
  const bool isShifted = XkbKeycodeToKeysym(display(), code, 0, 0) != symbol &&
                         XkbKeycodeToKeysym(display(), code, 0, 1) == symbol;
  if (isShifted) {
    sendKey(XStringToKeysym("Shift_L"), true);
  }
  if (!modifier.empty()) {
    sendKey(XStringToKeysym(modifier.c_str()), true);
  }
  sendKey(symbol, true);
  sendKey(symbol, false);
  if (!modifier.empty()) {
    sendKey(XStringToKeysym(modifier.c_str()), false);
  }
  if (isShifted) {
    sendKey(XStringToKeysym("Shift_L"), false);
  }
  settle();
}

void Keyboard::type(const std::string& text) {
  for (const char letter : text) {
    switch (letter) {
      case '/':
        press("slash");
        break;
      case '.':
        press("period");
        break;
      case '-':
        press("minus");
        break;
      case '_':
        press("underscore");
        break;
      case ' ':
        press("space");
        break;
      default:
        press(std::string(1, letter));
        break;
    }
  }
}

bool Keyboard::tabTo(GtkWindow* window, const std::string& name) {
  for (int tabs = 0; tabs < mostTabs; ++tabs) {
    for (GtkWidget* widget = focusedWidget(window); widget != nullptr;
         widget = gtk_widget_get_parent(widget)) {
      if (name == gtk_widget_get_name(widget)) {
        return true;
      }
    }
    press("Tab");
  }
  return false;
}

GtkWidget* focusedWidget(GtkWindow* window) {
  return gtk_window_get_focus(window);
}

std::string describe(GtkWidget* widget) {
  std::string text;
  for (; widget != nullptr && text.size() < 200; widget = gtk_widget_get_parent(widget)) {
    text += (text.empty() ? "" : " in ") + std::string(G_OBJECT_TYPE_NAME(widget)) + ":" +
            gtk_widget_get_name(widget);
  }
  return text;
}

}  // namespace tidewrack
