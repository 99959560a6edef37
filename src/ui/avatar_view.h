#pragma once

#include <string>

#include <gtkmm.h>

#include "mail/records.h"
#include "reading/sender_avatar.h"

namespace tidewrack::ui {

/// A sender as a round picture: a coloured circle with initials, or the sender's own picture. Hidden from
/// assistive technology, which reads the sender's name beside it.
class AvatarView : public Gtk::Box {
 public:
  /// `size`: width and height in pixels. The others outlive the view.
  AvatarView(int size, GravatarService& pictures, Settings& settings);

  void show(const EmailAddress& address);

 private:
  void showPicture();

  Gtk::Label initials_;
  Gtk::Picture picture_;
  SenderAvatar avatar_;
  std::string colourClass_;
};

}  // namespace tidewrack::ui
