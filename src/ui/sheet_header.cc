#include "ui/sheet_header.h"

#include <utility>

#include "platform/localized.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int placeholderIconSize = 56;

}  // namespace

SheetHeader::SheetHeader(const std::string& title, const std::function<void()>& close) {
  add_css_class("sheet-header");
  close_.set_label(localized("close_button", "Close", "Close button"));
  close_.signal_clicked().connect(close);
  set_start_widget(close_);
  auto* label = Gtk::make_managed<Gtk::Label>(title);
  label->add_css_class("sheet-title");
  label->set_ellipsize(Pango::EllipsizeMode::END);
  set_center_widget(*label);
}

SheetHeader* makeSheetHeader(const std::string& title, const std::function<void()>& close) {
  return Gtk::make_managed<SheetHeader>(title, close);
}

Gtk::Box* makeSheetPlaceholder(std::string_view symbol, const std::string& text,
                               const std::string& explanation) {
  auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 12);
  box->set_valign(Gtk::Align::CENTER);
  box->set_vexpand(true);
  box->set_margin(24);
  auto* icon = makeSymbol(symbol, placeholderIconSize);
  icon->add_css_class("welcome-icon");
  box->append(*icon);
  const auto add = [box](const std::string& line, const char* styleClass) {
    auto* label = makeLabel(line, {styleClass});
    label->set_xalign(0.5F);
    label->set_justify(Gtk::Justification::CENTER);
    label->set_max_width_chars(44);
    box->append(*label);
  };
  add(text, "title-3");
  if (!explanation.empty()) {
    add(explanation, "row-secondary");
  }
  return box;
}

}  // namespace tidewrack::ui
