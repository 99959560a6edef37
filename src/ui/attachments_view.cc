#include "ui/attachments_view.h"

#include "platform/localized.h"
#include "reading/safe_file_name.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int rowIconSize = 20;

std::string saveTitle() {
  return localized("save_as_button", "Save As…", "Save attachment action");
}

}  // namespace

AttachmentsView::AttachmentsView(MessageDetail& detail) : detail_(detail) {
  add_css_class("attachments");
  auto* label = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
  label->append(*makeSymbol("paperclip", 16));
  label->append(title_);
  title_.add_css_class("attachments-title");
  expander_.set_label_widget(*label);
  expander_.set_hexpand(true);
  setIdentifier(expander_, "messageDetail.attachments");

  list_.set_selection_mode(Gtk::SelectionMode::NONE);
  list_.add_css_class("attachment-list");
  auto* scroller = Gtk::make_managed<Gtk::ScrolledWindow>();
  scroller->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  scroller->set_propagate_natural_height(true);
  scroller->set_max_content_height(maximumHeight);
  scroller->set_child(list_);
  expander_.set_child(*scroller);
  append(expander_);

  expander_.property_expanded().signal_changed().connect(
      [this] { detail_.isAttachmentsExpanded.set(expander_.get_expanded()); });
  subscriptions_.push_back(detail_.isAttachmentsExpanded.observe(
      [this] { expander_.set_expanded(detail_.isAttachmentsExpanded()); }));
  subscriptions_.push_back(detail_.attachments.observe([this] { showAttachments(); }));
  showAttachments();
}

void AttachmentsView::showAttachments() {
  while (auto* row = list_.get_row_at_index(0)) {
    list_.remove(*row);
  }
  const auto& attachments = detail_.attachments();
  title_.set_text(attachmentsTitle(attachments.size()));
  for (const AttachmentRow& attachment : attachments) {
    list_.append(*makeRow(attachment));
  }
  set_visible(!attachments.empty());
}

Gtk::Widget* AttachmentsView::makeRow(const AttachmentRow& row) {
  auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 10);
  line->add_css_class("attachment-row");
  line->append(*makeSymbol(row.icon, rowIconSize));
  auto* texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 2);
  texts->set_hexpand(true);
  auto* name = makeLabel(row.fileName);
  name->set_wrap(false);
  name->set_ellipsize(Pango::EllipsizeMode::MIDDLE);
  name->set_tooltip_text(row.fileName);
  texts->append(*name);
  texts->append(*makeLabel(row.sizeText, {"row-footer"}));
  line->append(*texts);
  auto* button = makeIconButton("square.and.arrow.down", saveTitle());
  button->set_valign(Gtk::Align::CENTER);
  button->add_css_class("flat");
  setIdentifier(*button, "messageDetail.saveAttachment." + std::to_string(row.index));
  button->signal_clicked().connect([this, row] { save(row); });
  line->append(*button);

  auto* listRow = Gtk::make_managed<Gtk::ListBoxRow>();
  listRow->set_activatable(false);
  listRow->set_child(*line);
  return listRow;
}

void AttachmentsView::save(const AttachmentRow& row) {
  auto* window = dynamic_cast<Gtk::Window*>(get_root());
  if (window == nullptr) {
    return;
  }
  chooser_ = Gtk::FileChooserNative::create(saveTitle(), *window, Gtk::FileChooser::Action::SAVE);
  chooser_->set_modal(true);
  chooser_->set_create_folders(true);
  chooser_->set_current_name(safeFileName(row.fileName));
  // Under another message the same number would be another attachment.
  const auto message = detail_.message();
  chooser_->signal_response().connect([this, message, index = row.index](int response) {
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
