#include "reading/detail_rows.h"

#include <unordered_set>

#include "classify/gmail_labels.h"
#include "platform/byte_count.h"
#include "platform/localized.h"
#include "platform/unicode.h"
#include "reading/caseless.h"
#include "reading/message_row.h"

namespace tidewrack {
namespace {

std::string formatOne(const std::string& format, std::string value) {
  return formatText(format, {std::move(value)});
}

std::string_view trimQuotesAndBackslashes(std::string_view text) {
  const auto first = text.find_first_not_of("\"\\");
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of("\"\\") - first + 1);
}

// A user label as it is shown: without the quotes around it, one client prefix, and blanks at its ends.
std::string_view userLabelTitle(std::string_view label) {
  auto title = trimQuotesAndBackslashes(label);
  for (const std::string_view prefix : {"[gmail]/", "[google mail]/", "[imap]/"}) {
    if (startsWithIgnoringCase(title, prefix)) {
      title.remove_prefix(prefix.size());
      break;
    }
  }
  return trimWhitespaceAndNewlines(title);
}

template <typename Folder>
MessageBadge badgeOf(std::string_view kind, Folder folder) {
  const auto& look = appearance(folder);
  MessageBadge badge;
  badge.id = kind;
  badge.id += look.rawValue;
  badge.title = title(folder);
  badge.systemImage = look.icon;
  badge.color = look.tint;
  return badge;
}

}  // namespace

std::vector<DetailHeaderRow> detailHeaderRows(const EmailMessage& message) {
  using Kind = DetailHeaderRow::Kind;
  std::vector<DetailHeaderRow> rows;
  rows.push_back({Kind::from, "person.crop.circle",
                  formatOne(localized("detail_from_format", "From: %@", "From header format"),
                            displayForm(message.from))});
  if (!message.to.empty()) {
    rows.push_back(
        {Kind::to, "person.2",
         formatOne(localized("detail_to_format", "To: %@", "To header format"), displayForms(message.to))});
  }
  if (!message.cc.empty()) {
    rows.push_back(
        {Kind::cc, "person.2.wave.2",
         formatOne(localized("detail_cc_format", "Cc: %@", "Cc header format"), displayForms(message.cc))});
  }
  rows.push_back({Kind::date, "calendar",
                  formatOne(localized("detail_date_format", "Date: %@", "Date header format"),
                            messageDateText(message.date))});
  return rows;
}

std::vector<MessageBadge> messageBadges(const std::vector<Text>& labels) {
  std::vector<MessageBadge> badges;
  std::unordered_set<std::string> seen;
  for (const auto& label : labels) {
    const auto meaning = resolveLabel(label);
    MessageBadge badge;
    switch (meaning.kind) {
      case LabelMeaning::Kind::nothing:
        continue;
      case LabelMeaning::Kind::mailbox:
        badge = badgeOf("mailbox:", meaning.mailbox);
        break;
      case LabelMeaning::Kind::category:
        badge = badgeOf("category:", meaning.category);
        break;
      case LabelMeaning::Kind::user:
        if (meaning.path.empty()) {  // Nothing but slashes.
          continue;
        }
        badge.title = userLabelTitle(label);
        badge.id = "user:" + badge.title;
        badge.systemImage = "tag.circle.fill";
        badge.color = avatarColor(badge.title);
        break;
    }
    if (seen.insert(badge.id).second) {
      badges.push_back(std::move(badge));
    }
  }
  return badges;
}

std::vector<AttachmentRow> attachmentRows(const std::vector<EmailAttachment>& attachments) {
  std::vector<AttachmentRow> rows;
  rows.reserve(attachments.size());
  for (const auto& attachment : attachments) {
    rows.push_back({rows.size(), attachmentIcon(attachment.mimeType), attachment.fileName.string(),
                    formatByteCount(attachment.data.size())});
  }
  return rows;
}

std::string_view attachmentIcon(std::string_view mimeType) {
  if (mimeType.starts_with("image/")) {
    return "photo";
  }
  if (mimeType == "application/pdf") {
    return "doc.richtext";
  }
  if (mimeType.starts_with("text/")) {
    return "doc.text";
  }
  return "paperclip";
}

std::string attachmentsTitle(std::size_t count) {
  return formatText(localized("attachments_count_format", "%d attachment(s)", "Attachments count label"),
                    {static_cast<long long>(count)});
}

}  // namespace tidewrack
