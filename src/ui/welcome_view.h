#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"

namespace tidewrack::ui {

/// What stands in the middle column before there is any mail. Follows the screen's fields; `onImport`,
/// `onRestore` and `onShowDiscovered` are what its buttons do (without one its button is not there).
class WelcomeView : public Gtk::ScrolledWindow {
 public:
  struct Actions {
    std::function<void()> onImport;
    std::function<void()> onRestore;
    std::function<void()> onShowDiscovered;
  };
  WelcomeView(ContentView& screen, Actions actions);

 private:
  void refresh();

  ContentView& screen_;
  Actions actions_;
  Gtk::Button* restore_ = nullptr;
  Gtk::Image* restoreIcon_ = nullptr;
  Gtk::Spinner restoreSpinner_;
  Gtk::Button* discovered_ = nullptr;
  Gtk::Label* hint_ = nullptr;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
