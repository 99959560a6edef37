#include "ui/message_list_model.h"

#include <utility>

namespace tidewrack::ui {

Glib::RefPtr<MessageListItem> MessageListItem::create(std::shared_ptr<const EmailMessage> message,
                                                      std::int64_t conversationCount) {
  return Glib::make_refptr_for_instance(new MessageListItem(std::move(message), conversationCount));
}

MessageListItem::MessageListItem(std::shared_ptr<const EmailMessage> message, std::int64_t conversationCount)
    : Glib::ObjectBase(typeid(MessageListItem)),
      message_(std::move(message)),
      conversationCount_(conversationCount) {}

Glib::RefPtr<MessageListModel> MessageListModel::create() {
  return Glib::make_refptr_for_instance(new MessageListModel());
}

MessageListModel::MessageListModel()
    : Glib::ObjectBase(typeid(MessageListModel)), Gio::ListModel(), Glib::Object() {}

bool MessageListModel::replace(SharedMessageList messages, std::shared_ptr<const ConversationCounts> counts) {
  if (counts == counts_) {
    constexpr std::size_t fewRows = 50;
    if (const auto changes = SharedMessageList::differences(messages_, messages, fewRows)) {
      messages_ = std::move(messages);
      for (const auto position : *changes) {
        items_changed(position, 1, 1);
      }
      return true;
    }
  }
  const guint before = announced_;
  std::swap(messages_, messages);  // The old list goes at the end, when nobody asks for it any more.
  counts_ = std::move(counts);
  announced_ = 0;
  if (before > 0) {
    items_changed(0, before, 0);
  }
  announced_ = static_cast<guint>(messages_.size());
  if (announced_ > 0) {
    items_changed(0, 0, announced_);
  }
  return false;
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
  ++itemsMade_;
  const auto& message = messages_[position];
  const auto count = counts_->of(message->conversationID);
  const auto item = MessageListItem::create(message, count == 0 ? 1 : count);
  return g_object_ref(item->gobj());
}

}  // namespace tidewrack::ui
