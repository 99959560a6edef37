#pragma once

#include <cstdint>
#include <vector>

#include "classify/gmail_labels.h"
#include "mail/records.h"

namespace tidewrack {

/// How many messages lie in each mailbox and tab, and the tree of the user's own labels.
struct LabelClassification {
  struct SystemMailboxBucket {
    GmailSystemMailbox mailbox{};
    std::int64_t count = 0;  ///< Always above zero.
    friend bool operator==(const SystemMailboxBucket&, const SystemMailboxBucket&) = default;
  };
  struct GmailCategoryBucket {
    GmailCategoryFolder category{};
    std::int64_t count = 0;  ///< Always above zero.
    friend bool operator==(const GmailCategoryBucket&, const GmailCategoryBucket&) = default;
  };
  struct UserLabelNode {
    Text path;                     ///< Trimmed components from the root, joined by "/". Unique in the tree.
    Text name;                     ///< Last component.
    std::int64_t count = 0;        ///< Distinct message ids with this label or one below it.
    std::int64_t directCount = 0;  ///< Distinct message ids with exactly this label.
    std::vector<UserLabelNode> children;
    friend bool operator==(const UserLabelNode&, const UserLabelNode&) = default;
  };

  std::vector<SystemMailboxBucket> systemMailboxes;  ///< By sidebar rank.
  std::vector<GmailCategoryBucket> gmailCategories;  ///< By sidebar rank.
  std::vector<UserLabelNode> userLabelTree;          ///< Roots, by localised comparison of their paths.

  friend bool operator==(const LabelClassification&, const LabelClassification&) = default;

  /// The classification of a list. Pure; safe from any thread; linear in the number of labels.
  static LabelClassification classify(const MessageList& messages);
};

}  // namespace tidewrack
