#include "ui/attachments_view.h"

#include <algorithm>

#include "platform/localized.h"
#include "reading/safe_file_name.h"
#include "ui/widgets.h"

namespace tidewrack::ui {

namespace {

using Focus = gboolean (*)(GtkWidget*, GtkDirectionType);
Focus originalFocus = nullptr;

// GTK's expander, once it has the keyboard, gives it to itself: the Tab key never left it.
gboolean moveFocus(GtkWidget* widget, GtkDirectionType direction) {
  if (gtk_widget_is_focus(widget) == FALSE) {
    return originalFocus(widget, direction);
  }
  const bool isForward = direction == GTK_DIR_TAB_FORWARD || direction == GTK_DIR_DOWN;
  GtkWidget* child = gtk_expander_get_child(GTK_EXPANDER(widget));
  const bool isOpen = gtk_expander_get_expanded(GTK_EXPANDER(widget)) != FALSE && child != nullptr;
  return isForward && isOpen ? gtk_widget_child_focus(child, direction) : FALSE;
}

void letKeyboardLeave(Gtk::Expander& expander) {
  GtkWidgetClass* widgets = GTK_WIDGET_GET_CLASS(expander.gobj());
  if (widgets->focus != &moveFocus) {
    originalFocus = widgets->focus;
    widgets->focus = &moveFocus;
  }
}

}  // namespace

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
  letKeyboardLeave(expander_);
  makeList();
  addSaveShortcut();
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
  setAccessibleLabel(list_, attachmentsTitle(attachments.size()));
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
  const EmailAttachment attachment = message->attachments[index];
  chooser_->set_current_name(safeFileName(attachment.fileName));
  // Another message may be shown when the answer comes; what was asked for is saved.
  chooser_->signal_response().connect([this, attachment](int response) {
    const auto file = chooser_->get_file();
    chooser_.reset();
    if (response == Gtk::ResponseType::ACCEPT && file && !file->get_path().empty()) {
      detail_.saveAttachment(attachment, file->get_path());
    }
  });
  chooser_->show();
}

void AttachmentsView::addSaveShortcut() {
  auto shortcuts = Gtk::ShortcutController::create();
  shortcuts->add_shortcut(Gtk::Shortcut::create(
      Gtk::KeyvalTrigger::create(GDK_KEY_s, Gdk::ModifierType::CONTROL_MASK),
      Gtk::CallbackAction::create([this](Gtk::Widget&, const Glib::VariantBase&) { return saveFocused(); })));
  add_controller(shortcuts);
}

// The focus is on a row's button, or on the list's item around the row.
bool AttachmentsView::saveFocused() {
  auto* window = dynamic_cast<Gtk::Window*>(get_root());
  Gtk::Widget* focus = window != nullptr ? window->get_focus() : nullptr;
  auto* row = focus != nullptr ? dynamic_cast<AttachmentRowView*>(focus->get_first_child()) : nullptr;
  for (auto* widget = focus; row == nullptr && widget != nullptr && widget != this;
       widget = widget->get_parent()) {
    row = dynamic_cast<AttachmentRowView*>(widget);
  }
  if (row == nullptr) {
    return false;
  }
  save(row->index());
  return true;
}

}  // namespace tidewrack::ui
