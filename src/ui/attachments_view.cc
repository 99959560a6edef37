#include "ui/attachments_view.h"

#include <algorithm>

#include "platform/localized.h"
#include "reading/safe_file_name.h"
#include "ui/widgets.h"

namespace tidewrack::ui {

AttachmentsView::AttachmentsView(MessageDetail& detail)
    : detail_(detail), model_(AttachmentListModel::create()) {
  add_css_class("attachments");
  auto* label = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
  label->append(*makeSymbol("paperclip", 16));
  label->append(title_);
  title_.add_css_class("attachments-title");
  expander_.set_label_widget(*label);
  expander_.set_hexpand(true);
  setIdentifier(expander_, "messageDetail.attachments");
  makeList();
  expander_.set_child(scroller_);
  append(expander_);

  expander_.property_expanded().signal_changed().connect(
      [this] { detail_.isAttachmentsExpanded.set(expander_.get_expanded()); });
  subscriptions_.push_back(detail_.isAttachmentsExpanded.observe(
      [this] { expander_.set_expanded(detail_.isAttachmentsExpanded()); }));
  subscriptions_.push_back(detail_.attachments.observe([this] { showAttachments(); }));
  showAttachments();
}

void AttachmentsView::makeList() {
  auto factory = Gtk::SignalListItemFactory::create();
  factory->signal_setup().connect([this](const Glib::RefPtr<Gtk::ListItem>& item) {
    auto* row = Gtk::make_managed<AttachmentRowView>();
    row->signalSave().connect([this](std::size_t index) { save(index); });
    item->set_activatable(false);
    item->set_child(*row);
  });
  factory->signal_bind().connect([](const Glib::RefPtr<Gtk::ListItem>& item) {
    const auto attachment = std::dynamic_pointer_cast<AttachmentListModel::Item>(item->get_item());
    auto* row = dynamic_cast<AttachmentRowView*>(item->get_child());
    if (attachment && row != nullptr) {
      row->show(attachment->row());
    }
  });
  list_.set_model(Gtk::NoSelection::create(model_));
  list_.set_factory(factory);
  list_.add_css_class("attachment-list");
  scroller_.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  scroller_.set_child(list_);
}

void AttachmentsView::showAttachments() {
  const auto& attachments = detail_.attachments();
  title_.set_text(attachmentsTitle(attachments.size()));
  model_->replace(attachments);
  // A list view wants no height of its own.
  scroller_.set_min_content_height(rowHeight * std::min(static_cast<int>(attachments.size()), rowsShown));
  set_visible(!attachments.empty());
}

void AttachmentsView::save(std::size_t index) {
  auto* window = dynamic_cast<Gtk::Window*>(get_root());
  const auto message = detail_.message();
  if (window == nullptr || !message || index >= message->attachments.size()) {
    return;
  }
  chooser_ = Gtk::FileChooserNative::create(localized("save_as_button", "Save As…", "Save attachment action"),
                                            *window, Gtk::FileChooser::Action::SAVE);
  chooser_->set_modal(true);
  chooser_->set_create_folders(true);
  chooser_->set_current_name(safeFileName(message->attachments[index].fileName));
  // Under another message the same number would be another attachment.
  chooser_->signal_response().connect([this, message, index](int response) {
    const auto file = chooser_->get_file();
    chooser_.reset();
    if (response == Gtk::ResponseType::ACCEPT && file && !file->get_path().empty() &&
        detail_.message() == message) {
      detail_.saveAttachment(index, file->get_path());
    }
  });
  chooser_->show();
}

}  // namespace tidewrack::ui
