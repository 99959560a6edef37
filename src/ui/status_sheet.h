#pragma once

#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"
#include "ui/import_status_view.h"
#include "ui/sheet.h"

namespace tidewrack::ui {

/// The sheet that reports a long operation, shown for as long as the screen says so. The load at the start
/// gets it only when it takes a moment, so that it does not flash.
class StatusSheet : public Sheet {
 public:
  StatusSheet(ContentView& screen, Gtk::Widget& covered);
  ~StatusSheet() override;
  StatusSheet(const StatusSheet&) = delete;
  StatusSheet& operator=(const StatusSheet&) = delete;

  static constexpr int width = 420;
  static constexpr unsigned loadPatienceMilliseconds = 300;

 private:
  void refresh();

  ContentView& screen_;
  ImportStatusView* panel_;
  sigc::connection patience_;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
