#pragma once

#include <memory>
#include <string>

#include "classify/search_token_store.h"
#include "library/model_container.h"
#include "platform/main_loop_executor.h"
#include "platform/settings.h"
#include "screen/content_view.h"

namespace tidewrack {

/// The controller of the main window without a window, over the user's own data: the same store, catalog
/// and settings, found the same way. One in a process.
class HeadlessScreen {
 public:
  /// Whether the search index is at hand and its stored form follows the messages. A command that neither
  /// searches nor changes the list of messages spares itself loading it.
  enum class Search { without, with };

  /// Opens the store and loads what it holds, as the window does when it appears. Throws Failure, for
  /// example when the window has the store open.
  explicit HeadlessScreen(Search search = Search::without);
  ~HeadlessScreen();
  HeadlessScreen(const HeadlessScreen&) = delete;
  HeadlessScreen& operator=(const HeadlessScreen&) = delete;

  [[nodiscard]] ContentView& screen() { return *screen_; }
  /// The library with this id. Throws Failure when there is none.
  [[nodiscard]] const MBOXLibrary& importedLibrary(const std::string& id) const;
  /// The loaded message with this id. Throws Failure when there is none.
  [[nodiscard]] std::shared_ptr<const EmailMessage> message(const std::string& id) const;
  /// Runs the main loop until the flow has ended. Throws what the screen reports as its error.
  void run(Task<> flow);

 private:
  MainLoopExecutor executor_;
  Settings settings_;
  PersistedSearchTokenStore tokens_;
  std::unique_ptr<ContentView> screen_;
};

}  // namespace tidewrack
