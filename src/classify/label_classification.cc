#include "classify/label_classification.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/unicode.h"

namespace tidewrack {
namespace {

using UserLabelNode = LabelClassification::UserLabelNode;

// Far beyond what any mail program makes. A longer path stands in the tree as one root: the paths of all its
// beginnings together would be as long as the square of its length.
constexpr std::size_t deepestPath = 128;   // components
constexpr std::size_t longestPath = 4096;  // bytes

std::string_view parentOf(std::string_view path) {
  const auto slash = path.rfind('/');
  const bool isWhole = slash == std::string_view::npos || path.size() > longestPath ||
                       static_cast<std::size_t>(std::ranges::count(path, '/')) >= deepestPath;
  return isWhole ? std::string_view() : path.substr(0, slash);
}

std::string_view nameOf(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

/// Goes through the messages once. Each distinct label and each path of the tree has one entry, which
/// remembers the message that counted last, so that a message counts once for whatever it carries twice.
class Counter {
 public:
  explicit Counter(const MessageList& messages) {
    for (const auto& message : messages) {
      ++messageNumber_;
      unsigned inMailboxes = 0;
      unsigned inCategories = 0;
      for (const auto& text : message->labels) {
        const Label& label = labelOf(text);
        inMailboxes |= label.mailboxBit;
        inCategories |= label.categoryBit;
        if (label.node != none) {
          countUserLabel(label.node);
        }
      }
      for (std::size_t i = 0; i < mailboxes_.size(); ++i) {
        mailboxes_[i] += (inMailboxes >> i) & 1U;
      }
      for (std::size_t i = 0; i < categories_.size(); ++i) {
        categories_[i] += (inCategories >> i) & 1U;
      }
    }
    if (!nodes_.empty()) {
      takeRepeatedIDsBack(messages);
    }
  }

  LabelClassification result() && {
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
    result.userLabelTree = tree();
    return result;
  }

 private:
  using NodeIndex = std::size_t;
  static constexpr NodeIndex none = static_cast<NodeIndex>(-1);

  struct Label {
    unsigned mailboxBit = 0;
    unsigned categoryBit = 0;
    NodeIndex node = none;  // Of a user label.
  };
  struct Node {
    Text path;
    NodeIndex parent = none;  // Always before its children.
    std::int64_t count = 0;
    std::int64_t directCount = 0;
    std::uint64_t lastCounted = 0;  // Message numbers from 1.
    std::uint64_t lastCountedDirectly = 0;
  };

  const Label& labelOf(const Text& text) {
    const auto found = labels_.find(text);
    if (found != labels_.end()) {
      return found->second;
    }
    const auto meaning = resolveLabel(text);
    Label label;
    if (meaning.kind == LabelMeaning::Kind::mailbox) {
      label.mailboxBit = 1U << static_cast<unsigned>(meaning.mailbox);
    } else if (meaning.kind == LabelMeaning::Kind::category) {
      label.categoryBit = 1U << static_cast<unsigned>(meaning.category);
    } else if (meaning.kind == LabelMeaning::Kind::user && !meaning.path.empty()) {
      label.node = nodeOf(meaning.path);
    }
    return labels_.emplace(text, label).first->second;
  }

  NodeIndex nodeOf(const Text& path) {
    const auto found = nodeOfPath_.find(path);
    if (found != nodeOfPath_.end()) {
      return found->second;
    }
    const auto parentPath = parentOf(path);
    Node node;
    node.path = path;
    node.parent = parentPath.empty() ? none : nodeOf(Text(parentPath));
    nodes_.push_back(std::move(node));
    nodeOfPath_.emplace(path, nodes_.size() - 1);
    return nodes_.size() - 1;
  }

  void countUserLabel(NodeIndex index) {
    if (std::exchange(nodes_[index].lastCountedDirectly, messageNumber_) != messageNumber_) {
      ++nodes_[index].directCount;
    }
    // Where this message has counted already, it has for everything above.
    for (; index != none && nodes_[index].lastCounted != messageNumber_; index = nodes_[index].parent) {
      nodes_[index].lastCounted = messageNumber_;
      ++nodes_[index].count;
    }
  }

  // The tree counts ids, not messages: a further message of the same id adds only what the earlier ones lack.
  // Ids are compared by hash first, because as a rule no two messages share one.
  void takeRepeatedIDsBack(const MessageList& messages) {
    const auto hashOf = [](const auto& message) { return std::hash<Text>()(message->id); };
    std::vector<std::size_t> hashes(messages.size());
    std::ranges::transform(messages, hashes.begin(), hashOf);
    std::ranges::sort(hashes);
    std::unordered_set<std::size_t> repeated;
    for (auto at = std::ranges::adjacent_find(hashes); at != hashes.end();
         at = std::adjacent_find(std::next(at), hashes.end())) {
      repeated.insert(*at);
    }
    if (repeated.empty()) {
      return;
    }
    std::unordered_map<Text, std::unordered_set<NodeIndex>> counted;
    std::unordered_map<Text, std::unordered_set<NodeIndex>> countedDirectly;
    for (const auto& message : messages) {
      if (!repeated.contains(hashOf(message))) {
        continue;
      }
      ++messageNumber_;
      for (const auto& text : message->labels) {
        const NodeIndex direct = labelOf(text).node;
        if (direct == none) {
          continue;
        }
        if (std::exchange(nodes_[direct].lastCountedDirectly, messageNumber_) != messageNumber_ &&
            !countedDirectly[message->id].insert(direct).second) {
          --nodes_[direct].directCount;
        }
        for (auto i = direct; i != none && nodes_[i].lastCounted != messageNumber_; i = nodes_[i].parent) {
          nodes_[i].lastCounted = messageNumber_;
          if (!counted[message->id].insert(i).second) {
            --nodes_[i].count;
          }
        }
      }
    }
  }

  std::vector<UserLabelNode> tree() {
    std::vector<std::vector<UserLabelNode>> children(nodes_.size());
    std::vector<UserLabelNode> roots;
    const auto sort = [](std::vector<UserLabelNode>& siblings) {
      std::ranges::sort(siblings, [](const UserLabelNode& a, const UserLabelNode& b) {
        // Paths that compare equal take the order of their bytes.
        const int order = localizedCaseInsensitiveCompare(a.path, b.path);
        return order != 0 ? order < 0 : a.path < b.path;
      });
    };
    for (auto index = nodes_.size(); index-- > 0;) {
      const Node& node = nodes_[index];
      sort(children[index]);
      UserLabelNode result;
      result.path = node.path;
      result.name = Text(nameOf(node.path));
      result.count = node.count;
      result.directCount = node.directCount;
      result.children = std::move(children[index]);
      (node.parent == none ? roots : children[node.parent]).push_back(std::move(result));
    }
    sort(roots);
    return roots;
  }

  std::array<std::int64_t, allGmailSystemMailboxes.size()> mailboxes_{};
  std::array<std::int64_t, allGmailCategoryFolders.size()> categories_{};
  std::unordered_map<Text, Label> labels_;
  std::unordered_map<Text, NodeIndex> nodeOfPath_;
  std::vector<Node> nodes_;
  std::uint64_t messageNumber_ = 0;
};

}  // namespace

LabelClassification LabelClassification::classify(const MessageList& messages) {
  return Counter(messages).result();
}

}  // namespace tidewrack
