#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "mail/records.h"
#include "reading/avatar.h"

/// The lists that the detail shows around a body. All functions are pure, read no bodies and are safe from
/// any thread.
namespace tidewrack {

/// A line under the subject, with its icon.
struct DetailHeaderRow {
  enum class Kind { from, to, cc, date };
  Kind kind{};
  std::string_view icon;  ///< Platform symbol name.
  std::string text;       ///< Localised, for example "From: Ana <ana@example.org>".
  friend bool operator==(const DetailHeaderRow&, const DetailHeaderRow&) = default;
};
/// From, To and Cc where there are any, Date.
std::vector<DetailHeaderRow> detailHeaderRows(const EmailMessage& message);

/// A pill for one label: its icon and title in its colour, on the colour at badgeBackgroundOpacity.
struct MessageBadge {
  std::string id;  ///< "mailbox:inbox", "category:social" or "user:Work".
  std::string title;
  std::string_view systemImage;                    ///< Platform symbol name.
  std::variant<std::string_view, RGBColor> color;  ///< A colour name, or the label's own colour.
  friend bool operator==(const MessageBadge&, const MessageBadge&) = default;
};
inline constexpr double badgeBackgroundOpacity = 0.15;
/// One badge for each label that is to be seen, in the order of the labels, each identity once.
std::vector<MessageBadge> messageBadges(const std::vector<Text>& labels);

/// A line of the list of attachments. Its data is `message.attachments[index].data`.
struct AttachmentRow {
  std::size_t index = 0;
  std::string_view icon;  ///< Platform symbol name, by the MIME type.
  std::string fileName;
  std::string sizeText;  ///< "12 KB" in the form of the locale.
  friend bool operator==(const AttachmentRow&, const AttachmentRow&) = default;
};
/// May count the bytes of attachments that nobody has counted before.
std::vector<AttachmentRow> attachmentRows(const std::vector<EmailAttachment>& attachments);
/// "photo", "doc.richtext", "doc.text" or "paperclip".
std::string_view attachmentIcon(std::string_view mimeType);
/// "3 attachment(s)".
std::string attachmentsTitle(std::size_t count);

}  // namespace tidewrack
