// What the main thread does in the real window over a list of a million messages, from a change to the new
// list in its widget.

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include <time.h>

#include "measure.h"
#include "message_list_generator.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

constexpr std::size_t messageCount = 1'000'000;
constexpr int turns = 5;
constexpr double frame = 16;

double processorMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// Milliseconds of processor time of the main thread, which do not count what else the machine is busy with.
struct Times {
  std::vector<double> list;  // Until the rows of the new list are there (the controller's part is `known`),
  std::vector<double> picture;  // and until all is laid out and painted.
  std::vector<double> known;    // Until the controller has the new list.

  static double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
  }
  void show(bench::Table& table, const std::string& what, double goal) const {
    table.addMilliseconds(what + ", median of " + std::to_string(list.size()), median(list), goal);
    char note[96];
    std::snprintf(note, sizeof note, "worst %.1f ms; list known after %.1f, painted after %.1f",
                  std::ranges::max(list), median(known), median(picture));
    table.addNote("  ", note);
  }
};

class ListFigures : public WindowTest {
 protected:
  void openWithMessages() {
    open();
    const auto flow = screen_->replaceMessages(bench::generateMessageList(messageCount), nullptr);
    constexpr int patience = 120;  // seconds
    ASSERT_TRUE(
        runUntil([&] { return flow.done() && !screen_->searchIndex().empty() && isSettled(); }, patience));
    runPending();
  }
  bool isSettled() { return !screen_->isIndexing() && showsList(); }
  bool showsList() {
    return window_->list().model()->shows(screen_->cachedFilteredMessages(),
                                          screen_->cachedConversationCounts());
  }
  template <typename Change>
  void measure(Times& times, Change change) {
    const double before = processorMilliseconds();
    change();
    times.known.push_back(processorMilliseconds() - before);
    ASSERT_TRUE(runUntil([this] { return showsList(); }));
    times.list.push_back(processorMilliseconds() - before);
    // A frame is whole when the next one begins.
    int frames = 0;
    window_->list().add_tick_callback(
        [&frames](const Glib::RefPtr<Gdk::FrameClock>&) { return ++frames < 2; });
    ASSERT_TRUE(runUntil([&] { return frames == 2; }));
    times.picture.push_back(processorMilliseconds() - before);
    settle();
  }
  /// Lets the background work of the last change end, so that it does not slow the next.
  void settle() {
    const auto flow = screen_->whenDerivedStateIsCurrent();
    runUntil([&] { return flow.done(); });
    runPending();
  }
  void type(Times& times, const std::string& words) {
    auto* const field = find<Gtk::SearchEntry>("messages.searchField");
    ASSERT_NE(field, nullptr);
    for (int turn = 0; turn < turns; ++turn) {
      for (std::size_t length = 1; length <= words.size(); ++length) {
        measure(times, [&] { field->set_text(words.substr(0, length)); });
      }
      field->set_text("");
      settle();
    }
  }
};

TEST_F(ListFigures, OfAMillionMessages) {
  openWithMessages();
  ASSERT_EQ(screen_->cachedFilteredMessages().size(), messageCount);
  bench::Table table;

  Times keys;
  type(keys, "invoice 4711");
  keys.show(table, "key press in the search field", frame);
  Times common;
  type(common, "in");
  for (int turn = 0; turn < turns * 4; ++turn) {
    measure(common, [&] { screen_->searchText.set("inbox"); });
    measure(common, [&] { screen_->searchText.set(""); });
  }
  common.show(table, "  a word of a third of all messages, and none", frame);

  Times selections;
  for (int turn = 0; turn < turns; ++turn) {
    for (const auto& selection :
         {SidebarSelection::mailbox(GmailSystemMailbox::inbox), SidebarSelection::library("library-0"),
          SidebarSelection::gmailCategory(GmailCategoryFolder::updates), SidebarSelection::label("Area 1"),
          SidebarSelection::category("Work"), SidebarSelection::allLibraries()}) {
      measure(selections, [&] { screen_->sidebarSelection.set(selection); });
    }
  }
  selections.show(table, "change of the selection", frame);

  Times filters;
  for (int turn = 0; turn < turns * 2; ++turn) {
    SearchFilters wanted;
    wanted.attachmentFilter = AttachmentFilter::withAttachments;
    measure(filters, [&] { screen_->advancedFilters.set(wanted); });
    measure(filters, [&] { screen_->advancedFilters.set(SearchFilters()); });
  }
  filters.show(table, "change of a filter", frame);

  Times categories;
  std::vector<Task<>> stores;
  for (int i = 0; i < turns * 20; ++i) {
    const Text id = screen_->messages()[static_cast<std::size_t>(i) * 977 % messageCount]->id;
    measure(categories,
            [&] { stores.push_back(screen_->setCategory(id, i % 2 == 0 ? "Shopping" : "Travel")); });
  }
  ASSERT_TRUE(
      runUntil([&] { return std::ranges::all_of(stores, [](const auto& store) { return store.done(); }); }));
  categories.show(table, "change of one message's category", 1);
}

}  // namespace
}  // namespace tidewrack
