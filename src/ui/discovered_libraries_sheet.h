#pragma once

#include <functional>
#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "reading/library_row.h"
#include "screen/content_view.h"
#include "ui/sheet.h"

namespace tidewrack::ui {

/// The sheet with the libraries that are known from synced messages alone, a card for each.
class DiscoveredLibrariesSheet : public Sheet {
 public:
  /// What the button of a card does; without it the cards have none.
  using Adopt = std::function<void(const DiscoveredLibrary&)>;

  DiscoveredLibrariesSheet(ContentView& screen, Gtk::Widget& covered, Adopt adopt);

 private:
  void refresh();
  void makeCards();
  Gtk::Widget* makeCard(const DiscoveredLibraryCard& card, const DiscoveredLibrary& library);
  Gtk::Button* makeAdoptButton(const DiscoveredLibrary& library);

  ContentView& screen_;
  Adopt adopt_;
  Gtk::Stack pages_;
  Gtk::Box cards_{Gtk::Orientation::VERTICAL, 14};
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
