#pragma once

#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"
#include "ui/message_list_model.h"

namespace tidewrack::ui {

/// The middle column below its header bar: the search field and the list of messages, or the line that
/// stands for an empty list. Follows the screen's fields and writes the selection and the search text back.
class MessageListView : public Gtk::Box {
 public:
  explicit MessageListView(ContentView& screen);
  ~MessageListView() override;
  MessageListView(const MessageListView&) = delete;
  MessageListView& operator=(const MessageListView&) = delete;

  /// Puts the keyboard into the search field.
  void focusSearch();

  [[nodiscard]] const Glib::RefPtr<MessageListModel>& model() const { return model_; }
  [[nodiscard]] Gtk::ListView& listView() { return list_; }

 private:
  void makeSearchField();
  void makeList();
  void makeEmptyPage();
  void messagesChanged();
  void showMessages();
  void showSelection(bool scrolls);
  void selectionChosen();
  void scrollTo(guint position);

  ContentView& screen_;
  Glib::RefPtr<MessageListModel> model_;
  Glib::RefPtr<Gtk::SingleSelection> selection_;
  Gtk::SearchEntry search_;
  Gtk::Stack stack_;
  Gtk::ScrolledWindow scroller_;
  Gtk::ListView list_;
  bool isUpdating_ = false;  ///< The selection moves because the screen's did.
  sigc::connection messagesIdle_;
  sigc::connection scrollIdle_;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
