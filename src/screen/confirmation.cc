#include "screen/confirmation.h"

#include "platform/localized.h"

namespace tidewrack {

Confirmation deleteConfirmation(const MBOXLibrary& library) {
  return {.title = localized("delete_library_title", "Delete Library", "Delete library alert title"),
          .message = formatText(
              localized("delete_library_message", "Delete \"%@\" and remove its imported messages?",
                        "Delete library alert message"),
              {library.displayName.string()}),
          .icon = "trash.circle.fill",
          .cancelTitle = localized("cancel_button", "Cancel", "Cancel button"),
          .confirmTitle = localized("delete_button", "Delete", "Delete button"),
          .isDestructive = true};
}

}  // namespace tidewrack
