#include "ui/widgets.h"

#include <string>
#include <utility>

#include "reading/icons.h"
#include "ui/style.h"

namespace tidewrack::ui {
namespace {

constexpr const char* tintPrefix = "tint-";

}  // namespace

void setIdentifier(Gtk::Widget& widget, std::string_view identifier) {
  const std::string id(identifier);
  widget.set_name(id);
  GtkBuildable* buildable = GTK_BUILDABLE(widget.gobj());
  GTK_BUILDABLE_GET_IFACE(buildable)->set_id(buildable, id.c_str());
}

void setAccessibleLabel(Gtk::Widget& widget, const std::string& label) {
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(),
                                 -1);
}

void offerTooltip(Gtk::Widget& widget, std::function<std::string()> text) {
  widget.set_has_tooltip(true);
  widget.signal_query_tooltip().connect(
      [text = std::move(text)](int, int, bool, const Glib::RefPtr<Gtk::Tooltip>& tooltip) {
        const std::string tip = text();
        tooltip->set_text(tip);
        return !tip.empty();
      },
      false);
}

Gtk::Image* makeSymbol(std::string_view symbol, int size, std::string_view tint) {
  auto* image = Gtk::make_managed<Gtk::Image>();
  image->set_pixel_size(size);
  setSymbol(*image, symbol, tint);
  return image;
}

void setSymbol(Gtk::Image& image, std::string_view symbol, std::string_view tint) {
  // Both set off a new layout or style even when nothing changes by them.
  const std::string name = iconName(symbol);
  if (image.get_icon_name().raw() != name) {
    image.set_from_icon_name(name);
  }
  const std::string wanted = tint.empty() ? std::string() : tintClass(tint);
  for (const auto& styleClass : image.get_css_classes()) {
    if (styleClass.find(tintPrefix) == 0 && styleClass.raw() != wanted) {
      image.remove_css_class(styleClass);
    }
  }
  if (!wanted.empty()) {
    image.add_css_class(wanted);
  }
}

Gtk::Button* makeIconButton(std::string_view symbol, const std::string& label) {
  auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  content->set_halign(Gtk::Align::CENTER);
  content->append(*makeSymbol(symbol, 16));
  content->append(*Gtk::make_managed<Gtk::Label>(label));
  auto* button = Gtk::make_managed<Gtk::Button>();
  button->set_child(*content);
  setAccessibleLabel(*button, label);
  return button;
}

Gtk::Label* makeLabel(const std::string& text, std::initializer_list<const char*> styleClasses) {
  auto* label = Gtk::make_managed<Gtk::Label>(text);
  label->set_xalign(0.0F);
  label->set_wrap(true);
  label->set_wrap_mode(Pango::WrapMode::WORD_CHAR);
  for (const char* styleClass : styleClasses) {
    label->add_css_class(styleClass);
  }
  return label;
}

void removeChildren(Gtk::Box& box) {
  while (auto* child = box.get_first_child()) {
    box.remove(*child);
  }
}

Gtk::Widget* wrapWidget(GtkWidget* widget) {
  return Gtk::manage(Glib::wrap(widget));
}

}  // namespace tidewrack::ui
