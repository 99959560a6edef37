#pragma once

#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"
#include "ui/confirmation_view.h"
#include "ui/import_status_view.h"
#include "ui/sheet.h"

namespace tidewrack::ui {

/// The sheet that asks whether to delete a library and, once that is under way, tells how it stands.
class DeletionSheet : public Sheet {
 public:
  DeletionSheet(ContentView& screen, Gtk::Widget& covered);

 private:
  void refresh();
  void confirm();

  ContentView& screen_;
  Gtk::Stack stack_;
  ConfirmationView* question_;
  ImportStatusView* panel_;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
