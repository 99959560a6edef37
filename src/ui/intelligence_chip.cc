#include "ui/intelligence_chip.h"

#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int iconSize = 12;

}  // namespace

IntelligenceChip::IntelligenceChip(std::string_view symbol, const std::string& title)
    : icon_(makeSymbol(symbol, iconSize)) {
  add_css_class("intelligence-chip");
  spinner_.set_size_request(iconSize, iconSize);
  spinner_.set_visible(false);
  content_.append(*icon_);
  content_.append(spinner_);
  content_.append(*Gtk::make_managed<Gtk::Label>(title));
  set_child(content_);
  setAccessibleLabel(*this, title);
}

void IntelligenceChip::showRunning(bool isRunning) {
  icon_->set_visible(!isRunning);
  spinner_.set_visible(isRunning);
  spinner_.set_spinning(isRunning);
  set_sensitive(!isRunning);
}

}  // namespace tidewrack::ui
