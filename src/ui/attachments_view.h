#pragma once

#include <cstddef>
#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "reading/message_detail.h"
#include "ui/attachment_list.h"

namespace tidewrack::ui {

/// The attachments of a message under its body, folded at first. Each can be saved, with its button or, while
/// it has the focus, with Control and S.
class AttachmentsView : public Gtk::Box {
 public:
  explicit AttachmentsView(MessageDetail& detail);

  static constexpr int rowHeight = 52;
  static constexpr int rowsShown = 4;

 private:
  void makeList();
  void showAttachments();
  void save(std::size_t index);
  void addSaveShortcut();
  bool saveFocused();

  MessageDetail& detail_;
  Gtk::Expander expander_;
  Gtk::Label title_;
  Gtk::ScrolledWindow scroller_;
  Gtk::ListView list_;
  Glib::RefPtr<AttachmentListModel> model_;
  Glib::RefPtr<Gtk::FileChooserNative> chooser_;  ///< Kept until it has answered.
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
