#pragma once

#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "reading/message_detail.h"

namespace tidewrack::ui {

/// The attachments of a message under its body, folded at first. A row can be saved.
class AttachmentsView : public Gtk::Box {
 public:
  explicit AttachmentsView(MessageDetail& detail);

  static constexpr int maximumHeight = 190;

 private:
  void showAttachments();
  Gtk::Widget* makeRow(const AttachmentRow& row);
  void save(const AttachmentRow& row);

  MessageDetail& detail_;
  Gtk::Expander expander_;
  Gtk::Label title_;
  Gtk::ListBox list_;
  Glib::RefPtr<Gtk::FileChooserNative> chooser_;  ///< Kept until it has answered.
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
