#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <vector>

#include "mail/records.h"

namespace tidewrack {

/// Places in a list, ascending.
using Positions = std::vector<std::uint32_t>;

/// A list of messages that never changes, one pointer wide: an assignment costs the same for ten messages
/// and for a million. It is kept in chunks, so that a list with one message exchanged shares all chunks but
/// one with the list before; or it is a part of another list, told by places, so that a filtered list needs
/// four bytes a message. Two lists are equal when they hold the same message objects in the same order.
/// Safe from any thread.
class SharedMessageList {
  struct Body;

 public:
  class const_iterator;
  using value_type = std::shared_ptr<const EmailMessage>;
  using Chunk = std::shared_ptr<const MessageList>;
  /// Messages in each chunk but the last.
  static constexpr std::size_t chunkSize = 1024;

  SharedMessageList();
  SharedMessageList(MessageList list);  // NOLINT(google-explicit-constructor): any list can be shared.
  /// The messages of `list`, which is no part itself, at the given places.
  static SharedMessageList part(const SharedMessageList& list, std::shared_ptr<const Positions> positions);

  /// This list, which is no part, with another message at one place.
  [[nodiscard]] SharedMessageList replacing(std::size_t position, value_type message) const;

  [[nodiscard]] std::size_t size() const;
  [[nodiscard]] bool empty() const { return size() == 0; }
  const value_type& operator[](std::size_t index) const;
  [[nodiscard]] const value_type& front() const { return (*this)[0]; }
  [[nodiscard]] const_iterator begin() const;
  [[nodiscard]] const_iterator end() const;

  /// The chunks of a list that is no part.
  [[nodiscard]] const std::vector<Chunk>& chunks() const;
  /// The places of a part; null for a list that is none.
  [[nodiscard]] const std::shared_ptr<const Positions>& positions() const;

  /// Where the message at a place of the whole list stands in this list, if it does.
  [[nodiscard]] std::optional<std::size_t> indexOf(std::uint32_t position) const;

  /// A copy as a plain vector. For background work: it costs a pointer and a count a message.
  [[nodiscard]] MessageList get() const;
  operator MessageList() const { return get(); }  // NOLINT(google-explicit-constructor): see get().

  /// Whether both are the very same list object; never looks at the messages.
  [[nodiscard]] bool isSame(const SharedMessageList& other) const { return body_ == other.body_; }
  /// Where two lists of the same size hold different message objects, ascending. Nothing when the sizes
  /// differ, when only one is a part or the places differ, or when there are more than `most` differences.
  /// Quick for lists that share their chunks.
  static std::optional<Positions> differences(const SharedMessageList& before, const SharedMessageList& after,
                                              std::size_t most);
  friend bool operator==(const SharedMessageList& a, const SharedMessageList& b) { return a.isEqual(b); }

 private:
  explicit SharedMessageList(std::shared_ptr<const Body> body);
  [[nodiscard]] bool isEqual(const SharedMessageList& other) const;

  std::shared_ptr<const Body> body_;
};

struct SharedMessageList::Body {
  std::vector<Chunk> chunks;  ///< Of the whole list.
  std::size_t size = 0;
  std::shared_ptr<const Body> whole;           ///< Of a part; then there are no chunks.
  std::shared_ptr<const Positions> positions;  ///< Of a part.

  [[nodiscard]] const value_type& inWhole(std::size_t index) const {
    return (*chunks[index / chunkSize])[index % chunkSize];
  }
  [[nodiscard]] const value_type& at(std::size_t index) const {
    return positions ? whole->inWhole((*positions)[index]) : inWhole(index);
  }
};

/// Goes through a list, which must live meanwhile.
class SharedMessageList::const_iterator {
 public:
  using iterator_category = std::random_access_iterator_tag;
  using value_type = SharedMessageList::value_type;
  using difference_type = std::ptrdiff_t;
  using pointer = const value_type*;
  using reference = const value_type&;

  const_iterator() = default;
  const_iterator(const Body* body, difference_type index) : body_(body), index_(index) {}

  reference operator*() const { return body_->at(static_cast<std::size_t>(index_)); }
  pointer operator->() const { return &**this; }
  reference operator[](difference_type offset) const { return *(*this + offset); }
  const_iterator& operator+=(difference_type offset) {
    index_ += offset;
    return *this;
  }
  const_iterator& operator-=(difference_type offset) { return *this += -offset; }
  const_iterator& operator++() { return *this += 1; }
  const_iterator& operator--() { return *this += -1; }
  const_iterator operator++(int) {
    const_iterator before = *this;
    ++*this;
    return before;
  }
  const_iterator operator--(int) {
    const_iterator before = *this;
    --*this;
    return before;
  }
  friend const_iterator operator+(const_iterator at, difference_type offset) { return at += offset; }
  friend const_iterator operator+(difference_type offset, const_iterator at) { return at += offset; }
  friend const_iterator operator-(const_iterator at, difference_type offset) { return at -= offset; }
  friend difference_type operator-(const_iterator a, const_iterator b) { return a.index_ - b.index_; }
  friend bool operator==(const_iterator a, const_iterator b) { return a.index_ == b.index_; }
  friend auto operator<=>(const_iterator a, const_iterator b) { return a.index_ <=> b.index_; }

 private:
  const Body* body_ = nullptr;
  difference_type index_ = 0;
};

inline std::size_t SharedMessageList::size() const {
  return body_->size;
}
inline const SharedMessageList::value_type& SharedMessageList::operator[](std::size_t index) const {
  return body_->at(index);
}
inline SharedMessageList::const_iterator SharedMessageList::begin() const {
  return {body_.get(), 0};
}
inline SharedMessageList::const_iterator SharedMessageList::end() const {
  return {body_.get(), static_cast<std::ptrdiff_t>(body_->size)};
}
inline const std::vector<SharedMessageList::Chunk>& SharedMessageList::chunks() const {
  return body_->chunks;
}
inline const std::shared_ptr<const Positions>& SharedMessageList::positions() const {
  return body_->positions;
}

}  // namespace tidewrack
