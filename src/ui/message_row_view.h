#pragma once

#include <cstdint>

#include <gtkmm.h>

#include "mail/records.h"
#include "reading/avatar.h"
#include "reading/message_row.h"
#include "reading/sender_avatar.h"

namespace tidewrack::ui {

/// One row of the message list. Some two hundred live at a time, most of them out of sight, and are given
/// other messages as the list scrolls: so a row is a single widget that knows its height without looking at
/// its texts and lays them out only when it is drawn.
class MessageRowView : public Gtk::Widget {
 public:
  /// Both outlive the row.
  MessageRowView(GravatarService& pictures, Settings& settings);

  void show(const EmailMessage& message, std::int64_t conversationCount);

 protected:
  Gtk::SizeRequestMode get_request_mode_vfunc() const override;
  void measure_vfunc(Gtk::Orientation orientation, int for_size, int& minimum, int& natural,
                     int& minimum_baseline, int& natural_baseline) const override;
  void snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>& snapshot) override;

 private:
  MessageRow row_;
  std::string initials_;
  RGBColor avatarColour_;
  SenderAvatar avatar_;
};

}  // namespace tidewrack::ui
