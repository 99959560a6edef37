#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"

namespace tidewrack::ui {

/// The file picker of the import: shown while the screen says so, any number of files of any kind.
class ArchivePicker {
 public:
  /// Both must outlive the picker.
  ArchivePicker(Gtk::Window& window, ContentView& screen);

 private:
  void show();
  void answered(int response);

  Gtk::Window& window_;
  ContentView& screen_;
  Glib::RefPtr<Gtk::FileChooserNative> chooser_;  ///< Kept until it has answered.
  Subscription subscription_;
};

/// The local paths of files from outside (a picker, a drop, the command line), or the failure of the first
/// that has none.
ContentView::ImportResult importResult(const std::vector<Glib::RefPtr<Gio::File>>& files);

/// Imports files that were dropped on the window or opened from outside.
void openFiles(const std::vector<Glib::RefPtr<Gio::File>>& files, ContentView& screen);

}  // namespace tidewrack::ui
