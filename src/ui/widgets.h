#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

#include <gtkmm.h>

/// Small helpers that every view uses. Main thread only.
namespace tidewrack::ui {

/// Gives a widget its accessibility identifier, as its name and its buildable id.
void setIdentifier(Gtk::Widget& widget, std::string_view identifier);

/// What assistive technology reads out for a widget that shows no text of its own.
void setAccessibleLabel(Gtk::Widget& widget, const std::string& label);

/// Shows what `text` gives, when it gives anything, while the pointer rests on the widget. Setting a text
/// that stays costs a question to the display server for each, which two hundred rows at a time cannot
/// afford.
void offerTooltip(Gtk::Widget& widget, std::function<std::string()> text);

/// An image of a platform symbol, `size` pixels wide, in a named colour (empty: the colour of the text).
Gtk::Image* makeSymbol(std::string_view symbol, int size, std::string_view tint = {});
/// Changes the symbol and the colour of such an image.
void setSymbol(Gtk::Image& image, std::string_view symbol, std::string_view tint = {});

/// A button with an icon and a text beside it.
Gtk::Button* makeIconButton(std::string_view symbol, const std::string& label);

/// A label on the left, wrapped within its width.
Gtk::Label* makeLabel(const std::string& text, std::initializer_list<const char*> styleClasses = {});

/// Takes all children out of a box.
void removeChildren(Gtk::Box& box);

/// A C widget that has just been made, as a gtkmm one for its parent to keep.
Gtk::Widget* wrapWidget(GtkWidget* widget);

}  // namespace tidewrack::ui
