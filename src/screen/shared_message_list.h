#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "mail/records.h"

namespace tidewrack {

/// A MessageList that never changes, one pointer wide: an assignment costs the same for ten messages and for
/// a million. Two lists are equal when they hold the same message objects in the same order.
class SharedMessageList {
 public:
  using const_iterator = MessageList::const_iterator;

  SharedMessageList() : list_(noMessages()) {}
  SharedMessageList(MessageList list)  // NOLINT(google-explicit-constructor): any list can be shared.
      : list_(std::make_shared<const MessageList>(std::move(list))) {}

  [[nodiscard]] const MessageList& get() const { return *list_; }
  operator const MessageList&() const { return *list_; }  // NOLINT(google-explicit-constructor)
  [[nodiscard]] std::size_t size() const { return list_->size(); }
  [[nodiscard]] bool empty() const { return list_->empty(); }
  const std::shared_ptr<const EmailMessage>& operator[](std::size_t index) const { return (*list_)[index]; }
  [[nodiscard]] const std::shared_ptr<const EmailMessage>& front() const { return list_->front(); }
  [[nodiscard]] const_iterator begin() const { return list_->begin(); }
  [[nodiscard]] const_iterator end() const { return list_->end(); }

  /// Whether both are the very same list object; never looks at the messages.
  [[nodiscard]] bool isSame(const SharedMessageList& other) const { return list_ == other.list_; }
  friend bool operator==(const SharedMessageList& a, const SharedMessageList& b) {
    return a.list_ == b.list_ || *a.list_ == *b.list_;
  }

 private:
  static const std::shared_ptr<const MessageList>& noMessages() {
    static const auto empty = std::make_shared<const MessageList>();
    return empty;
  }

  std::shared_ptr<const MessageList> list_;
};

}  // namespace tidewrack
