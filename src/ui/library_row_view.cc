#include "ui/library_row_view.h"

#include <utility>

#include "platform/localized.h"
#include "reading/display_text.h"
#include "ui/style.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int iconSize = 28;
constexpr int markSize = 18;

const char* identifier(LibraryRowAction action) {
  switch (action) {
    case LibraryRowAction::select:
      return "library.select";
    case LibraryRowAction::rename:
      return "library.rename";
    case LibraryRowAction::remove:
      break;
  }
  return "library.delete";
}

Gtk::Label& asLine(Gtk::Label& label, const char* styleClass) {
  label.set_xalign(0.0F);
  label.set_ellipsize(Pango::EllipsizeMode::END);
  label.add_css_class(styleClass);
  return label;
}

}  // namespace

LibraryRowView::LibraryRowView(std::function<void(LibraryRowAction)> act)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL, 12), act_(std::move(act)) {
  add_css_class("mail-library-row");
  icon_.set_pixel_size(iconSize);
  icon_.add_css_class("mail-library-icon");
  append(icon_);

  auto* title = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  title->append(asLine(name_, "mail-library-name"));
  badge_.add_css_class("pill-badge");
  badge_.add_css_class(tintClass("blue"));
  title->append(badge_);
  auto* counts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
  counts->add_css_class("row-footer");
  counts->append(*makeSymbol("envelope.fill", 12));
  counts->append(count_);
  auto* texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 3);
  texts->set_hexpand(true);
  texts->append(*title);
  texts->append(*counts);
  asLine(origin_, "row-footer").set_ellipsize(Pango::EllipsizeMode::MIDDLE);
  texts->append(origin_);
  append(*texts);

  check_.set_pixel_size(markSize);
  setSymbol(check_, "checkmark.circle.fill", "green");
  setIdentifier(check_, "library.selected");
  setAccessibleLabel(check_, localized("library_selected", "Selected", "Mark of the selected library"));
  append(check_);
  for (const auto action : {LibraryRowAction::select, LibraryRowAction::rename, LibraryRowAction::remove}) {
    append(*makeButton(action));
  }
  offerTooltip(origin_, [this] { return origin_.get_text().raw(); });
}

Gtk::Button* LibraryRowView::makeButton(LibraryRowAction action) {
  auto* button = Gtk::make_managed<Gtk::Button>();
  button->set_child(*makeSymbol(icon(action), 16, action == LibraryRowAction::remove ? "red" : ""));
  button->add_css_class("flat");
  button->set_valign(Gtk::Align::CENTER);
  button->set_tooltip_text(help(action));
  setAccessibleLabel(*button, help(action));
  setIdentifier(*button, identifier(action));
  button->signal_clicked().connect([this, action] { act_(action); });
  return button;
}

void LibraryRowView::show(const LibraryRow& row) {
  setIdentifier(*this, "library." + row.id.string());
  setSymbol(icon_, row.icon);
  name_.set_text(shortenedLine(row.name));
  badge_.set_text(row.badge);
  badge_.set_visible(!row.badge.empty());
  count_.set_text(row.countText);
  origin_.set_text(shortenedLine(row.origin));
  origin_.set_visible(!row.origin.empty());
  check_.set_visible(row.isSelected);
}

}  // namespace tidewrack::ui
