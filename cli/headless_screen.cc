#include "cli/headless_screen.h"

#include <algorithm>

#include "platform/localized.h"
#include "sync/store_bootstrap.h"

namespace tidewrack {

HeadlessScreen::HeadlessScreen(Search search) {
  const std::vector<std::string> arguments = {"tidewrackctl"};
  screen_ = std::make_unique<ContentView>(ContentViewServices{
      .executor = executor_,
      .settings = settings_,
      .container = makeSharedModelContainer({.arguments = arguments, .settings = settings_}),
      .arguments = arguments,
      .tokenStore = search == Search::with ? &tokens_ : nullptr,
      .maintainsSearchIndex = search == Search::with});
  run(screen_->startup());
  run(screen_->whenDerivedStateIsCurrent());
  executor_.runUntil([this] { return !screen_->isIndexing(); });
}

HeadlessScreen::~HeadlessScreen() {
  // The process ends next, and the system takes the messages back in one piece; to free them one by one
  // takes far longer.
  static auto* const kept = std::make_unique<SharedMessageList>().release();
  *kept = screen_->messages();
}

const MBOXLibrary& HeadlessScreen::importedLibrary(const std::string& id) const {
  const auto& libraries = screen_->libraries();
  const auto found = std::find_if(libraries.begin(), libraries.end(),
                                  [&](const MBOXLibrary& library) { return library.id == id; });
  if (found == libraries.end()) {
    throw Failure(formatText(
        localized("ctl_no_such_library", "There is no library with the id \"%@\".", "tidewrackctl error"),
        {id}));
  }
  return *found;
}

std::shared_ptr<const EmailMessage> HeadlessScreen::message(const std::string& id) const {
  for (const auto& message : screen_->messages()) {
    if (message->id == id) {
      return message;
    }
  }
  throw Failure(formatText(
      localized("ctl_no_such_message", "There is no message with the id \"%@\".", "tidewrackctl error"),
      {id}));
}

void HeadlessScreen::run(Task<> flow) {
  executor_.runUntil([&] { return flow.done(); });
  flow.await_resume();
  if (const auto& status = screen_->importStatus()) {
    if (const auto* error = status->as<ImportStatus::Error>()) {
      throw Failure(error->message);
    }
  }
  if (const auto& error = screen_->importErrorMessage()) {
    throw Failure(*error);
  }
}

}  // namespace tidewrack
