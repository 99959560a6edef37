#pragma once

#include <string>

#include <gtkmm.h>

#include "mail/records.h"

namespace tidewrack::ui {

/// A sender as a round picture: a coloured circle with initials. Hidden from assistive technology, which
/// reads the sender's name beside it.
class AvatarView : public Gtk::Box {
 public:
  /// `size`: width and height in pixels.
  explicit AvatarView(int size);

  void show(const EmailAddress& address);

 private:
  Gtk::Label initials_;
  std::string colourClass_;
};

}  // namespace tidewrack::ui
