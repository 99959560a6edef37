#pragma once

#include <string>
#include <string_view>

#include <gtkmm.h>

namespace tidewrack::ui {

/// A chip that asks the model for something: an icon and a title, or, while the model works, a spinner in
/// the icon's place and no answer to a press.
class IntelligenceChip : public Gtk::Button {
 public:
  /// `symbol` is a platform symbol name.
  IntelligenceChip(std::string_view symbol, const std::string& title);

  void showRunning(bool isRunning);

 private:
  Gtk::Box content_{Gtk::Orientation::HORIZONTAL, 6};
  Gtk::Image* icon_;
  Gtk::Spinner spinner_;
};

}  // namespace tidewrack::ui
