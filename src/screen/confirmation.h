#pragma once

#include <string>
#include <string_view>

#include "library/library_catalog.h"

namespace tidewrack {

/// What a confirmation sheet asks.
struct Confirmation {
  std::string title;
  std::string message;
  std::string_view icon;  ///< Platform symbol name.
  std::string cancelTitle;
  std::string confirmTitle;
  bool isDestructive = false;  ///< Icon and confirm button are red.
};

/// Whether a library is to be deleted with its messages.
Confirmation deleteConfirmation(const MBOXLibrary& library);

struct ConfirmationMetrics {
  static constexpr int minimumWidth = 350;
  static constexpr int maximumWidth = 450;
};

}  // namespace tidewrack
