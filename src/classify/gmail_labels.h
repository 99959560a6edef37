#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "platform/text.h"

/// The closed vocabulary of Gmail labels. Stored labels are never changed; they are compared through
/// normalizedLabelKey. Every function here is pure and safe from any thread.
namespace tidewrack {

/// In order of declaration and recognition. The order on the screen is sidebarRank.
enum class GmailSystemMailbox { inbox, sent, drafts, important, starred, scheduled, archived, spam, trash };
enum class GmailCategoryFolder { personal, promotions, social, updates, forums };

inline constexpr std::array allGmailSystemMailboxes = {
    GmailSystemMailbox::inbox,     GmailSystemMailbox::sent,    GmailSystemMailbox::drafts,
    GmailSystemMailbox::important, GmailSystemMailbox::starred, GmailSystemMailbox::scheduled,
    GmailSystemMailbox::archived,  GmailSystemMailbox::spam,    GmailSystemMailbox::trash};
inline constexpr std::array allGmailCategoryFolders = {
    GmailCategoryFolder::personal, GmailCategoryFolder::promotions, GmailCategoryFolder::social,
    GmailCategoryFolder::updates, GmailCategoryFolder::forums};

/// What the sidebar and the badges show of a mailbox or tab.
struct LabelAppearance {
  std::string_view rawValue;  ///< For coding and badge identities, for example "inbox".
  const char* titleKey;
  const char* defaultTitle;
  const char* comment;
  std::string_view icon;  ///< Platform symbol name.
  std::string_view tint;  ///< Colour name.
  int sidebarRank;        ///< Position among its kind, from 0.
};
const LabelAppearance& appearance(GmailSystemMailbox mailbox);
const LabelAppearance& appearance(GmailCategoryFolder folder);
/// The localised title.
std::string title(GmailSystemMailbox mailbox);
std::string title(GmailCategoryFolder folder);
std::optional<GmailSystemMailbox> systemMailboxFromRawValue(std::string_view rawValue);
std::optional<GmailCategoryFolder> categoryFolderFromRawValue(std::string_view rawValue);

/// The normal form of a raw label: trimmed, without quotes, without one "[Gmail]/"-like prefix, diacritics
/// folded, lower case, in Unicode normalization form C.
std::string normalizedLabelKey(std::string_view label);

/// The mailbox, or tab, whose aliases hold the label's key; nothing for any other label.
std::optional<GmailSystemMailbox> matchingSystemMailbox(std::string_view label);
std::optional<GmailCategoryFolder> matchingCategoryFolder(std::string_view label);
/// Whether the label is one that is never shown.
bool isNoiseLabel(std::string_view label);

/// What one raw label means, by the precedence noise, mailbox, tab, user label.
struct LabelMeaning {
  enum class Kind { nothing, mailbox, category, user };

  Kind kind = Kind::nothing;  ///< `nothing` is a blank or noise label, or one with only slashes.
  GmailSystemMailbox mailbox{};
  GmailCategoryFolder category{};
  Text path;        ///< Of a user label: its trimmed components joined by "/"; empty where none is left.
  Text filterText;  ///< Of a user label: the label trimmed of white space, then of quotes and backslashes.

  friend bool operator==(const LabelMeaning&, const LabelMeaning&) = default;
};
LabelMeaning resolveLabel(std::string_view label);

}  // namespace tidewrack
