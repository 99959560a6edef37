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
  Gtk::Box rows_{Gtk::Orientation::VERTICAL, 4};
  Gtk::Box badges_;
  IntelligenceRowView intelligence_;
  Gtk::Box pickers_{Gtk::Orientation::HORIZONTAL, 12};
  SegmentedChoice* bodyPicker_ = nullptr;
  SegmentedChoice* backgroundPicker_ = nullptr;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
