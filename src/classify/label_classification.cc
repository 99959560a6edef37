#include "classify/label_classification.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "platform/unicode.h"

namespace tidewrack {
namespace {

using UserLabelNode = LabelClassification::UserLabelNode;

/// The messages of one label path. Ids are counted once; the last id is remembered because a message adds
/// its paths one after the other.
struct PathTally {
  std::unordered_set<Text> direct;
  std::unordered_set<Text> total;
};

/// Every prefix of a path, from its first component to the whole.
template <typename Visit>
void forEachPrefix(std::string_view path, Visit visit) {
  for (auto slash = path.find('/'); slash != std::string_view::npos; slash = path.find('/', slash + 1)) {
    visit(path.substr(0, slash));
  }
  visit(path);
}

std::string_view parentOf(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

std::string_view nameOf(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

using Tallies = std::unordered_map<Text, PathTally>;

/// Builds the tree level by level from the deepest paths up, so that a path of any depth needs no recursion.
std::vector<UserLabelNode> buildTree(const Tallies& tallies) {
  std::vector<Text> paths;
  paths.reserve(tallies.size());
  for (const auto& [path, tally] : tallies) {
    paths.push_back(path);
  }
  // Deeper first; at one depth in the order of the screen, with the bytes as the last word so that equal
  // names have a place.
  const auto depth = [](const Text& path) { return std::ranges::count(path.view(), '/'); };
  std::unordered_map<Text, long> depths;
  for (const auto& path : paths) {
    depths.emplace(path, depth(path));
  }
  std::sort(paths.begin(), paths.end(), [&](const Text& a, const Text& b) {
    const auto depthA = depths.at(a);
    const auto depthB = depths.at(b);
    if (depthA != depthB) {
      return depthA > depthB;
    }
    const int order = localizedCaseInsensitiveCompare(a, b);
    return order != 0 ? order < 0 : a < b;
  });
  std::unordered_map<Text, std::vector<UserLabelNode>> childrenOf;
  for (const auto& path : paths) {
    const auto& tally = tallies.at(path);
    UserLabelNode node;
    node.path = path;
    node.name = Text(nameOf(path));
    node.directCount = static_cast<std::int64_t>(tally.direct.size());
    node.count = static_cast<std::int64_t>(tally.total.size());
    if (const auto children = childrenOf.find(path); children != childrenOf.end()) {
      node.children = std::move(children->second);
    }
    childrenOf[Text(parentOf(path))].push_back(std::move(node));
  }
  return std::move(childrenOf[Text()]);
}

}  // namespace

LabelClassification LabelClassification::classify(const MessageList& messages) {
  std::array<std::int64_t, allGmailSystemMailboxes.size()> mailboxes{};
  std::array<std::int64_t, allGmailCategoryFolders.size()> categories{};
  Tallies tallies;
  LabelResolver resolver;
  for (const auto& message : messages) {
    unsigned inMailboxes = 0;
    unsigned inCategories = 0;
    for (const auto& label : message->labels) {
      const auto& meaning = resolver.resolve(label);
      switch (meaning.kind) {
        case LabelMeaning::Kind::nothing:
          break;
        case LabelMeaning::Kind::mailbox:
          inMailboxes |= 1U << static_cast<unsigned>(meaning.mailbox);
          break;
        case LabelMeaning::Kind::category:
          inCategories |= 1U << static_cast<unsigned>(meaning.category);
          break;
        case LabelMeaning::Kind::user:
          if (!meaning.path.empty()) {
            tallies[meaning.path].direct.insert(message->id);
            forEachPrefix(meaning.path,
                          [&](std::string_view prefix) { tallies[Text(prefix)].total.insert(message->id); });
          }
          break;
      }
    }
    for (std::size_t i = 0; i < mailboxes.size(); ++i) {
      mailboxes[i] += (inMailboxes >> i) & 1U;
    }
    for (std::size_t i = 0; i < categories.size(); ++i) {
      categories[i] += (inCategories >> i) & 1U;
    }
  }

  LabelClassification result;
  for (const auto mailbox : allGmailSystemMailboxes) {
    if (const auto count = mailboxes[static_cast<std::size_t>(mailbox)]; count > 0) {
      result.systemMailboxes.push_back({mailbox, count});
    }
  }
  std::ranges::sort(result.systemMailboxes, {},
                    [](const auto& b) { return appearance(b.mailbox).sidebarRank; });
  for (const auto category : allGmailCategoryFolders) {
    if (const auto count = categories[static_cast<std::size_t>(category)]; count > 0) {
      result.gmailCategories.push_back({category, count});
    }
  }
  std::ranges::sort(result.gmailCategories, {},
                    [](const auto& b) { return appearance(b.category).sidebarRank; });
  result.userLabelTree = buildTree(tallies);
  return result;
}

}  // namespace tidewrack
