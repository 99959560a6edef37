#pragma once

#include <functional>

#include <gtkmm.h>

#include "screen/confirmation.h"

namespace tidewrack::ui {

/// A question with two answers: icon, title, message, and a button to cancel beside the one that confirms.
class ConfirmationView : public Gtk::Box {
 public:
  ConfirmationView(const std::function<void()>& onConfirm, const std::function<void()>& onCancel);

  void show(const Confirmation& confirmation);
  void focusConfirmButton() { confirm_.grab_focus(); }

 private:
  Gtk::Image icon_;
  Gtk::Label title_;
  Gtk::Label message_;
  Gtk::Button cancel_;
  Gtk::Button confirm_;
};

}  // namespace tidewrack::ui
