#include "ui/chip_flow_layout.h"

#include <algorithm>

namespace tidewrack::ui {
namespace {

template <typename Visit>
void forEachVisibleChild(const Gtk::Widget& widget, Visit visit) {
  for (GtkWidget* child = gtk_widget_get_first_child(const_cast<GtkWidget*>(widget.gobj())); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    if (gtk_widget_should_layout(child) != FALSE) {
      visit(child);
    }
  }
}

GtkRequisition naturalSize(GtkWidget* child) {
  GtkRequisition natural{};
  gtk_widget_get_preferred_size(child, nullptr, &natural);
  return natural;
}

}  // namespace

Glib::RefPtr<ChipFlowLayout> ChipFlowLayout::create(int spacing, int lineSpacing) {
  return Glib::make_refptr_for_instance(new ChipFlowLayout(spacing, lineSpacing));
}

ChipFlowLayout::ChipFlowLayout(int spacing, int lineSpacing)
    : Glib::ObjectBase(typeid(ChipFlowLayout)), spacing_(spacing), lineSpacing_(lineSpacing) {}

Gtk::SizeRequestMode ChipFlowLayout::get_request_mode_vfunc(const Gtk::Widget& /*widget*/) const {
  return Gtk::SizeRequestMode::HEIGHT_FOR_WIDTH;
}

void ChipFlowLayout::measure_vfunc(const Gtk::Widget& widget, Gtk::Orientation orientation, int for_size,
                                   int& minimum, int& natural, int& minimum_baseline,
                                   int& natural_baseline) const {
  minimum_baseline = -1;
  natural_baseline = -1;
  minimum = 0;
  natural = 0;
  if (orientation == Gtk::Orientation::VERTICAL && for_size >= 0) {
    placesIn(widget, for_size, natural);
    minimum = natural;
    return;
  }
  forEachVisibleChild(widget, [&](GtkWidget* child) {
    int childMinimum = 0;
    int childNatural = 0;
    gtk_widget_measure(child, static_cast<GtkOrientation>(orientation), -1, &childMinimum, &childNatural,
                       nullptr, nullptr);
    if (orientation == Gtk::Orientation::HORIZONTAL) {
      minimum = std::max(minimum, childMinimum);
      natural += childNatural + (natural > 0 ? spacing_ : 0);
    } else {
      minimum = std::max(minimum, childMinimum);
      natural = std::max(natural, childNatural);
    }
  });
}

std::vector<ChipFlowLayout::Place> ChipFlowLayout::placesIn(const Gtk::Widget& widget, int width,
                                                            int& height) const {
  std::vector<Place> places;
  int x = 0;
  int y = 0;
  int lineHeight = 0;
  forEachVisibleChild(widget, [&](GtkWidget* child) {
    const GtkRequisition size = naturalSize(child);
    const int childWidth = std::min(size.width, width);
    if (x > 0 && x + childWidth > width) {
      x = 0;
      y += lineHeight + lineSpacing_;
      lineHeight = 0;
    }
    places.push_back({child, {x, y, childWidth, size.height}});
    x += childWidth + spacing_;
    lineHeight = std::max(lineHeight, size.height);
  });
  height = y + lineHeight;
  return places;
}

void ChipFlowLayout::allocate_vfunc(const Gtk::Widget& widget, int width, int /*height*/, int /*baseline*/) {
  int height = 0;
  const bool isMirrored = widget.get_direction() == Gtk::TextDirection::RTL;
  for (Place& place : placesIn(widget, width, height)) {
    // A chip is never given less than it needs, even where the column is narrower.
    int minimum = 0;
    gtk_widget_measure(place.child, GTK_ORIENTATION_HORIZONTAL, -1, &minimum, nullptr, nullptr, nullptr);
    place.allocation.width = std::max(place.allocation.width, minimum);
    if (isMirrored) {
      place.allocation.x = width - place.allocation.x - place.allocation.width;
    }
    gtk_widget_size_allocate(place.child, &place.allocation, -1);
  }
}

}  // namespace tidewrack::ui
