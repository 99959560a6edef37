#include "classify/label_classification.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace tidewrack {
namespace {

using UserLabelNode = LabelClassification::UserLabelNode;

// The messages whose id is not theirs alone. Ids are compared by hash first, because as a rule there is no
// such message.
std::vector<LabelTally::Repeated> repeatedMessages(const MessageList& messages,
                                                   const std::vector<LabelSets::Number>& labels) {
  const auto hashOf = [](const auto& message) { return std::hash<Text>()(message->id); };
  std::vector<std::size_t> hashes(messages.size());
  std::ranges::transform(messages, hashes.begin(), hashOf);
  std::ranges::sort(hashes);
  std::unordered_set<std::size_t> repeatedHashes;
  for (auto at = std::ranges::adjacent_find(hashes); at != hashes.end();
       at = std::adjacent_find(std::next(at), hashes.end())) {
    repeatedHashes.insert(*at);
  }
  std::vector<LabelTally::Repeated> repeated;
  if (!repeatedHashes.empty()) {
    for (std::size_t i = 0; i < messages.size(); ++i) {
      if (repeatedHashes.contains(hashOf(messages[i]))) {
        repeated.push_back({messages[i]->id, labels[i]});
      }
    }
  }
  return repeated;
}

// Calls `countDirectly` once for each node of a list of labels and `count` once for each node at or above
// one. `visits` has an entry for each node; `number` differs from that of every other visit.
template <typename Counts, typename CountDirectly, typename Count>
void visitOnce(const LabelSets& sets, LabelSets::Number labels, std::uint64_t number, Counts& visits,
               CountDirectly countDirectly, Count count) {
  sets.forEachNode(labels, [&](LabelSets::NodeNumber node) {
    if (std::exchange(visits[node].visitedDirectly, number) != number) {
      countDirectly(node);
    }
    // Where this list has been already, it has been everywhere above.
    for (; node != LabelSets::none && visits[node].visited != number; node = sets.nodes()[node].parent) {
      visits[node].visited = number;
      count(node);
    }
  });
}

}  // namespace

void LabelTally::add(const LabelSets& sets, LabelSets::Number labels, std::int64_t messages) {
  const LabelSets::Set& set = sets[labels];
  for (std::size_t i = 0; i < mailboxes_.size(); ++i) {
    mailboxes_[i] += ((set.mailboxes >> i) & 1U) != 0 ? messages : 0;
  }
  for (std::size_t i = 0; i < categories_.size(); ++i) {
    categories_[i] += ((set.categories >> i) & 1U) != 0 ? messages : 0;
  }
  nodes_.resize(sets.nodes().size());
  visitOnce(
      sets, labels, ++additions_, nodes_,
      [&](LabelSets::NodeNumber node) { nodes_[node].directCount += messages; },
      [&](LabelSets::NodeNumber node) { nodes_[node].count += messages; });
}

// A further message of the same id adds to the tree only what the earlier ones lack.
void LabelTally::takeBack(const LabelSets& sets, const std::vector<Repeated>& repeated,
                          std::vector<NodeCount>& nodes) {
  std::unordered_map<Text, std::unordered_set<LabelSets::NodeNumber>> counted;
  std::unordered_map<Text, std::unordered_set<LabelSets::NodeNumber>> countedDirectly;
  for (auto& node : nodes) {
    node.visited = 0;
    node.visitedDirectly = 0;
  }
  std::uint64_t number = 0;
  for (const auto& message : repeated) {
    auto& own = counted[message.id];
    auto& ownDirectly = countedDirectly[message.id];
    visitOnce(
        sets, message.labels, ++number, nodes,
        [&](LabelSets::NodeNumber node) {
          nodes[node].directCount -= ownDirectly.insert(node).second ? 0 : 1;
        },
        [&](LabelSets::NodeNumber node) { nodes[node].count -= own.insert(node).second ? 0 : 1; });
  }
}

LabelClassification LabelTally::classification(const LabelSets& sets,
                                               const std::vector<Repeated>& repeated) const {
  LabelClassification result;
  for (const auto mailbox : allGmailSystemMailboxes) {
    if (const auto count = mailboxes_[static_cast<std::size_t>(mailbox)]; count > 0) {
      result.systemMailboxes.push_back({mailbox, count});
    }
  }
  std::ranges::sort(result.systemMailboxes, {},
                    [](const auto& bucket) { return appearance(bucket.mailbox).sidebarRank; });
  for (const auto category : allGmailCategoryFolders) {
    if (const auto count = categories_[static_cast<std::size_t>(category)]; count > 0) {
      result.gmailCategories.push_back({category, count});
    }
  }
  std::ranges::sort(result.gmailCategories, {},
                    [](const auto& bucket) { return appearance(bucket.category).sidebarRank; });

  auto nodes = nodes_;
  nodes.resize(sets.nodes().size());
  takeBack(sets, repeated, nodes);
  // In sorted order a parent comes before its children, so the way from the root to the last node is enough
  // to find the place of the next.
  std::vector<std::pair<LabelSets::NodeNumber, UserLabelNode*>> way;
  for (const auto number : sets.sortedNodes()) {
    if (nodes[number].count <= 0) {
      continue;  // No message here carries it, nor anything below it.
    }
    const auto& node = sets.nodes()[number];
    while (!way.empty() && way.back().first != node.parent) {
      way.pop_back();
    }
    auto& siblings = way.empty() ? result.userLabelTree : way.back().second->children;
    siblings.push_back({node.path, node.name, nodes[number].count, nodes[number].directCount, {}});
    way.emplace_back(number, &siblings.back());
  }
  return result;
}

LabelClassification LabelClassification::classify(const MessageList& messages) {
  LabelSets sets;
  std::vector<LabelSets::Number> labels;
  labels.reserve(messages.size());
  for (const auto& message : messages) {
    labels.push_back(sets.numberOf(message->labels));
  }
  sets.sortNodes();
  std::vector<std::int64_t> counts(sets.size());
  for (const auto number : labels) {
    ++counts[number];
  }
  LabelTally tally;
  for (LabelSets::Number number = 0; number < counts.size(); ++number) {
    tally.add(sets, number, counts[number]);
  }
  return tally.classification(
      sets, sets.nodes().empty() ? std::vector<LabelTally::Repeated>() : repeatedMessages(messages, labels));
}

}  // namespace tidewrack
