#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>

namespace tidewrack {

/// Bytes that somebody waited for will never come.
class ArrivalFailure : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "bytes that never arrived"; }
};

/// How much of a file is there while it is being written from its beginning to its end: one thread tells,
/// others wait for what they are about to read. It holds no bytes. Safe from any thread.
class ArrivingBytes {
 public:
  /// `total` bytes are expected, of which the first `count` are there.
  explicit ArrivingBytes(std::size_t total, std::size_t count = 0);
  ArrivingBytes(const ArrivingBytes&) = delete;
  ArrivingBytes& operator=(const ArrivingBytes&) = delete;

  [[nodiscard]] std::size_t total() const noexcept { return total_; }
  /// The first `count()` bytes can be read. Never falls, never exceeds the total.
  [[nodiscard]] std::size_t count() const noexcept { return count_.load(std::memory_order_acquire); }

  /// The first `count` bytes are there now; fewer than before change nothing.
  void arrive(std::size_t count);
  /// Nothing more will arrive, whether all is there or not. Every wait ends.
  void end();

  /// Waits until the first `count` bytes (at most the total) are there, and gives count(). Throws
  /// ArrivalFailure when they never will be.
  std::size_t waitUntil(std::size_t count) const;

 private:
  const std::size_t total_;
  mutable std::mutex mutex_;  // for changes and waits
  mutable std::condition_variable changed_;
  std::atomic<std::size_t> count_;
  bool isEnded_ = false;
};

}  // namespace tidewrack
