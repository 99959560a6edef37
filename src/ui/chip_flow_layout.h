#pragma once

#include <vector>

#include <gtkmm.h>

namespace tidewrack::ui {

/// Lays out chips and badges from the start of a line, and goes on in a new line when one is full. In a
/// right-to-left interface lines start on the right.
class ChipFlowLayout : public Gtk::LayoutManager {
 public:
  /// `spacing` between the chips of a line, `lineSpacing` between lines, in pixels.
  static Glib::RefPtr<ChipFlowLayout> create(int spacing, int lineSpacing);

 protected:
  ChipFlowLayout(int spacing, int lineSpacing);
  Gtk::SizeRequestMode get_request_mode_vfunc(const Gtk::Widget& widget) const override;
  void measure_vfunc(const Gtk::Widget& widget, Gtk::Orientation orientation, int for_size, int& minimum,
                     int& natural, int& minimum_baseline, int& natural_baseline) const override;
  void allocate_vfunc(const Gtk::Widget& widget, int width, int height, int baseline) override;

 private:
  struct Place {
    GtkWidget* child;
    GtkAllocation allocation;
  };
  // Where each visible child goes in a width; `height` becomes that of all lines.
  std::vector<Place> placesIn(const Gtk::Widget& widget, int width, int& height) const;

  int spacing_;
  int lineSpacing_;
};

}  // namespace tidewrack::ui
