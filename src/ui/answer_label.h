#pragma once

#include <string>

#include <gtkmm.h>

#include "ui/widgets.h"

namespace tidewrack::ui {

/// A text of the model in a popover: selectable, and wrapped at about this width, so that the popover is as
/// high as it needs to be.
inline Gtk::Label* makeAnswerLabel(const std::string& text, int widthInChars) {
  Gtk::Label* label = makeLabel(text);
  label->set_max_width_chars(widthInChars);
  label->set_selectable(true);
  return label;
}

}  // namespace tidewrack::ui
