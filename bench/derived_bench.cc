#include "derived_bench.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <time.h>

#include "library/store_operations.h"
#include "mail/json_lists.h"
#include "mail/text_pool.h"
#include "message_list_generator.h"
#include "platform/main_loop_executor.h"
#include "platform/sqlite.h"
#include "screen/content_view.h"

namespace tidewrack::bench {
namespace {

namespace fs = std::filesystem;

/// The screen over the list, with its index.
struct World {
  World(const fs::path& folder, const MessageList& messages) : settings(folder / "settings.ini") {
    view = std::make_unique<ContentView>(ContentViewServices{.executor = executor,
                                                             .settings = settings,
                                                             .container = ModelContainer::inMemory(),
                                                             .applicationFolder = folder,
                                                             .arguments = {"tidewrack-bench"}});
    run(view->replaceMessages(messages, nullptr));
    executor.runUntil([&] { return !view->searchIndex().empty(); });
    settle();
  }
  void run(const Task<>& flow) {
    executor.runUntil([&] { return flow.done(); });
  }
  /// Lets the background work of the last change end, so that it does not slow the next.
  void settle() { run(view->whenDerivedStateIsCurrent()); }

  MainLoopExecutor executor;
  Settings settings;
  std::unique_ptr<ContentView> view;
};

double processorMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

struct Times {
  std::vector<double> milliseconds;

