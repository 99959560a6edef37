#pragma once

#include <chrono>
#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "platform/executor.h"

namespace tidewrack {

/// A flow on the main thread. It starts at once and runs until it first waits; whoever awaits it gets its
/// result, or its exception. A task that nobody awaits goes on by itself (its exception is then dropped:
/// a flow catches its failures where it ends). Main thread only.
template <typename T = void>
class Task {
  struct Nothing {};
  using Value = std::conditional_t<std::is_void_v<T>, Nothing, T>;

  // Shared by the coroutine and its Task, so that either may go first.
  struct State {
    std::optional<Value> value;
    std::exception_ptr failure;
    std::coroutine_handle<> waiting;
    bool done = false;
  };

  struct PromiseBase {
    std::shared_ptr<State> state = std::make_shared<State>();

    Task get_return_object() { return Task(state); }
    std::suspend_never initial_suspend() noexcept { return {}; }
    void unhandled_exception() { state->failure = std::current_exception(); }

    // The frame goes away first; what waited then goes on.
    struct Finish {
      bool await_ready() noexcept { return false; }
      template <typename Promise>
      std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> frame) noexcept {
        const auto ended = std::move(frame.promise().state);
        frame.destroy();
        ended->done = true;
        return ended->waiting ? ended->waiting : std::coroutine_handle<>(std::noop_coroutine());
      }
      void await_resume() noexcept {}
    };
    Finish final_suspend() noexcept { return {}; }
  };

  struct ValuePromise : PromiseBase {
    template <typename U>
    void return_value(U&& value) {
      this->state->value.emplace(std::forward<U>(value));
    }
  };
  struct VoidPromise : PromiseBase {
    void return_void() { this->state->value.emplace(); }
  };

 public:
  using promise_type = std::conditional_t<std::is_void_v<T>, VoidPromise, ValuePromise>;

  [[nodiscard]] bool done() const { return state_->done; }

  bool await_ready() const noexcept { return state_->done; }
  void await_suspend(std::coroutine_handle<> waiting) noexcept { state_->waiting = waiting; }
  T await_resume() {
    if (state_->failure) {
      std::rethrow_exception(state_->failure);
    }
    if constexpr (!std::is_void_v<T>) {
      return std::move(*state_->value);
    }
  }

 private:
  explicit Task(std::shared_ptr<State> state) : state_(std::move(state)) {}
  std::shared_ptr<State> state_;
};

/// co_await sleepFor(executor, 150ms): goes on, on the main thread, once the time has passed.
inline auto sleepFor(Executor& executor, std::chrono::milliseconds delay) {
  struct Awaiter {
    Executor& executor;
    std::chrono::milliseconds delay;
    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiting) {
      executor.after(delay, [waiting] { waiting.resume(); });
    }
    void await_resume() const noexcept {}
  };
  return Awaiter{executor, delay};
}

/// co_await yieldToMainLoop(executor): goes on after what is already waiting on the main thread, so that
/// a changed status reaches the screen.
inline auto yieldToMainLoop(Executor& executor) {
  struct Awaiter {
    Executor& executor;
    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiting) {
      executor.post([waiting] { waiting.resume(); });
    }
    void await_resume() const noexcept {}
  };
  return Awaiter{executor};
}

/// auto result = co_await inBackground(executor, priority, function): runs the function on a worker and
/// gives its result, or throws what it threw, on the main thread. The function owns what it uses.
template <typename Function>
auto inBackground(Executor& executor, TaskPriority priority, Function function) {
  using Result = std::invoke_result_t<Function&>;
  struct Nothing {};
  using Value = std::conditional_t<std::is_void_v<Result>, Nothing, Result>;
  struct Awaiter {
    Executor& executor;
    TaskPriority priority;
    Function function;
    std::optional<Value> value;
    std::exception_ptr failure;

    bool await_ready() const noexcept { return false; }
    // The awaiter lies in the frame of the waiting coroutine and so outlives the work.
    void await_suspend(std::coroutine_handle<> waiting) {
      executor.runInBackground(priority, [this, waiting] {
        try {
          if constexpr (std::is_void_v<Result>) {
            function();
            value.emplace();
          } else {
            value.emplace(function());
          }
        } catch (...) {
          failure = std::current_exception();
        }
        executor.post([waiting] { waiting.resume(); });
      });
    }
    Result await_resume() {
      if (failure) {
        std::rethrow_exception(failure);
      }
      if constexpr (!std::is_void_v<Result>) {
        return std::move(*value);
      }
    }
  };
  return Awaiter{executor, priority, std::move(function), std::nullopt, nullptr};
}

}  // namespace tidewrack
