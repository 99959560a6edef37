#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>

#include <gtkmm.h>

#include "screen/derived_state.h"
#include "screen/shared_message_list.h"

namespace tidewrack::ui {

/// What one row of the message list stands for. Made only when a row is bound; as long as it lives it is the
/// item of its place, whatever message stands there.
class MessageListItem : public Glib::Object {
 public:
  [[nodiscard]] const EmailMessage& message() const { return *message_; }
  [[nodiscard]] std::int64_t conversationCount() const { return conversationCount_; }
  /// Called when another message has come to the place; null for nobody. Of the row that shows the item.
  void whenChanged(std::function<void()> changed) { changed_ = std::move(changed); }

 private:
  friend class MessageListModel;
  using Alive = std::unordered_map<guint, MessageListItem*>;
  MessageListItem(guint position, std::shared_ptr<Alive> alive);
  ~MessageListItem() override;
  MessageListItem(const MessageListItem&) = delete;
  MessageListItem& operator=(const MessageListItem&) = delete;

  std::shared_ptr<const EmailMessage> message_;
  std::int64_t conversationCount_ = 1;
  std::function<void()> changed_;
  guint position_;
  std::shared_ptr<Alive> alive_;
};

/// The messages of the list as GTK wants them, made lazily: a list of a million messages makes the row
/// objects of some two hundred, and another list in its place makes none. Main thread only.
/// The interface is the first base class: GObject adds interfaces before the class itself is set up.
class MessageListModel : public Gio::ListModel, public Glib::Object {
 public:
  static Glib::RefPtr<MessageListModel> create();

  /// Puts `messages` in place of what was there; `counts` is not null and gives each conversation's size.
  /// True when only a few messages have been exchanged for others, and only their rows change. GTK is told
  /// no more than that the list has become longer or shorter: making two hundred rows anew takes longer than
  /// a frame. For the same reason it goes on with rows of the old list while the new one is empty, when
  /// nobody may see them: `size` then is 0, and the number of items is not.
  bool replace(SharedMessageList messages, std::shared_ptr<const ConversationCounts> counts);

  /// Whether the model holds these very objects already.
  [[nodiscard]] bool shows(const SharedMessageList& messages,
                           const std::shared_ptr<const ConversationCounts>& counts) const {
    return counts_ == counts && messages_.isSame(messages);
  }

  [[nodiscard]] std::size_t size() const { return messages_.size(); }
  /// The message at a position below `size()`.
  [[nodiscard]] const std::shared_ptr<const EmailMessage>& messageAt(guint position) const {
    return messages_[position];
  }
  /// How many row objects have been made so far; for tests.
  [[nodiscard]] std::uint64_t itemsMade() const { return itemsMade_; }

 protected:
  MessageListModel();
  GType get_item_type_vfunc() override;
  guint get_n_items_vfunc() override;
  gpointer get_item_vfunc(guint position) override;

 private:
  void fill(MessageListItem& item) const;

  SharedMessageList messages_;
  std::shared_ptr<const ConversationCounts> counts_;
  guint announced_ = 0;  // what GTK has been told
  std::shared_ptr<MessageListItem::Alive> alive_ = std::make_shared<MessageListItem::Alive>();
  std::uint64_t itemsMade_ = 0;
};

}  // namespace tidewrack::ui
