#include "classify/label_classification.h"

#include <algorithm>
#include <bit>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace tidewrack {
namespace {

using UserLabelNode = LabelClassification::UserLabelNode;

// Asks the memory for a message some steps before it is looked at: the messages of a list lie far apart.
void prefetch(const MessageList& messages, std::size_t index) {
  constexpr std::size_t stepsToMessage = 24;
  constexpr std::size_t stepsToTexts = 12;
  if (index + stepsToMessage < messages.size()) {
    const EmailMessage& message = *messages[index + stepsToMessage];
    __builtin_prefetch(&message.id);
    __builtin_prefetch(&message.labels);
  }
  if (index + stepsToTexts < messages.size()) {
    const EmailMessage& message = *messages[index + stepsToTexts];
    __builtin_prefetch(message.id.view().data());
    __builtin_prefetch(message.labels.data());
  }
}

// The messages whose id is not theirs alone, by the hashes of all ids. As a rule there is none: then sixteen
// bits a message tell nearly all hashes apart.
std::vector<LabelTally::Repeated> repeatedMessages(const MessageList& messages,
                                                   const std::vector<LabelSets::Number>& labels,
                                                   const std::vector<std::size_t>& hashes) {
  const std::size_t mask = std::bit_ceil(messages.size() * 16 + 64) - 1;
  std::vector<bool> isTaken(mask + 1);
  std::vector<std::size_t> late;  // Hashes that found their bit taken.
  for (const auto hash : hashes) {
    if (isTaken[hash & mask]) {
      late.push_back(hash);
    }
    isTaken[hash & mask] = true;
  }
  isTaken.assign(isTaken.size(), false);
  for (const auto hash : late) {
    isTaken[hash & mask] = true;
  }
  std::unordered_map<std::size_t, int> counts;
  const auto forEachUncertain = [&](auto visit) {
    for (std::size_t i = 0; i < hashes.size(); ++i) {
      if (isTaken[hashes[i] & mask]) {
        visit(i);
      }
    }
  };
  counts.reserve(late.size() * 2);
  forEachUncertain([&](std::size_t i) { ++counts[hashes[i]]; });
  std::vector<LabelTally::Repeated> repeated;
  forEachUncertain([&](std::size_t i) {
    if (counts[hashes[i]] > 1) {
      repeated.push_back({messages[i]->id, labels[i]});
    }
  });
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
  std::vector<std::size_t> hashes;
  labels.reserve(messages.size());
  hashes.reserve(messages.size());
  for (std::size_t i = 0; i < messages.size(); ++i) {
    prefetch(messages, i);
    labels.push_back(sets.numberOf(messages[i]->labels));
    hashes.push_back(std::hash<Text>()(messages[i]->id));
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
  return tally.classification(sets, sets.nodes().empty() ? std::vector<LabelTally::Repeated>()
                                                         : repeatedMessages(messages, labels, hashes));
}

}  // namespace tidewrack
