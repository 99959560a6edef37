#include "classify/label_classification.h"

#include <algorithm>
#include <bit>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/huge_pages.h"
#include "platform/two_threads.h"

namespace tidewrack {
namespace {

using UserLabelNode = LabelClassification::UserLabelNode;

constexpr std::size_t worthASecondThread = 50'000;  // messages

// Goes through the messages, asking the memory for each some steps ahead: those of a list lie far apart.
// `field` gives the field of a message that is wanted, `content` where its bytes lie.
template <typename Field, typename Content, typename Visit>
void forEachAhead(const MessageList& messages, Field field, Content content, Visit visit) {
  constexpr std::size_t stepsToMessage = 24;
  constexpr std::size_t stepsToContent = 12;
  for (std::size_t i = 0; i < messages.size(); ++i) {
    if (i + stepsToMessage < messages.size()) {
      __builtin_prefetch(&field(*messages[i + stepsToMessage]));
    }
    if (i + stepsToContent < messages.size()) {
      __builtin_prefetch(content(field(*messages[i + stepsToContent])));
    }
    visit(field(*messages[i]));
  }
}

/// A set of hashes that may also hold others: a bit for each remainder.
class RoughSet {
 public:
  explicit RoughSet(std::size_t bits) : mask_(std::bit_ceil(bits) - 1), words_(mask_ / 64 + 1) {}

  [[nodiscard]] bool contains(std::size_t hash) const { return (word(hash) & bit(hash)) != 0; }
  /// Whether it was there before.
  bool insert(std::size_t hash) {
    const bool wasThere = contains(hash);
    words_[(hash & mask_) / 64] |= bit(hash);
    return wasThere;
  }
  void prefetch(std::size_t hash) const { __builtin_prefetch(&words_[(hash & mask_) / 64], 1); }

 private:
  [[nodiscard]] std::uint64_t word(std::size_t hash) const { return words_[(hash & mask_) / 64]; }
  static std::uint64_t bit(std::size_t hash) { return std::uint64_t{1} << (hash % 64); }

  std::size_t mask_;
  HugePageVector<std::uint64_t> words_;
};

// Where the messages stand whose id is not theirs alone. As a rule there is none, and 32 bits a message tell
// nearly all hashes of ids apart.
std::vector<std::size_t> repeatedPlaces(const MessageList& messages) {
  std::vector<std::size_t> hashes;
  hashes.reserve(messages.size());
  forEachAhead(
      messages, [](const EmailMessage& message) -> const Text& { return message.id; },
      [](const Text& id) { return id.view().data(); },
      [&](const Text& id) { hashes.push_back(std::hash<Text>()(id)); });
  RoughSet all(messages.size() * 32 + 64);
  std::vector<std::size_t> late;  // Hashes that found their place taken.
  constexpr std::size_t stepsToPlace = 16;
  for (std::size_t i = 0; i < hashes.size(); ++i) {
    if (i + stepsToPlace < hashes.size()) {
      all.prefetch(hashes[i + stepsToPlace]);
    }
    if (all.insert(hashes[i])) {
      late.push_back(hashes[i]);
    }
  }
  // For each late hash there is at least one earlier in its place, with the same hash or another.
  RoughSet doubtful(late.size() * 64 + 64);
  for (const auto hash : late) {
    doubtful.insert(hash);
  }
  struct Candidate {
    std::size_t hash;
    std::size_t place;
  };
  std::vector<Candidate> candidates;
  candidates.reserve(late.size() * 4);
  for (std::size_t i = 0; i < hashes.size(); ++i) {
    if (doubtful.contains(hashes[i])) {
      candidates.push_back({hashes[i], i});
    }
  }
  std::ranges::sort(candidates, {}, &Candidate::hash);
  std::vector<std::size_t> repeated;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const auto hash = candidates[i].hash;
    if ((i > 0 && candidates[i - 1].hash == hash) ||
        (i + 1 < candidates.size() && candidates[i + 1].hash == hash)) {
      repeated.push_back(candidates[i].place);
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
  std::vector<std::size_t> places;
  LabelSets sets;
  std::vector<LabelSets::Number> labels;
  LabelTally tally;
  const auto findRepeated = [&] { places = repeatedPlaces(messages); };
  const auto countLabels = [&] {
    labels.reserve(messages.size());
    forEachAhead(
        messages, [](const EmailMessage& message) -> const std::vector<Text>& { return message.labels; },
        [](const std::vector<Text>& own) { return own.data(); },
        [&](const std::vector<Text>& own) { labels.push_back(sets.numberOf(own)); });
    sets.sortNodes();
    std::vector<std::int64_t> counts(sets.size());
    for (const auto number : labels) {
      ++counts[number];
    }
    for (LabelSets::Number number = 0; number < counts.size(); ++number) {
      tally.add(sets, number, counts[number]);
    }
  };
  if (messages.size() < worthASecondThread) {
    findRepeated();
    countLabels();
  } else {
    doTogether(countLabels, findRepeated);
  }
  std::vector<LabelTally::Repeated> repeated;
  repeated.reserve(places.size());
  for (const auto place : places) {
    repeated.push_back({messages[place]->id, labels[place]});
  }
  return tally.classification(sets, repeated);
}

}  // namespace tidewrack
