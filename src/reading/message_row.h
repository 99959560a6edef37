#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "mail/records.h"

namespace tidewrack {

/// What one row of the message list shows. The footer is there when it has something in it.
struct MessageRow {
  std::string subject;
  std::string dateText;  ///< Medium date and short time of the locale, or the localised "No date".
  std::string sender;    ///< Display form.
  std::string snippet;
  std::string attachmentsText;   ///< Number of attachments, beside "paperclip"; empty for none.
  std::string conversationText;  ///< Beside "bubble.left.and.bubble.right"; empty for a lone message.
  std::string identifier;        ///< Accessibility identifier, "messages.row." and the id.

  [[nodiscard]] bool hasFooter() const { return !attachmentsText.empty() || !conversationText.empty(); }
  friend bool operator==(const MessageRow&, const MessageRow&) = default;
};

/// The row of a message whose conversation has that many messages (1 where nobody has counted). Pure; safe
/// from any thread; reads no bodies.
MessageRow makeMessageRow(const EmailMessage& message, std::int64_t conversationCount);

/// "May 14, 2026 at 10:00 AM" in the form of the locale, or the localised "No date".
std::string messageDateText(const std::optional<Date>& date);

}  // namespace tidewrack
