#include "ui/message_list_model.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tidewrack::ui {

MessageListItem::MessageListItem(guint position, std::shared_ptr<Alive> alive)
    : Glib::ObjectBase(typeid(MessageListItem)),
      message_(std::make_shared<const EmailMessage>()),
      position_(position),
      alive_(std::move(alive)) {
  alive_->emplace(position_, this);
}

MessageListItem::~MessageListItem() {
  alive_->erase(position_);
}

Glib::RefPtr<MessageListModel> MessageListModel::create() {
  return Glib::make_refptr_for_instance(new MessageListModel());
}

MessageListModel::MessageListModel()
    : Glib::ObjectBase(typeid(MessageListModel)), Gio::ListModel(), Glib::Object() {}

void MessageListModel::fill(MessageListItem& item) const {
  if (item.position_ < messages_.size()) {
    item.message_ = messages_[item.position_];
    const auto count = counts_->of(item.message_->conversationID);
    item.conversationCount_ = count == 0 ? 1 : count;
  }
}

bool MessageListModel::replace(SharedMessageList messages, std::shared_ptr<const ConversationCounts> counts) {
  constexpr std::size_t fewRows = 50;
  const auto changes =
      counts == counts_ ? SharedMessageList::differences(messages_, messages, fewRows) : std::nullopt;
  std::swap(messages_, messages);  // The old list goes at the end, when nobody asks for it any more.
  counts_ = std::move(counts);
  // What a row does may drop other items.
  std::vector<Glib::RefPtr<MessageListItem>> items;
  const auto keep = [&items](MessageListItem& item) {
    item.reference();
    items.push_back(Glib::make_refptr_for_instance(&item));
  };
  if (changes) {
    items.reserve(changes->size());
    for (const auto position : *changes) {
      if (const auto item = alive_->find(static_cast<guint>(position)); item != alive_->end()) {
        keep(*item->second);
      }
    }
  } else {
    items.reserve(alive_->size());
    for (const auto& [position, item] : *alive_) {
      if (position < messages_.size()) {
        keep(*item);
      }
    }
  }
  for (const auto& item : items) {
    fill(*item);
    if (item->changed_) {
      item->changed_();
    }
  }
  constexpr guint mostKept = 256;
  const guint before = announced_;
  announced_ = messages_.empty() ? std::min(before, mostKept) : static_cast<guint>(messages_.size());
  if (announced_ > before) {
    items_changed(before, 0, announced_ - before);
  } else if (announced_ < before) {
    items_changed(announced_, before - announced_, 0);
  }
  return changes.has_value();
}

GType MessageListModel::get_item_type_vfunc() {
  return G_TYPE_OBJECT;
}

guint MessageListModel::get_n_items_vfunc() {
  return announced_;
}

gpointer MessageListModel::get_item_vfunc(guint position) {
  if (position >= announced_) {
    return nullptr;
  }
  if (const auto known = alive_->find(position); known != alive_->end()) {
    return g_object_ref(known->second->gobj());
  }
  ++itemsMade_;
  const auto item = Glib::make_refptr_for_instance(new MessageListItem(position, alive_));
  fill(*item);
  return g_object_ref(item->gobj());
}

}  // namespace tidewrack::ui
