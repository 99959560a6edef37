#pragma once

#include <cstdint>

#include <gtkmm.h>

#include "mail/records.h"
#include "ui/avatar_view.h"

namespace tidewrack::ui {

/// One row of the message list. Some two hundred live at a time and are given other messages as the list
/// scrolls, so the widgets are made once and only their texts change.
class MessageRowView : public Gtk::Box {
 public:
  MessageRowView();

  void show(const EmailMessage& message, std::int64_t conversationCount);

 private:
  AvatarView avatar_;
  Gtk::Label subject_;
  Gtk::Label date_;
  Gtk::Label sender_;
  Gtk::Label snippet_;
  Gtk::Box footer_{Gtk::Orientation::HORIZONTAL, 12};
  Gtk::Box attachments_{Gtk::Orientation::HORIZONTAL, 4};
  Gtk::Label attachmentsText_;
  Gtk::Box conversation_{Gtk::Orientation::HORIZONTAL, 4};
  Gtk::Label conversationText_;
};

}  // namespace tidewrack::ui
