#include "classify/label_sets.h"

#include <algorithm>
#include <utility>

#include "platform/unicode.h"

namespace tidewrack {
namespace {

// Far beyond what any mail program makes. A longer path stands in the tree as one root: the paths of all its
// beginnings together would be as long as the square of its length.
constexpr std::size_t deepestPath = 128;   // components
constexpr std::size_t longestPath = 4096;  // bytes

constexpr std::size_t recentLabels = 4096;  // A power of two.
constexpr std::size_t fewestSlots = 64;
constexpr std::uint32_t freeSlot = static_cast<std::uint32_t>(-1);

std::string_view parentOf(std::string_view path) {
  const auto slash = path.rfind('/');
  const bool isWhole = slash == std::string_view::npos || path.size() > longestPath ||
                       static_cast<std::size_t>(std::ranges::count(path, '/')) >= deepestPath;
  return isWhole ? std::string_view() : path.substr(0, slash);
}

template <typename Enumeration>
std::uint16_t bit(Enumeration value) {
  return static_cast<std::uint16_t>(1U << static_cast<unsigned>(value));
}

}  // namespace

LabelSets::LabelSets() : recent_(recentLabels), slots_(fewestSlots, freeSlot) {}

LabelSets::Number LabelSets::numberOf(const std::vector<Text>& labels) {
  // The labels are put behind those of the known lists, and stay there if they are a new one.
  const std::size_t first = members_.size();
  std::uint32_t hash = 0x811c9dc5U;
  for (const Text& text : labels) {
    if (text.empty()) {
      continue;
    }
    const LabelNumber label = labelOf(text);
    members_.push_back(label);
    hash = (hash ^ label) * 0x9e3779b1U;
    hash ^= hash >> 15U;
  }
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = hash & mask;
  for (; slots_[at] != freeSlot; at = (at + 1) & mask) {
    if (hashes_[slots_[at]] == hash && holds(slots_[at], first, members_.size() - first)) {
      members_.resize(first);
      return slots_[at];
    }
  }
  slots_[at] = add(first);
  hashes_.push_back(hash);
  if (sets_.size() * 2 > slots_.size()) {
    growSlots();
  }
  return static_cast<Number>(sets_.size() - 1);
}

bool LabelSets::holds(Number number, std::size_t first, std::size_t length) const {
  const Set& set = sets_[number];
  return set.length == length &&
         std::equal(members_.begin() + set.first, members_.begin() + set.first + set.length,
                    members_.begin() + static_cast<std::ptrdiff_t>(first));
}

LabelSets::Number LabelSets::add(std::size_t first) {
  Set set;
  set.first = static_cast<std::uint32_t>(first);
  set.length = static_cast<std::uint32_t>(members_.size() - first);
  for (std::size_t i = first; i < members_.size(); ++i) {
    const Set& means = labels_[members_[i]].means;
    set.mailboxes |= means.mailboxes;
    set.categories |= means.categories;
    set.matchingMailboxes |= means.matchingMailboxes;
    set.matchingCategories |= means.matchingCategories;
  }
  sets_.push_back(set);
  return static_cast<Number>(sets_.size() - 1);
}

void LabelSets::growSlots() {
  slots_.assign(slots_.size() * 2, freeSlot);
  const std::size_t mask = slots_.size() - 1;
  for (Number number = 0; number < sets_.size(); ++number) {
    std::size_t at = hashes_[number] & mask;
    while (slots_[at] != freeSlot) {
      at = (at + 1) & mask;
    }
    slots_[at] = number;
  }
}

LabelSets::LabelNumber LabelSets::labelOf(const Text& text) {
  const auto place = reinterpret_cast<std::uintptr_t>(text.view().data());
  Recent& recent = recent_[(place ^ (place >> 12U)) / 16 % recentLabels];
  if (recent.text.view().data() == text.view().data()) {
    return recent.number;
  }
  const LabelNumber number = labelNumbers_.numberOf(text);
  recent = {text, number};
  if (number < labels_.size()) {
    return number;
  }
  Label label;
  const LabelMeaning meaning = resolveLabel(text);
  switch (meaning.kind) {
    case LabelMeaning::Kind::nothing:
      break;
    case LabelMeaning::Kind::mailbox:
      label.means.mailboxes = bit(meaning.mailbox);
      break;
    case LabelMeaning::Kind::category:
      label.means.categories = bit(meaning.category);
      break;
    case LabelMeaning::Kind::user:
      label.filterText = meaning.filterText;
      label.node = meaning.path.empty() ? none : nodeOf(meaning.path);
      break;
  }
  if (const auto mailbox = matchingSystemMailbox(text)) {
    label.means.matchingMailboxes = bit(*mailbox);
  }
  if (const auto category = matchingCategoryFolder(text)) {
    label.means.matchingCategories = bit(*category);
  }
  labels_.push_back(std::move(label));
  return number;
}

LabelSets::NodeNumber LabelSets::nodeOf(const Text& path) {
  if (const auto known = nodeNumbers_.find(path)) {
    return *known;
  }
  const auto parentPath = parentOf(path);
  const NodeNumber parent = parentPath.empty() ? none : nodeOf(Text(parentPath));
  const NodeNumber number = nodeNumbers_.numberOf(path);
  nodes_.push_back({path, Text(path.view().substr(path.view().rfind('/') + 1)), parent});
  return number;
}

void LabelSets::sortNodes() {
  if (sortedNodes_.size() == nodes_.size()) {
    return;
  }
  std::vector<std::vector<NodeNumber>> children(nodes_.size() + 1);  // The last are the roots.
  for (NodeNumber number = 0; number < nodes_.size(); ++number) {
    const NodeNumber parent = nodes_[number].parent;
    children[parent == none ? nodes_.size() : parent].push_back(number);
  }
  for (auto& siblings : children) {
    std::ranges::sort(siblings, [this](NodeNumber a, NodeNumber b) {
      const int order = localizedCaseInsensitiveCompare(nodes_[a].path, nodes_[b].path);
      return order != 0 ? order < 0 : nodes_[a].path < nodes_[b].path;
    });
  }
  sortedNodes_.clear();
  std::vector<NodeNumber> open(children.back().rbegin(), children.back().rend());
  while (!open.empty()) {
    const NodeNumber number = open.back();
    open.pop_back();
    sortedNodes_.push_back(number);
    open.insert(open.end(), children[number].rbegin(), children[number].rend());
  }
}

std::vector<bool> LabelSets::setsWithLabelAtOrBelow(std::string_view path) const {
  std::vector<bool> isBelow(labels_.size());
  for (std::size_t i = 0; i < labels_.size(); ++i) {
    const std::string_view text = labels_[i].filterText;
    isBelow[i] =
        !text.empty() && text.starts_with(path) && (text.size() == path.size() || text[path.size()] == '/');
  }
  std::vector<bool> result(sets_.size());
  for (std::size_t i = 0; i < sets_.size(); ++i) {
    const auto first = members_.begin() + sets_[i].first;
    result[i] =
        std::any_of(first, first + sets_[i].length, [&](LabelNumber label) { return isBelow[label]; });
  }
  return result;
}

}  // namespace tidewrack
