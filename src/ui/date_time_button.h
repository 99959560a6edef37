#pragma once

#include <functional>

#include <gtkmm.h>

#include "platform/date.h"

namespace tidewrack::ui {

/// A button that shows an instant and opens a calendar with hour and minute to choose another, in the time
/// zone of the system. What is chosen keeps the seconds of what was there. Main thread only.
class DateTimeButton : public Gtk::MenuButton {
 public:
  /// `onChosen` is called for what the user chooses, never for a date that is set.
  DateTimeButton(const std::string& accessibleLabel, std::function<void(Date)> onChosen);

  void setDate(Date date);
  [[nodiscard]] Date date() const { return date_; }

 private:
  void makePopover(const std::string& accessibleLabel);
  void choose();

  std::function<void(Date)> onChosen_;
  Gtk::Calendar calendar_;
  Gtk::SpinButton hour_;
  Gtk::SpinButton minute_;
  Date date_{};
  bool isUpdating_ = false;
};

}  // namespace tidewrack::ui
