#include "ui/attachment_list.h"

#include <utility>

#include "platform/localized.h"
#include "reading/display_text.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int rowIconSize = 20;

}  // namespace

Glib::RefPtr<AttachmentListModel::Item> AttachmentListModel::Item::create(AttachmentRow row) {
  return Glib::make_refptr_for_instance(new Item(std::move(row)));
}

AttachmentListModel::Item::Item(AttachmentRow row)
    : Glib::ObjectBase(typeid(AttachmentListModel::Item)), row_(std::move(row)) {}

Glib::RefPtr<AttachmentListModel> AttachmentListModel::create() {
  return Glib::make_refptr_for_instance(new AttachmentListModel());
}

AttachmentListModel::AttachmentListModel()
    : Glib::ObjectBase(typeid(AttachmentListModel)), Gio::ListModel(), Glib::Object() {}

void AttachmentListModel::replace(std::vector<AttachmentRow> rows) {
  const auto before = static_cast<guint>(rows_.size());
  rows_ = std::move(rows);
  items_changed(0, before, static_cast<guint>(rows_.size()));
}

GType AttachmentListModel::get_item_type_vfunc() {
  return G_TYPE_OBJECT;
}

guint AttachmentListModel::get_n_items_vfunc() {
  return static_cast<guint>(rows_.size());
}

gpointer AttachmentListModel::get_item_vfunc(guint position) {
  return position < rows_.size() ? g_object_ref(Item::create(rows_[position])->gobj()) : nullptr;
}

AttachmentRowView::AttachmentRowView() : Gtk::Box(Gtk::Orientation::HORIZONTAL, 10) {
  add_css_class("attachment-row");
  icon_.set_pixel_size(rowIconSize);
  append(icon_);
  auto* texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 2);
  texts->set_hexpand(true);
  name_.set_xalign(0.0F);
  name_.set_ellipsize(Pango::EllipsizeMode::MIDDLE);
  size_.set_xalign(0.0F);
  size_.add_css_class("row-footer");
  texts->append(name_);
  texts->append(size_);
  append(*texts);
  button_ = makeIconButton("square.and.arrow.down",
                           localized("save_as_button", "Save As…", "Save attachment action"));
  button_->set_valign(Gtk::Align::CENTER);
  button_->add_css_class("flat");
  button_->signal_clicked().connect([this] { save_.emit(index_); });
  append(*button_);
  offerTooltip(name_, [this] { return name_.get_text().raw(); });
}

void AttachmentRowView::show(const AttachmentRow& row) {
  index_ = row.index;
  setSymbol(icon_, row.icon);
  name_.set_text(shortenedLine(row.fileName));
  size_.set_text(row.sizeText);
  setIdentifier(*button_, "messageDetail.saveAttachment." + std::to_string(row.index));
}

}  // namespace tidewrack::ui