  /// Processor time of this thread, which does not count what else the machine is busy with.
  void add(const std::function<void()>& change) {
    const double before = processorMilliseconds();
    change();
    milliseconds.push_back(processorMilliseconds() - before);
  }
  [[nodiscard]] double median() {
    std::ranges::sort(milliseconds);
    return milliseconds[milliseconds.size() / 2];
  }
  [[nodiscard]] double worst() const { return std::ranges::max(milliseconds); }
};

void show(Table& table, const std::string& what, Times times, double goal) {
  table.addMilliseconds(what + ", median of " + std::to_string(times.milliseconds.size()), times.median(),
                        goal);
  char worst[32];
  std::snprintf(worst, sizeof worst, "%.1f ms", times.worst());
  table.addNote("  worst", worst);
}

void measureSearch(World& world, int turns, Table& table) {
  ContentView& screen = *world.view;
  const auto type = [&](const std::string& words) {
    Times times;
    for (int turn = 0; turn < turns; ++turn) {
      for (std::size_t length = 1; length <= words.size(); ++length) {
        times.add([&] { screen.searchText.set(words.substr(0, length)); });
        world.settle();
      }
      screen.searchText.set("");
    }
    return times;
  };
  show(table, "key press in the search field, \"invoice 4711\"", type("invoice 4711"), 16);
  screen.sidebarSelection.set(SidebarSelection::mailbox(GmailSystemMailbox::inbox));
  show(table, "  within a mailbox, \"library project\"", type("library project"), 16);
  screen.sidebarSelection.set(std::nullopt);
  // A word of every message.
  Times common;
  for (int turn = 0; turn < turns * 4; ++turn) {
    common.add([&] { screen.searchText.set("inbox"); });
    common.add([&] { screen.searchText.set(""); });
  }
  show(table, "  a word of a third of all messages, and none", common, 16);
}

void measureSelection(World& world, int turns, Table& table) {
  ContentView& screen = *world.view;
  Times times;
  for (int turn = 0; turn < turns; ++turn) {
    for (const auto& selection :
         {SidebarSelection::mailbox(GmailSystemMailbox::inbox), SidebarSelection::library("library-0"),
          SidebarSelection::gmailCategory(GmailCategoryFolder::updates), SidebarSelection::label("Area 1"),
          SidebarSelection::category("Work"), SidebarSelection::library("library-1"),
          SidebarSelection::allLibraries()}) {
      times.add([&] { screen.sidebarSelection.set(selection); });
      world.settle();
    }
  }
  show(table, "change of the selection", times, 16);
}

void measureFilters(World& world, int turns, Table& table) {
  ContentView& screen = *world.view;
  Times facts;
  Times texts;
  Times wait;
  for (int turn = 0; turn < turns; ++turn) {
    SearchFilters filters;
    const auto apply = [&](Times& times) {
      times.add([&] { screen.advancedFilters.set(filters); });
      const double seconds = secondsOf([&] { world.settle(); });
      if (&times == &texts) {
        wait.milliseconds.push_back(seconds * 1e3);
      }
    };
    filters.attachmentFilter = AttachmentFilter::withAttachments;
    apply(facts);
    filters.useDateFilter = true;
    filters.startDate = Date(std::chrono::seconds(1'500'000'000));
    filters.endDate = Date(std::chrono::seconds(1'700'000'000));
    apply(facts);
    filters = SearchFilters();
    apply(facts);
    filters.subjectQuery = "Harbour";
    apply(texts);
    filters = SearchFilters();
    apply(facts);
  }
  show(table, "change of a filter", facts, 16);
  show(table, "  that looks into texts, main thread", texts, 16);
  char note[32];
  // Later turns find what the first has learnt.
  std::snprintf(note, sizeof note, "%.0f ms", wait.worst());
  table.addNote("  until its list stands, the first time", note);
}

void measureCategories(World& world, int turns, Table& table) {
  ContentView& screen = *world.view;
  std::vector<Task<>> stores;
  const auto change = [&](const char* category) {
    Times times;
    for (int i = 0; i < turns * 50; ++i) {
      const Text id = screen.messages()[static_cast<std::size_t>(i) * 977 % screen.messages().size()]->id;
      times.add([&] { stores.push_back(screen.setCategory(id, Text(category))); });
      world.run(stores.back());
    }
    return times;
  };
  show(table, "change of one message's category", change("Shopping"), 1);
  screen.sidebarSelection.set(SidebarSelection::category("Finance"));
  show(table, "  while that category is selected", change("Finance"), 1);
  screen.sidebarSelection.set(SidebarSelection::mailbox(GmailSystemMailbox::inbox));
  screen.searchText.set("invoice");
  show(table, "  during a search in a mailbox", change("Travel"), 1);
  screen.sidebarSelection.set(std::nullopt);
  screen.searchText.set("");
}

void measureClassification(const MessageList& generated, int turns, const fs::path& folder, Table& table) {
  const fs::path file = folder / "derived.store";
  for (const char* suffix : {"", "-wal", "-shm", ".lock"}) {
    fs::remove(file.string() + suffix);
  }
  MessageList messages;
  {
    const auto container = ModelContainer::open(file);
    ModelContext context = container->newContext();
    saveMessages(generated, context);
    messages = fetchAllMessages(context);
  }
  std::size_t labels = 0;
  const auto readLabels = [&] {
    return secondsOf([&] {
      SQLiteConnection store(file, SQLiteConnection::Mode::readOnly);
      auto rows = store.prepare("SELECT labelsData FROM message");
      TextPool pool;
      std::vector<std::vector<Text>> lists;
      while (rows.step()) {
        lists.emplace_back();
        readStrings(rows.bytes(0), lists.back(), [&pool](std::string_view text) { return pool.text(text); });
        labels += lists.back().size();
      }
      if (lists.size() != messages.size()) {
        throw std::runtime_error("labels are missing");
      }
    });
  };
  const auto classify = [&] {
    return secondsOf([&] {
      if (LabelClassification::classify(messages).systemMailboxes.empty()) {
        throw std::runtime_error("nothing was classified");
      }
    });
  };
  table.addRatio("first classification (reading the labels from the store)",
                 medianOfTurns(turns, classify, readLabels), 0.5);
  if (labels == 0) {
    throw std::runtime_error("no labels were read");
  }
  // The same list after one message has changed.
  LabelSets sets;
  LabelTally tally;
  for (const auto& message : messages) {
    tally.add(sets, sets.numberOf(message->labels), 1);
  }
  sets.sortNodes();
  Times again;
  for (int i = 0; i < turns * 20; ++i) {
    const auto& message = messages[static_cast<std::size_t>(i) * 977 % messages.size()];
    again.add([&] {
      tally.add(sets, sets.numberOf(message->labels), -1);
      tally.add(sets, sets.numberOf({"Inbox", "Area 1/Topic 1"}), 1);
      if (tally.classification(sets, {}).userLabelTree.empty()) {
        throw std::runtime_error("nothing was classified");
      }
    });
  }
  show(table, "classification again after one message has changed", again, 1);
  fs::remove(file);
}

}  // namespace

void measureDerivedState(std::size_t count, int turns, const fs::path& folder, Table& table) {
  fs::create_directories(folder);
  const MessageList messages = generateMessageList(count);
  std::printf("derived state of %zu messages, processor time of the main thread:\n", count);
  measureClassification(messages, turns, folder, table);
  {
    const SharedMessageList list = messages;
    std::shared_ptr<const MessageFacts> facts;
    Times times;
    for (int turn = 0; turn < turns; ++turn) {
      times.add([&] { facts = MessageFacts::of(list); });
    }
    char note[32];
    std::snprintf(note, sizeof note, "%.0f ms", times.median());
    table.addNote("making the facts of the list, in the background", note);
  }
  World world(folder / "derived-world", messages);
  measureSearch(world, turns, table);
  measureSelection(world, turns, table);
  measureFilters(world, turns, table);
  measureCategories(world, turns, table);
}

}  // namespace tidewrack::bench
