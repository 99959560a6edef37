#include "ui/wrapped_label.h"

#include <algorithm>

namespace tidewrack::ui {
namespace {

constexpr int anyWidth = 10000;
// GTK takes a height that it was told for two widths as that of all widths between. So no width may have a
// smaller height than a larger one, not even that of none, which is asked for before a place is known.
constexpr int leastWidth = 120;

// Gives its one child the whole place, and is as high as the child is at that width.
class WrapLayout : public Gtk::LayoutManager {
 public:
  static Glib::RefPtr<WrapLayout> create() { return Glib::make_refptr_for_instance(new WrapLayout()); }

 protected:
  WrapLayout() : Glib::ObjectBase(typeid(WrapLayout)) {}

  Gtk::SizeRequestMode get_request_mode_vfunc(const Gtk::Widget& /*widget*/) const override {
    return Gtk::SizeRequestMode::HEIGHT_FOR_WIDTH;
  }

  void measure_vfunc(const Gtk::Widget& widget, Gtk::Orientation orientation, int for_size, int& minimum,
                     int& natural, int& minimum_baseline, int& natural_baseline) const override {
    minimum = 0;
    natural = 0;
    minimum_baseline = -1;
    natural_baseline = -1;
    if (orientation == Gtk::Orientation::VERTICAL) {
      const int width = for_size < 0 ? anyWidth : std::max(for_size, leastWidth);
      widget.get_first_child()->measure(orientation, width, minimum, natural, minimum_baseline,
                                        natural_baseline);
    }
  }

  void allocate_vfunc(const Gtk::Widget& widget, int width, int height, int baseline) override {
    const GtkAllocation place{0, 0, width, height};
    gtk_widget_size_allocate(gtk_widget_get_first_child(const_cast<GtkWidget*>(widget.gobj())), &place,
                             baseline);
  }
};

}  // namespace

WrappedLabel::WrappedLabel() {
  set_layout_manager(WrapLayout::create());
  set_hexpand(true);
  label_.set_xalign(0.0F);
  label_.set_yalign(0.0F);
  label_.set_wrap(true);
  label_.set_wrap_mode(Pango::WrapMode::WORD_CHAR);
  label_.set_selectable(true);
  append(label_);
}

}  // namespace tidewrack::ui
