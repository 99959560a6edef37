#pragma once

#include <gtkmm.h>

namespace tidewrack::ui {

/// The button with the program's menu. Its entries are named actions ("app.*", "win.*").
Gtk::MenuButton* makeMainMenuButton();

/// The keys of the named actions.
void setShortcuts(Gtk::Application& application);

}  // namespace tidewrack::ui
