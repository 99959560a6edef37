#include "ui/row_painter.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>

#include "reading/icons.h"

namespace tidewrack::ui {
namespace {

Pango::AttrList attributesOf(const RowPainter::Style& style) {
  Pango::AttrList attributes;
  auto scale = Pango::Attribute::create_attr_scale(style.scale);
  auto weight = Pango::Attribute::create_attr_weight(style.weight);
  attributes.insert(scale);
  attributes.insert(weight);
  return attributes;
}

// The paintable of a symbol's icon; the theme is asked once for each size and scale.
Glib::RefPtr<Gtk::IconPaintable> paintableOf(std::string_view symbol, int size, int scale) {
  static std::map<std::tuple<std::string, int, int>, Glib::RefPtr<Gtk::IconPaintable>> known;
  auto& paintable = known[{std::string(symbol), size, scale}];
  if (!paintable) {
    paintable = Gtk::IconTheme::get_for_display(Gdk::Display::get_default())
                    ->lookup_icon(iconName(symbol), size, scale);
  }
  return paintable;
}

void moveTo(const Glib::RefPtr<Gtk::Snapshot>& snapshot, int x, int y) {
  const graphene_point_t offset{static_cast<float>(x), static_cast<float>(y)};
  gtk_snapshot_translate(snapshot->gobj(), &offset);
}

}  // namespace

RowPainter::RowPainter(Gtk::Widget& widget, const Glib::RefPtr<Gtk::Snapshot>& snapshot)
    : widget_(widget),
      snapshot_(snapshot),
      isRightToLeft_(widget.get_direction() == Gtk::TextDirection::RTL),
      colour_(widget.get_style_context()->get_color()) {}

int RowPainter::lineHeight(const Gtk::Widget& widget, const Style& style) {
  // Two hundred rows ask for each of three styles whenever the list is measured.
  struct Known {
    Pango::FontDescription font;
    std::map<std::pair<double, int>, int> heights;
  };
  static Known known;
  auto& asked = const_cast<Gtk::Widget&>(widget);
  const auto font = asked.get_pango_context()->get_font_description();
  if (!(known.font == font)) {
    known = {font, {}};
  }
  int& height = known.heights[{style.scale, static_cast<int>(style.weight)}];
  if (height == 0) {
    const auto layout = asked.create_pango_layout("Ág");
    auto attributes = attributesOf(style);
    layout->set_attributes(attributes);
    int width = 0;
    layout->get_pixel_size(width, height);
  }
  return height;
}

Glib::RefPtr<Pango::Layout> RowPainter::makeLayout(const std::string& text, const Style& style) {
  auto layout = widget_.create_pango_layout(text);
  auto attributes = attributesOf(style);
  layout->set_attributes(attributes);
  return layout;
}

Gdk::RGBA RowPainter::colourOf(const Style& style) const {
  Gdk::RGBA colour = colour_;
  colour.set_alpha(colour_.get_alpha() * style.opacity);
  return colour;
}

int RowPainter::mirrored(int x, int width) const {
  return isRightToLeft_ ? widget_.get_width() - x - width : x;
}

int RowPainter::widthOf(const std::string& text, const Style& style) {
  int width = 0;
  int height = 0;
  makeLayout(text, style)->get_pixel_size(width, height);
  return width;
}

void RowPainter::text(const std::string& text, const Style& style, int x, int y, int width, int lines) {
  const auto layout = makeLayout(text, style);
  layout->set_width(width * PANGO_SCALE);
  layout->set_height(-lines);
  layout->set_wrap(Pango::WrapMode::WORD_CHAR);
  layout->set_ellipsize(Pango::EllipsizeMode::END);
  layout->set_single_paragraph_mode(true);
  // "Left" is the start of the text's own direction; lines begin at the start of the interface's.
  const bool isTextRightToLeft = pango_layout_get_direction(layout->gobj(), 0) == PANGO_DIRECTION_RTL;
  layout->set_alignment(isTextRightToLeft == isRightToLeft_ ? Pango::Alignment::LEFT
                                                            : Pango::Alignment::RIGHT);
  const Gdk::RGBA colour = colourOf(style);
  snapshot_->save();
  moveTo(snapshot_, mirrored(x, width), y);
  gtk_snapshot_append_layout(snapshot_->gobj(), layout->gobj(), colour.gobj());
  snapshot_->restore();
}

void RowPainter::symbol(std::string_view symbol, const Style& style, int x, int y, int size) {
  const auto paintable = paintableOf(symbol, size, widget_.get_scale_factor());
  const Gdk::RGBA colour = colourOf(style);
  snapshot_->save();
  moveTo(snapshot_, mirrored(x, size), y);
  gtk_symbolic_paintable_snapshot_symbolic(GTK_SYMBOLIC_PAINTABLE(paintable->gobj()), snapshot_->gobj(), size,
                                           size, colour.gobj(), 1);
  snapshot_->restore();
}

void RowPainter::avatar(int x, int y, int size, const RGBColor& colour, const std::string& initials) {
  constexpr double lighter = 1.12;
  constexpr double darker = 0.94;
  const auto shade = [&colour](double factor) {
    const auto part = [factor](double value) { return static_cast<float>(std::min(value * factor, 1.0)); };
    return GdkRGBA{part(colour.red), part(colour.green), part(colour.blue), 1.0F};
  };
  const auto side = static_cast<float>(size);
  const graphene_rect_t bounds = {{0, 0}, {side, side}};
  const graphene_point_t top = {0, 0};
  const graphene_point_t bottom = {0, side};
  const std::array<GskColorStop, 2> stops = {GskColorStop{0.0F, shade(lighter)},
                                             GskColorStop{1.0F, shade(darker)}};
  GskRoundedRect circle;
  gsk_rounded_rect_init_from_rect(&circle, &bounds, side / 2);

  snapshot_->save();
  moveTo(snapshot_, mirrored(x, size), y);
  gtk_snapshot_push_rounded_clip(snapshot_->gobj(), &circle);
  gtk_snapshot_append_linear_gradient(snapshot_->gobj(), &bounds, &top, &bottom, stops.data(), stops.size());
  snapshot_->pop();

  auto layout = widget_.create_pango_layout(initials);
  Pango::AttrList attributes;
  auto height =
      Pango::Attribute::create_attr_size_absolute(static_cast<int>(size * avatarTextScale * PANGO_SCALE));
  auto weight = Pango::Attribute::create_attr_weight(Pango::Weight::SEMIBOLD);
  attributes.insert(height);
  attributes.insert(weight);
  layout->set_attributes(attributes);
  int textWidth = 0;
  int textHeight = 0;
  layout->get_pixel_size(textWidth, textHeight);
  moveTo(snapshot_, (size - textWidth) / 2, (size - textHeight) / 2);
  const GdkRGBA white = {1, 1, 1, 1};
  gtk_snapshot_append_layout(snapshot_->gobj(), layout->gobj(), &white);
  snapshot_->restore();
}

void RowPainter::avatar(int x, int y, int size, const Glib::RefPtr<Gdk::Texture>& picture) {
  const auto side = static_cast<float>(size);
  const graphene_rect_t bounds = {{0, 0}, {side, side}};
  GskRoundedRect circle;
  gsk_rounded_rect_init_from_rect(&circle, &bounds, side / 2);
  snapshot_->save();
  moveTo(snapshot_, mirrored(x, size), y);
  gtk_snapshot_push_rounded_clip(snapshot_->gobj(), &circle);
  gtk_snapshot_append_texture(snapshot_->gobj(), picture->gobj(), &bounds);
  gtk_snapshot_pop(snapshot_->gobj());
  snapshot_->restore();
}

}  // namespace tidewrack::ui
