#pragma once

#include <vector>

#include <adwaita.h>
#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"

namespace tidewrack::ui {

/// The toast at the top edge of the window: an icon and a line on a pill. It comes and goes under a spring,
/// moving and fading, with the screen's current toast. Put it as an overlay over everything.
class ToastView : public Gtk::Box {
 public:
  explicit ToastView(ContentView& screen);
  ~ToastView() override;
  ToastView(const ToastView&) = delete;
  ToastView& operator=(const ToastView&) = delete;

 protected:
  void snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>& snapshot) override;

 private:
  void showToast();
  void animateTo(double target);

  ContentView& screen_;
  Gtk::Image icon_;
  Gtk::Label text_;
  AdwAnimation* animation_ = nullptr;
  double shown_ = 0.0;  ///< From 0 (gone) to 1 (in its place); a spring goes a little beyond.
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
