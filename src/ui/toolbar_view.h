#pragma once

#include <map>
#include <set>
#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"
#include "screen/toolbar.h"

namespace tidewrack::ui {

/// The buttons of the toolbar, as the screen says they stand. An item whose action the window does not offer
/// is left out.
class ToolbarView : public Gtk::Box {
 public:
  ToolbarView(ContentView& screen, const std::set<ToolbarAction>& offered);

 private:
  // The widgets of one item, in the place that it keeps.
  struct Slot {
    Gtk::Box* box = nullptr;
    Gtk::Button* button = nullptr;
    Gtk::Image* icon = nullptr;
    Gtk::Label* badge = nullptr;
    Gtk::Spinner* spinner = nullptr;
  };
  void refresh();
  Slot makeSlot(ToolbarAction action);
  static void show(const ToolbarItem& item, Slot& slot);

  ContentView& screen_;
  bool hasMessages_ = false;
  std::map<ToolbarAction, Slot> slots_;  ///< In the order of the toolbar.
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
