#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace tidewrack {

enum class ToastType { success, error, info, warning };

/// A transient line over the window. A plain value.
struct Toast {
  std::string message;
  ToastType type = ToastType::success;
  double duration = 3.0;  ///< Seconds until whatever toast is then showing goes away.

  static Toast success(std::string message) { return {std::move(message), ToastType::success, 3.0}; }
  static Toast error(std::string message) { return {std::move(message), ToastType::error, 4.0}; }

  friend bool operator==(const Toast&, const Toast&) = default;
};

/// Platform symbol name and colour name of a toast.
std::string_view icon(ToastType type);
std::string_view tint(ToastType type);

/// How a toast comes and goes: from the top edge, moving and fading, under a spring.
struct ToastMetrics {
  static constexpr int padding = 8;
  static constexpr double springResponse = 0.4;
  static constexpr double springDampingFraction = 0.8;
};

}  // namespace tidewrack
