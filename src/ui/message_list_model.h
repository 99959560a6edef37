#pragma once

#include <cstdint>
#include <memory>

#include <gtkmm.h>

#include "screen/derived_state.h"
#include "screen/shared_message_list.h"

namespace tidewrack::ui {

/// What one row of the message list stands for. Made only when a row is bound.
class MessageListItem : public Glib::Object {
 public:
  static Glib::RefPtr<MessageListItem> create(std::shared_ptr<const EmailMessage> message,
                                              std::int64_t conversationCount);

  [[nodiscard]] const EmailMessage& message() const { return *message_; }
  [[nodiscard]] std::int64_t conversationCount() const { return conversationCount_; }

 private:
  MessageListItem(std::shared_ptr<const EmailMessage> message, std::int64_t conversationCount);

  std::shared_ptr<const EmailMessage> message_;
  std::int64_t conversationCount_;
};

/// The messages of the list as GTK wants them, made lazily: a list of a million messages makes the row
/// objects of some two hundred. Main thread only.
/// The interface is the first base class: GObject adds interfaces before the class itself is set up.
class MessageListModel : public Gio::ListModel, public Glib::Object {
 public:
  static Glib::RefPtr<MessageListModel> create();

  /// Puts `messages` in place of what was there; `counts` is not null and gives each conversation's size.
  /// True when only a few messages have been exchanged for others, and only their rows are made anew. Any
  /// other change is told in two steps (all gone, all new): told in one, GTK would ask for every row in
  /// search of the old selection.
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
  SharedMessageList messages_;
  std::shared_ptr<const ConversationCounts> counts_;
  guint announced_ = 0;  // what GTK has been told; smaller than the list between the two steps
  std::uint64_t itemsMade_ = 0;
};

}  // namespace tidewrack::ui
