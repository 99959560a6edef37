#pragma once

#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "reading/message_detail.h"
#include "ui/avatar_view.h"
#include "ui/intelligence_row_view.h"
#include "ui/segmented_choice.h"
#include "ui/wrapped_label.h"

namespace tidewrack::ui {

/// The head of a message: avatar, subject, the rows under it, the badges, the model's row and the two
/// pickers. Follows the detail's fields. A head that is higher than `maximumHeight` scrolls by itself, so
/// that a hundred recipients leave room for the mail.
class DetailHeaderView : public Gtk::ScrolledWindow {
 public:
  /// Both outlive the view.
  DetailHeaderView(MessageDetail& detail, Settings& settings);

  static constexpr int maximumHeight = 320;

 protected:
  // As high as the head is at the width it gets: the scroller itself asks for that of the longest lines.
  Gtk::SizeRequestMode get_request_mode_vfunc() const override;
  void measure_vfunc(Gtk::Orientation orientation, int for_size, int& minimum, int& natural,
                     int& minimum_baseline, int& natural_baseline) const override;

 private:
  void makeTop();
  void makePickers();
  void showMessage();
  void showRows();
  void showBadges();
  void showPickers();

  MessageDetail& detail_;
  Gtk::Box column_{Gtk::Orientation::VERTICAL, 12};
  AvatarView avatar_;
  WrappedLabel subject_;
  Gtk::Box lines_{Gtk::Orientation::VERTICAL, 8};
  Gtk::Box* rows_ = nullptr;
  Gtk::Box badges_;
  IntelligenceRowView intelligence_;
  Gtk::Box pickers_{Gtk::Orientation::HORIZONTAL, 12};
  SegmentedChoice* bodyPicker_ = nullptr;
  SegmentedChoice* backgroundPicker_ = nullptr;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
