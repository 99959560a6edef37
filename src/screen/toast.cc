#include "screen/toast.h"

namespace tidewrack {

std::string_view icon(ToastType type) {
  switch (type) {
    case ToastType::success:
      return "checkmark.circle.fill";
    case ToastType::error:
      return "exclamationmark.circle.fill";
    case ToastType::info:
      return "info.circle.fill";
    case ToastType::warning:
      break;
  }
  return "exclamationmark.triangle.fill";
}

std::string_view tint(ToastType type) {
  switch (type) {
    case ToastType::success:
      return "green";
    case ToastType::error:
      return "red";
    case ToastType::info:
      return "blue";
    case ToastType::warning:
      break;
  }
  return "orange";
}

}  // namespace tidewrack
