#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

namespace tidewrack {

/// Items on their way from the thread that makes them to the thread that uses them, in order. What waits is
/// bounded by weight (bytes, say) and not by number: there is room as long as less than the bound waits.
template <typename Item>
class BoundedQueue {
 public:
  explicit BoundedQueue(std::size_t bound) : bound_(bound) {}
  BoundedQueue(const BoundedQueue&) = delete;
  BoundedQueue& operator=(const BoundedQueue&) = delete;

  /// For the maker: waits for room. False when nobody wants any more items; this one is dropped.
  bool push(Item item, std::size_t weight) {
    {
      std::unique_lock guard(mutex_);
      changed_.wait(guard, [this] { return weight_ < bound_ || isStopped_; });
      if (isStopped_) {
        return false;
      }
      weight_ += weight;
      items_.emplace_back(std::move(item), weight);
    }
    changed_.notify_all();
    return true;
  }
  /// For the maker: no more items come. A failure is thrown by `next` behind the last one.
  void close(std::exception_ptr failure = nullptr) {
    {
      const std::lock_guard guard(mutex_);
      isClosed_ = true;
      failure_ = std::move(failure);
    }
    changed_.notify_all();
  }

  /// For the user: waits for the next item; none behind the last one.
  std::optional<Item> next() {
    std::optional<Item> item;
    {
      std::unique_lock guard(mutex_);
      changed_.wait(guard, [this] { return !items_.empty() || isClosed_; });
      if (items_.empty()) {
        if (failure_) {
          std::rethrow_exception(failure_);
        }
        return item;
      }
      item = std::move(items_.front().first);
      weight_ -= items_.front().second;
      items_.pop_front();
    }
    changed_.notify_all();
    return item;
  }
  /// For the user: wants no more items, so that a maker who waits for room goes on.
  void stop() {
    {
      const std::lock_guard guard(mutex_);
      isStopped_ = true;
    }
    changed_.notify_all();
  }
  /// Waits until either no more items come or there is no room; true for the first. For before the first item
  /// is taken.
  bool holdsAll() {
    std::unique_lock guard(mutex_);
    changed_.wait(guard, [this] { return isClosed_ || weight_ >= bound_; });
    return isClosed_;
  }

 private:
  const std::size_t bound_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::pair<Item, std::size_t>> items_;
  std::size_t weight_ = 0;
  bool isClosed_ = false;
  bool isStopped_ = false;
  std::exception_ptr failure_;
};

}  // namespace tidewrack
