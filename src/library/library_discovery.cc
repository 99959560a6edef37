#include "library/library_discovery.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "library/message_store.h"
#include "mail/json_coding.h"
#include "platform/sqlite.h"

namespace tidewrack {
namespace {

/// What is counted of one library while its messages pass by.
struct Group {
  DiscoveredLibrary found;
  std::unordered_set<Text> senders;
  std::unordered_set<Text> conversations;
  std::unordered_set<std::string> labelLists;  // Each list is decoded once.
  std::set<Text> labels;
  std::set<Text> categories;

  void addLabels(std::string_view json) {
    if (!labelLists.emplace(json).second) {
      return;
    }
    try {
      for (const Text& label : decodeStrings(json)) {
        labels.insert(label);
      }
    } catch (const CodingFailure&) {
      // A message with damaged labels adds none; the library is there all the same.
    }
  }

  void addDate(Date date) {
    found.earliestDate = std::min(found.earliestDate.value_or(date), date);
    found.latestDate = std::max(found.latestDate.value_or(date), date);
  }
};

void insertUnlessEmpty(auto& set, std::string_view text) {
  if (!text.empty()) {
    set.insert(text);
  }
}

}  // namespace

std::vector<DiscoveredLibrary> discoverLibraries(const std::set<std::string>& knownIDs,
                                                 ModelContext& context) {
  MessageStore::Reading reading(context.store());
  SQLiteConnection& connection = reading.connection(0);

  // The unknown libraries, and the rows of "source" that belong to each.
  std::map<Text, Group> groups;
  std::unordered_map<std::int64_t, std::pair<Group*, Text>> groupOfSource;
  auto sources =
      connection.prepare("SELECT number, libraryID, libraryName FROM source WHERE libraryID <> ''");
  while (sources.step()) {
    const Text id = sources.bytes(1);
    if (!knownIDs.contains(id.string())) {
      groupOfSource[sources.integer(0)] = {&groups[id], sources.bytes(2)};
    }
  }

  auto rows = connection.prepare(
      "SELECT date, fromAddress, conversationID, labelsData, category, "
      "(SELECT count(*) FROM attachment WHERE message = number) FROM message WHERE source = ?");
  auto firstRow = connection.prepare("SELECT min(number) FROM message WHERE source = ?");
  std::unordered_map<Group*, std::int64_t> firstOfGroup;
  for (const auto& [source, entry] : groupOfSource) {
    const auto& [group, name] = entry;
    rows.bindInteger(1, source);
    const std::int64_t before = group->found.messageCount;
    while (rows.step()) {
      ++group->found.messageCount;
      if (!rows.isNull(0)) {
        group->addDate(dateFromSeconds(rows.real(0)));
      }
      insertUnlessEmpty(group->senders, rows.bytes(1));
      insertUnlessEmpty(group->conversations, rows.bytes(2));
      group->addLabels(rows.bytes(3));
      insertUnlessEmpty(group->categories, rows.bytes(4));
      group->found.attachmentCount += rows.integer(5);
    }
    rows.reset();
    if (group->found.messageCount == before) {
      continue;
    }
    // The name is that of the first message of the library, whichever name that has for it.
    firstRow.bindInteger(1, source);
    firstRow.step();
    const std::int64_t first = firstRow.integer(0);
    firstRow.reset();
    const auto [known, isFirst] = firstOfGroup.try_emplace(group, first);
    if (isFirst || first < known->second) {
      known->second = first;
      group->found.displayName = name;
    }
  }

  std::vector<DiscoveredLibrary> libraries;
  for (auto& [id, group] : groups) {
    DiscoveredLibrary& library = group.found;
    if (library.messageCount == 0) {
      continue;
    }
    library.id = id;
    if (library.displayName.empty()) {
      library.displayName = id;
    }
    library.uniqueSendersCount = static_cast<std::int64_t>(group.senders.size());
    library.uniqueConversationsCount = static_cast<std::int64_t>(group.conversations.size());
    library.labels.assign(group.labels.begin(), group.labels.end());
    library.categories.assign(group.categories.begin(), group.categories.end());
    libraries.push_back(std::move(library));
  }
  std::stable_sort(libraries.begin(), libraries.end(), [](const auto& a, const auto& b) {
    return a.latestDate.value_or(distantPast) > b.latestDate.value_or(distantPast);
  });
  return libraries;
}

}  // namespace tidewrack
