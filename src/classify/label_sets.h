#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "classify/gmail_labels.h"
#include "platform/text_numbers.h"

namespace tidewrack {

/// The distinct lists of labels that messages carry, numbered from 0. Each label is resolved once, and each
/// list once, however many messages carry it: a message then is one number. Reading is safe from any thread
/// while nobody adds.
class LabelSets {
 public:
  using Number = std::uint32_t;
  using NodeNumber = std::uint32_t;
  static constexpr NodeNumber none = static_cast<NodeNumber>(-1);

  /// What a list of labels says, one bit for each mailbox or tab in the order of declaration.
  struct Set {
    std::uint32_t first = 0;   ///< Where its labels begin among those of all lists.
    std::uint32_t length = 0;  ///< Their number.
    /// As counted: a noise label is in no mailbox.
    std::uint16_t mailboxes = 0;
    std::uint16_t categories = 0;
    /// As selected: each label is asked for its mailbox or tab alone.
    std::uint16_t matchingMailboxes = 0;
    std::uint16_t matchingCategories = 0;
  };
  /// One path of the tree of user labels.
  struct Node {
    Text path;
    Text name;
    NodeNumber parent = none;  ///< Always before its children.
  };

  LabelSets();

  /// The number of a message's labels, which are given one if they have none.
  Number numberOf(const std::vector<Text>& labels);
  [[nodiscard]] const Set& operator[](Number number) const { return sets_[number]; }
  [[nodiscard]] std::size_t size() const { return sets_.size(); }

  /// The nodes of the user labels of a list, in the order of the labels. May hold one more than once.
  template <typename Visit>
  void forEachNode(Number number, Visit visit) const {
    const Set& set = sets_[number];
    for (std::uint32_t i = set.first; i < set.first + set.length; ++i) {
      if (const NodeNumber node = labels_[members_[i]].node; node != none) {
        visit(node);
      }
    }
  }
  [[nodiscard]] const std::vector<Node>& nodes() const { return nodes_; }
  /// All nodes, siblings by localised comparison of their paths (equal ones by their bytes), each behind its
  /// parent. Current once `sortNodes` has run after the last addition.
  [[nodiscard]] const std::vector<NodeNumber>& sortedNodes() const { return sortedNodes_; }
  void sortNodes();

  /// For each list, whether one of its user labels, as written, is `path` or lies below it.
  [[nodiscard]] std::vector<bool> setsWithLabelAtOrBelow(std::string_view path) const;

 private:
  using LabelNumber = std::uint32_t;
  struct Label {
    Set means;               // The masks of this label alone.
    Text filterText;         // Of a user label.
    NodeNumber node = none;  // Of a user label.
  };
  // Archives share the text of equal labels, so that the place of the bytes tells most labels.
  struct Recent {
    Text text;
    LabelNumber number = 0;
  };

  LabelNumber labelOf(const Text& text);
  NodeNumber nodeOf(const Text& path);
  Number add(std::size_t first);
  void growSlots();
  [[nodiscard]] bool holds(Number number, std::size_t first, std::size_t length) const;

  TextNumbers labelNumbers_;
  std::vector<Label> labels_;
  std::vector<Recent> recent_;
  std::vector<LabelNumber> members_;  // The labels of all lists, one list behind the other.
  std::vector<Set> sets_;
  std::vector<std::uint32_t> hashes_;  // Of each list.
  std::vector<Number> slots_;          // A hash table over the lists; a power of two, at most half full.
  TextNumbers nodeNumbers_;
  std::vector<Node> nodes_;
  std::vector<NodeNumber> sortedNodes_;
};

}  // namespace tidewrack
