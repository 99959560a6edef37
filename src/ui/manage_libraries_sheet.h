#pragma once

#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"
#include "ui/library_row_view.h"
#include "ui/sheet.h"

namespace tidewrack::ui {

/// The sheet with all libraries, where they are chosen, renamed and deleted.
class ManageLibrariesSheet : public Sheet {
 public:
  ManageLibrariesSheet(ContentView& screen, Gtk::Widget& covered);

 private:
  void refresh();
  void makeRows();
  void act(std::size_t index, LibraryRowAction action);

  ContentView& screen_;
  Gtk::Stack pages_;
  Gtk::ListBox list_;
  std::vector<Text> ids_;  ///< Of the libraries that the rows show, in their order.
  std::vector<LibraryRowView*> rows_;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
