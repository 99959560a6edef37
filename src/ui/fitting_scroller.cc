#include "ui/fitting_scroller.h"

#include <algorithm>

namespace tidewrack::ui {
namespace {

constexpr int leastHeight = 96;

}  // namespace

FittingScroller::FittingScroller(Gtk::Widget& child, int maximumHeight)
    : Glib::ObjectBase("TidewrackFittingScroller"), child_(child), maximumHeight_(maximumHeight) {
  set_child(child);
  set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
}

Gtk::SizeRequestMode FittingScroller::get_request_mode_vfunc() const {
  return Gtk::SizeRequestMode::HEIGHT_FOR_WIDTH;
}

void FittingScroller::measure_vfunc(Gtk::Orientation orientation, int for_size, int& minimum, int& natural,
                                    int& minimum_baseline, int& natural_baseline) const {
  child_.measure(orientation, for_size, minimum, natural, minimum_baseline, natural_baseline);
  minimum_baseline = -1;
  natural_baseline = -1;
  if (orientation == Gtk::Orientation::VERTICAL) {
    natural = std::min(natural, maximumHeight_);
    minimum = std::min(natural, leastHeight);
  }
}

}  // namespace tidewrack::ui
