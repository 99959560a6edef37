#include "ui/sidebar_item.h"

#include <algorithm>
#include <unordered_set>

namespace tidewrack::ui {
namespace {

// The case and its payload.
std::string keyOf(const SidebarSelection& selection) {
  struct Payload {
    std::string operator()(const SidebarSelection::Library& chosen) const { return chosen.id.string(); }
    std::string operator()(const SidebarSelection::Category& chosen) const { return chosen.name.string(); }
    std::string operator()(const SidebarSelection::Label& chosen) const { return chosen.path.string(); }
    std::string operator()(const SidebarSelection::Mailbox& chosen) const {
      return std::string(appearance(chosen.mailbox).rawValue);
    }
    std::string operator()(const SidebarSelection::GmailCategory& chosen) const {
      return std::string(appearance(chosen.category).rawValue);
    }
    std::string operator()(const SidebarSelection::AllLibraries&) const { return {}; }
  };
  return std::to_string(selection.value().index()) + ":" + std::visit(Payload(), selection.value());
}

std::vector<Glib::RefPtr<SidebarItem>> itemsOf(Gio::ListStore<SidebarItem>& store) {
  std::vector<Glib::RefPtr<SidebarItem>> items;
  items.reserve(store.get_n_items());
  for (guint position = 0; position < store.get_n_items(); ++position) {
    items.push_back(store.get_item(position));
  }
  return items;
}

}  // namespace

SidebarItem::SidebarItem(Kind kind) : Glib::ObjectBase(typeid(SidebarItem)), kind_(kind) {}

Glib::RefPtr<SidebarItem> SidebarItem::heading(const std::string& title) {
  auto item = Glib::make_refptr_for_instance(new SidebarItem(Kind::heading));
  item->title_ = title;
  item->key_ = "heading:" + title;
  return item;
}

Glib::RefPtr<SidebarItem> SidebarItem::row(const SidebarRow& row) {
  auto item = Glib::make_refptr_for_instance(new SidebarItem(Kind::row));
  item->row_ = row;
  item->key_ = keyOf(row.selection);
  if (!row.children.empty()) {
    item->children_ = Gio::ListStore<SidebarItem>::create();
    std::vector<Glib::RefPtr<SidebarItem>> children;
    for (const SidebarRow& child : row.children) {
      children.push_back(SidebarItem::row(child));
    }
    item->children_->splice(0, 0, children);
    item->row_.children.clear();  // They live in their own items.
  }
  return item;
}

Glib::RefPtr<SidebarItem> SidebarItem::progress(const CategorizingProgressRow& progress) {
  auto item = Glib::make_refptr_for_instance(new SidebarItem(Kind::progress));
  item->progress_ = progress;
  item->key_ = "progress";
  return item;
}

// A row that gains its first child, or loses its last, is another line: GTK asks once whether it unfolds.
bool SidebarItem::isSameLine(const SidebarItem& other) const {
  return key_ == other.key_ && static_cast<bool>(children_) == static_cast<bool>(other.children_);
}

void SidebarItem::take(const SidebarItem& other) {
  if (row_ != other.row_ || progress_ != other.progress_) {
    row_ = other.row_;
    progress_ = other.progress_;
    changed_.emit();
  }
  if (children_) {
    auto children = itemsOf(*other.children_);
    bringInLine(*children_, children);
  }
}

// Mostly counts alone have changed.
bool SidebarItem::takeInPlace(const std::vector<Glib::RefPtr<SidebarItem>>& present,
                              std::vector<Glib::RefPtr<SidebarItem>>& wanted) {
  if (!std::ranges::equal(present, wanted,
                          [](const auto& one, const auto& other) { return one->isSameLine(*other); })) {
    return false;
  }
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (wanted[i] != present[i]) {
      present[i]->take(*wanted[i]);
      wanted[i] = present[i];
    }
  }
  return true;
}

void SidebarItem::bringInLine(Gio::ListStore<SidebarItem>& store,
                              std::vector<Glib::RefPtr<SidebarItem>>& wanted) {
  const auto before = itemsOf(store);
  if (takeInPlace(before, wanted)) {
    return;
  }
  std::unordered_set<std::string> present;
  for (const auto& item : before) {
    present.insert(item->key());
  }
  guint position = 0;
  for (std::size_t i = 0; i < wanted.size(); ++i, ++position) {
    auto& item = wanted[i];
    if (!present.contains(item->key())) {
      // A run of new lines is put in at once.
      std::size_t end = i + 1;
      while (end < wanted.size() && !present.contains(wanted[end]->key())) {
        ++end;
      }
      store.splice(position, 0,
                   {wanted.begin() + static_cast<std::ptrdiff_t>(i),
                    wanted.begin() + static_cast<std::ptrdiff_t>(end)});
      position += static_cast<guint>(end - i - 1);
      i = end - 1;
      continue;
    }
    guint found = position;
    while (found < store.get_n_items() && store.get_item(found)->key() != item->key()) {
      ++found;
    }
    if (found == store.get_n_items()) {
      store.insert(position, item);  // It stood further up.
      continue;
    }
    if (found > position) {
      store.splice(position, found - position, {});
    }
    const auto there = store.get_item(position);
    if (there == item) {
      continue;
    }
    if (there->isSameLine(*item)) {
      there->take(*item);
      item = there;
    } else {
      store.splice(position, 1, {item});
    }
  }
  store.splice(position, store.get_n_items() - position, {});
}

}  // namespace tidewrack::ui
