#pragma once

#include <gtkmm.h>

#include "screen/export_view.h"

namespace tidewrack::ui {

/// The file dialog of the export. Where a name without an extension would take the place of a file, it asks
/// once more with the whole name.
class SavePanel {
 public:
  /// `anchor` is in the window that the dialog belongs to, and outlives the panel.
  explicit SavePanel(Gtk::Widget& anchor) : anchor_(anchor) {}

  void begin(ExportView::SavePanel request);

 private:
  void show(const std::filesystem::path& folder, const std::string& name);
  void answered(int response);

  Gtk::Widget& anchor_;
  ExportView::SavePanel request_;
  Glib::RefPtr<Gtk::FileChooserNative> chooser_;  ///< Kept until it has answered.
};

}  // namespace tidewrack::ui
