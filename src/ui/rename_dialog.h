#pragma once

#include <adwaita.h>
#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"

namespace tidewrack::ui {

/// The dialog that asks for a library's new name, shown while the screen has one pending.
class RenameDialog {
 public:
  /// Both must outlive the dialog.
  RenameDialog(Gtk::Window& window, ContentView& screen);
  ~RenameDialog();
  RenameDialog(const RenameDialog&) = delete;
  RenameDialog& operator=(const RenameDialog&) = delete;

 private:
  void refresh();
  void present();
  void close();
  static void responded(AdwMessageDialog* dialog, const char* response, gpointer self);

  Gtk::Window& window_;
  ContentView& screen_;
  AdwMessageDialog* dialog_ = nullptr;  ///< Belongs to the toolkit; null while there is none.
  Subscription subscription_;
};

}  // namespace tidewrack::ui
