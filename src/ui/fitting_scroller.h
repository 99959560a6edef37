#pragma once

#include <gtkmm.h>

namespace tidewrack::ui {

/// Scrolls its child up and down, and is as high as the child at the width it gets, up to a maximum. The
/// scroller of GTK asks for the height of the longest lines, at whatever width it is.
class FittingScroller : public Gtk::ScrolledWindow {
 public:
  /// The child, and the maximum in pixels.
  FittingScroller(Gtk::Widget& child, int maximumHeight);

 protected:
  Gtk::SizeRequestMode get_request_mode_vfunc() const override;
  void measure_vfunc(Gtk::Orientation orientation, int for_size, int& minimum, int& natural,
                     int& minimum_baseline, int& natural_baseline) const override;

 private:
  Gtk::Widget& child_;
  int maximumHeight_;
};

}  // namespace tidewrack::ui
