#pragma once

#include <exception>
#include <thread>

namespace tidewrack {

/// Does two pieces of work at once, the second on a thread of its own, and waits for both. Throws what the
/// first one threw, or else what the second one threw.
template <typename First, typename Second>
void doTogether(First first, Second second) {
  std::exception_ptr failure;
  std::thread other([&] {
    try {
      second();
    } catch (...) {
      failure = std::current_exception();
    }
  });
  try {
    first();
  } catch (...) {
    other.join();
    throw;
  }
  other.join();
  if (failure) {
    std::rethrow_exception(failure);
  }
}

}  // namespace tidewrack
