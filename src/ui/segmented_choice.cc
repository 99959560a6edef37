#include "ui/segmented_choice.h"

#include "ui/widgets.h"

namespace tidewrack::ui {

SegmentedChoice::SegmentedChoice(const std::string& title, const std::vector<Option>& options) {
  add_css_class("linked");
  add_css_class("segmented");
  setAccessibleLabel(*this, title);
  for (const Option& option : options) {
    auto* button = Gtk::make_managed<Gtk::ToggleButton>();
    if (option.symbol.empty()) {
      button->set_label(option.title);
      button->set_hexpand(true);
    } else {
      button->set_child(*makeSymbol(option.symbol, 16));
      button->set_tooltip_text(option.title);
      setAccessibleLabel(*button, option.title);
    }
    if (!buttons_.empty()) {
      button->set_group(*buttons_.front());
    }
    const std::size_t index = buttons_.size();
    button->signal_toggled().connect([this, button, index] {
      if (!isUpdating_ && button->get_active()) {
        chosen_.emit(index);
      }
    });
    buttons_.push_back(button);
    append(*button);
  }
}

void SegmentedChoice::select(std::size_t index) {
  isUpdating_ = true;
  buttons_[index]->set_active(true);
  isUpdating_ = false;
}

}  // namespace tidewrack::ui
