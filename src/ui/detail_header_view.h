#pragma once

#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "reading/message_detail.h"
#include "ui/avatar_view.h"
#include "ui/fitting_scroller.h"
#include "ui/intelligence_row_view.h"
#include "ui/segmented_choice.h"
#include "ui/wrapped_label.h"

namespace tidewrack::ui {

/// The head of a message: avatar, subject, the rows under it, the badges, the model's row and the two
/// pickers. Follows the detail's fields. What stands above the pickers scrolls by itself where it is higher
/// than `maximumHeight`, so that a hundred recipients leave room for the mail.
class DetailHeaderView : public Gtk::Box {
 public:
  /// Both outlive the view.
  DetailHeaderView(MessageDetail& detail, Settings& settings);

  static constexpr int maximumHeight = 320;

 private:
  void makeTop();
  void makePickers();
  void showMessage();
  void showRows();
  void showBadges();
  void showPickers();

  MessageDetail& detail_;
  Gtk::Box column_{Gtk::Orientation::VERTICAL, 12};
  FittingScroller scroller_{column_, maximumHeight};
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
