#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "classify/gmail_labels.h"
#include "classify/label_sets.h"
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

/// The counts behind a classification, kept from one change of the messages to the next: taking one message
/// out and putting another in costs what the two carry. Everything in it belongs to one LabelSets, which may
/// grow meanwhile. A plain value; one thread at a time.
class LabelTally {
 public:
  /// Counts `messages` more messages that carry the labels of one list; a negative number takes them out.
  void add(const LabelSets& sets, LabelSets::Number labels, std::int64_t messages);

  /// A message whose id another one has as well.
  struct Repeated {
    Text id;
    LabelSets::Number labels = 0;
  };
  /// The classification. The tree counts ids and not messages, so it needs to be told all messages of
  /// repeated ids, in any order. `sets.sortNodes()` has run.
  [[nodiscard]] LabelClassification classification(const LabelSets& sets,
                                                   const std::vector<Repeated>& repeated) const;

 private:
  struct NodeCount {
    std::int64_t count = 0;
    std::int64_t directCount = 0;
    // The last addition that came by; a message counts once for whatever it carries twice.
    std::uint64_t visited = 0;
    std::uint64_t visitedDirectly = 0;
  };
  static void takeBack(const LabelSets& sets, const std::vector<Repeated>& repeated,
                       std::vector<NodeCount>& nodes);

  std::array<std::int64_t, allGmailSystemMailboxes.size()> mailboxes_{};
  std::array<std::int64_t, allGmailCategoryFolders.size()> categories_{};
  std::vector<NodeCount> nodes_;
  std::uint64_t additions_ = 0;
};

}  // namespace tidewrack
