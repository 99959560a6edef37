#pragma once

#include <functional>

#include <gtkmm.h>

#include "reading/library_row.h"

namespace tidewrack::ui {

/// One row of the list of libraries, with its three buttons.
class LibraryRowView : public Gtk::Box {
 public:
  explicit LibraryRowView(std::function<void(LibraryRowAction)> act);

  void show(const LibraryRow& row);

 private:
  Gtk::Button* makeButton(LibraryRowAction action);

  std::function<void(LibraryRowAction)> act_;
  Gtk::Image icon_;
  Gtk::Label name_;
  Gtk::Label badge_;
  Gtk::Label count_;
  Gtk::Label origin_;
  Gtk::Image check_;
};

}  // namespace tidewrack::ui
