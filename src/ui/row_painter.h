#pragma once

#include <string>
#include <string_view>

#include <gtkmm.h>

#include "reading/avatar.h"

namespace tidewrack::ui {

/// Draws the parts of a row into its snapshot. Places are given from the start of the line: in a
/// right-to-left interface everything stands mirrored. Main thread only.
class RowPainter {
 public:
  /// How a text is drawn: its size against the widget's font, its weight, and the opacity of its colour.
  struct Style {
    double scale = 1.0;
    Pango::Weight weight = Pango::Weight::NORMAL;
    float opacity = 1.0F;
  };

  RowPainter(Gtk::Widget& widget, const Glib::RefPtr<Gtk::Snapshot>& snapshot);

  /// Height of a line in this style. Cheap: known for each font after the first time.
  static int lineHeight(const Gtk::Widget& widget, const Style& style);

  /// Width of a text on one line.
  int widthOf(const std::string& text, const Style& style);
  /// A text of at most `lines` lines, cut off with an ellipsis, at the start of its place.
  void text(const std::string& text, const Style& style, int x, int y, int width, int lines = 1);
  /// A platform symbol in the colour of the text.
  void symbol(std::string_view symbol, const Style& style, int x, int y, int size);
  /// A round avatar with initials.
  void avatar(int x, int y, int size, const RGBColor& colour, const std::string& initials);
  /// A round avatar with a picture, stretched to its place.
  void avatar(int x, int y, int size, const Glib::RefPtr<Gdk::Texture>& picture);

 private:
  Glib::RefPtr<Pango::Layout> makeLayout(const std::string& text, const Style& style);
  Gdk::RGBA colourOf(const Style& style) const;
  [[nodiscard]] int mirrored(int x, int width) const;

  Gtk::Widget& widget_;
  Glib::RefPtr<Gtk::Snapshot> snapshot_;
  bool isRightToLeft_;
  Gdk::RGBA colour_;
};

}  // namespace tidewrack::ui
