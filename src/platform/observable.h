#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tidewrack {

/// Keeps an observer attached for as long as it lives. Main thread only.
class Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::shared_ptr<void> handle) : handle_(std::move(handle)) {}
  void reset() { handle_.reset(); }

 private:
  std::shared_ptr<void> handle_;
};

/// One field of observable state. `set` stores the value and then, if it differs from the old one, runs
/// first the owner's reaction and then the observers, in the order in which they were attached. A set from
/// within an observer is carried out at once. Main thread only.
template <typename T>
class Observable {
 public:
  Observable() = default;
  explicit Observable(T value) : value_(std::move(value)) {}
  Observable(const Observable&) = delete;
  Observable& operator=(const Observable&) = delete;

  const T& operator()() const { return value_; }
  const T& get() const { return value_; }

  void set(T value) {
    if (value_ == value) {
      return;
    }
    value_ = std::move(value);
    notify();
  }

  /// Tells the reaction and the observers although nothing was compared.
  void notify() {
    if (reaction_) {
      reaction_();
    }
    const auto observers = observers_;  // An observer may attach or detach others.
    for (const auto& weak : observers) {
      if (const auto observer = weak.lock()) {
        (*observer)();
      }
    }
    std::erase_if(observers_, [](const auto& weak) { return weak.expired(); });
  }

  /// The owner's own reaction; it runs before every observer.
  void setReaction(std::function<void()> reaction) { reaction_ = std::move(reaction); }

  /// Calls `observer` after each change until the subscription dies.
  [[nodiscard]] Subscription observe(std::function<void()> observer) {
    auto shared = std::make_shared<std::function<void()>>(std::move(observer));
    observers_.push_back(shared);
    return Subscription(shared);
  }

 private:
  T value_{};
  std::function<void()> reaction_;
  std::vector<std::weak_ptr<std::function<void()>>> observers_;
};

}  // namespace tidewrack
