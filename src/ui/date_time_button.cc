#include "ui/date_time_button.h"

#include <iomanip>
#include <utility>

#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

Glib::DateTime localTime(Date date) {
  return Glib::DateTime::create_now_local(
      std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count());
}

void setUpTwoDigits(Gtk::SpinButton& button, double last) {
  button.set_range(0, last);
  button.set_increments(1, 10);
  button.set_wrap(true);
  button.set_numeric(true);
  button.set_width_chars(2);
  button.set_orientation(Gtk::Orientation::VERTICAL);
  button.signal_output().connect(
      [&button] {
        button.set_text(Glib::ustring::format(std::setfill(L'0'), std::setw(2), button.get_value_as_int()));
        return true;
      },
      false);
}

}  // namespace

DateTimeButton::DateTimeButton(const std::string& accessibleLabel, std::function<void(Date)> onChosen)
    : onChosen_(std::move(onChosen)) {
  set_valign(Gtk::Align::CENTER);
  makePopover(accessibleLabel);
}

void DateTimeButton::makePopover(const std::string& accessibleLabel) {
  setUpTwoDigits(hour_, 23);
  setUpTwoDigits(minute_, 59);
  auto* time = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
  time->set_halign(Gtk::Align::CENTER);
  time->append(hour_);
  time->append(*Gtk::make_managed<Gtk::Label>(":"));
  time->append(minute_);
  auto* column = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 8);
  column->append(calendar_);
  column->append(*time);
  auto* popover = Gtk::make_managed<Gtk::Popover>();
  popover->set_child(*column);
  set_popover(*popover);
  setAccessibleLabel(*this, accessibleLabel);
  setAccessibleLabel(calendar_, accessibleLabel);
  calendar_.signal_day_selected().connect([this] { choose(); });
  hour_.signal_value_changed().connect([this] { choose(); });
  minute_.signal_value_changed().connect([this] { choose(); });
}

void DateTimeButton::setDate(Date date) {
  date_ = date;
  set_label(formatMediumDateShortTime(date));
  const Glib::DateTime time = localTime(date);
  isUpdating_ = true;
  calendar_.select_day(time);
  hour_.set_value(time.get_hour());
  minute_.set_value(time.get_minute());
  isUpdating_ = false;
}

void DateTimeButton::choose() {
  if (isUpdating_) {
    return;
  }
  const Glib::DateTime day = calendar_.get_date();
  const Glib::DateTime time = Glib::DateTime::create_local(
      day.get_year(), day.get_month(), day.get_day_of_month(), hour_.get_value_as_int(),
      minute_.get_value_as_int(), localTime(date_).get_second());
  const Date chosen{std::chrono::seconds(time.to_unix())};
  setDate(chosen);
  onChosen_(chosen);
}

}  // namespace tidewrack::ui
