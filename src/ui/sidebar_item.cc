#include "ui/sidebar_item.h"

namespace tidewrack::ui {

SidebarItem::SidebarItem(Kind kind) : Glib::ObjectBase(typeid(SidebarItem)), kind_(kind) {}

Glib::RefPtr<SidebarItem> SidebarItem::heading(const std::string& title) {
  auto item = Glib::make_refptr_for_instance(new SidebarItem(Kind::heading));
  item->title_ = title;
  return item;
}

Glib::RefPtr<SidebarItem> SidebarItem::row(const SidebarRow& row) {
  auto item = Glib::make_refptr_for_instance(new SidebarItem(Kind::row));
  item->row_ = row;
  if (!row.children.empty()) {
    item->children_ = Gio::ListStore<SidebarItem>::create();
    for (const SidebarRow& child : row.children) {
      item->children_->append(SidebarItem::row(child));
    }
    item->row_.children.clear();  // They live in their own items.
  }
  return item;
}

Glib::RefPtr<SidebarItem> SidebarItem::progress(const CategorizingProgressRow& progress) {
  auto item = Glib::make_refptr_for_instance(new SidebarItem(Kind::progress));
  item->progress_ = progress;
  return item;
}

bool SidebarItem::isSameLine(const SidebarItem& other) const {
  if (kind_ != other.kind_ || (kind_ == Kind::heading && title_ != other.title_) ||
      (kind_ == Kind::row && row_.selection != other.row_.selection) ||
      static_cast<bool>(children_) != static_cast<bool>(other.children_)) {
    return false;
  }
  if (!children_) {
    return true;
  }
  const guint count = children_->get_n_items();
  if (count != other.children_->get_n_items()) {
    return false;
  }
  for (guint position = 0; position < count; ++position) {
    if (!children_->get_item(position)->isSameLine(*other.children_->get_item(position))) {
      return false;
    }
  }
  return true;
}

void SidebarItem::take(const SidebarItem& other) {
  if (row_ != other.row_ || progress_ != other.progress_) {
    row_ = other.row_;
    progress_ = other.progress_;
    changed_.emit();
  }
  if (children_) {
    for (guint position = 0; position < children_->get_n_items(); ++position) {
      children_->get_item(position)->take(*other.children_->get_item(position));
    }
  }
}

}  // namespace tidewrack::ui
