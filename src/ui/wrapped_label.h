#pragma once

#include <string>

#include <gtkmm.h>

namespace tidewrack::ui {

/// A selectable text that wraps within whatever width it is given, which it takes without asking for any.
/// A plain wrapping label looks for the width that fits a height by laying its text out again and again,
/// which takes seconds for a hundred recipients.
class WrappedLabel : public Gtk::Box {
 public:
  WrappedLabel();

  void setText(const std::string& text) { label_.set_text(text); }
  [[nodiscard]] Gtk::Label& label() { return label_; }

 private:
  Gtk::Label label_;
};

}  // namespace tidewrack::ui
