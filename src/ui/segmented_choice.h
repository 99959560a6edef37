#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gtkmm.h>

namespace tidewrack::ui {

/// A row of linked buttons of which one is pressed: a choice among few.
class SegmentedChoice : public Gtk::Box {
 public:
  struct Option {
    std::string title;
    std::string_view symbol;  ///< Platform symbol name; where there is one, the title becomes the tip.
  };

  SegmentedChoice(const std::string& title, const std::vector<Option>& options);

  /// Presses a button without telling.
  void select(std::size_t index);
  /// The user has pressed another button.
  sigc::signal<void(std::size_t index)>& signalChosen() { return chosen_; }

 private:
  std::vector<Gtk::ToggleButton*> buttons_;
  bool isUpdating_ = false;
  sigc::signal<void(std::size_t)> chosen_;
};

}  // namespace tidewrack::ui
