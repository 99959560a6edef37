#include "screen/content_view.h"

#include <algorithm>
#include <iterator>

#include "classify/message_text.h"
#include "platform/localized.h"
#include "platform/log.h"
#include "platform/text_numbers.h"

namespace tidewrack {

namespace {

const Logger& logger() {
  return Logger::of("ContentView");
}

// The present list with `added` put in by id, newest first.
MessageList merge(const SharedMessageList& present, const MessageList& added) {
  TextNumbers ids;
  ids.reserve(added.size());
  MessageList waiting;  // The message of each id until it is placed; of two with the same id the later stays.
  waiting.reserve(added.size());
  ids.numberEach(
      added.size(), [&](std::size_t i) -> const Text& { return added[i]->id; },
      [&](std::size_t i, TextNumbers::Number number) {
        if (number == waiting.size()) {
          waiting.push_back(added[i]);
        } else {
          waiting[number] = added[i];
        }
      });
  MessageList merged;
  merged.reserve(present.size() + waiting.size());
  for (const auto& message : present) {
    const auto found = ids.find(message->id);
    if (!found) {
      merged.push_back(message);
    } else if (waiting[*found]) {
      merged.push_back(std::move(waiting[*found]));
    }
  }
  std::ranges::copy_if(waiting, std::back_inserter(merged),
                       [](const auto& message) { return message != nullptr; });
  sortNewestFirst(merged);
  return merged;
}

}  // namespace

ContentView::ContentView(ContentViewServices services)
    : services_(std::move(services)),
      modelContext_(std::make_shared<ModelContext>(services_.container->newContext())) {
  advancedFilters.set(SearchFilters::defaults(services_.executor.now()));
  derivedInput_ = derivedInput();
  cachedConversationCounts.set(derived_.counts.conversations);
  cachedCategoryCounts.set(derived_.counts.categories);
  followSettings();
  reactToChanges();
}

ContentView::~ContentView() = default;

void ContentView::followSettings() {
  const auto follow = [this](Observable<bool>& field, SettingKey key) {
    field.set(services_.settings.boolean(key));
    subscriptions_.push_back(
        services_.settings.observe(key, [this, &field, key] { field.set(services_.settings.boolean(key)); }));
  };
  follow(intelligenceEnabled, SettingKey::intelligenceEnabled);
  follow(enableCategoryDetection, SettingKey::enableCategoryDetection);
  follow(iCloudSyncEnabled, SettingKey::iCloudSyncEnabled);
}

void ContentView::reactToChanges() {
  sidebarSelection.setReaction([this] { recompute(true); });
  messages.setReaction([this] {
    keepIndexedMessages();
    recompute(false);
    refreshSearchIndexInBackground();
    refreshDiscoveredLibraries();
  });
  libraries.setReaction([this] { refreshDiscoveredLibraries(); });
  searchText.setReaction([this] { recompute(false); });
  advancedFilters.setReaction([this] { recompute(false); });
  // One job a toast: it clears whatever toast shows when it fires, also one that came later.
  currentToast.setReaction([this] {
    if (const auto& toast = currentToast()) {
      const auto time = std::chrono::duration<double>(toast->duration);
      services_.executor.after(std::chrono::duration_cast<std::chrono::milliseconds>(time),
                               [this] { currentToast.set(std::nullopt); });
    }
  });
}

// -- Derived values ---------------------------------------------------------------------------------------

std::string ContentView::subtitle() const {
  return formatText(localized("messages_count_subtitle", "%d messages",
                              "Subtitle showing number of messages in the active library"),
                    {static_cast<long long>(messageCount())});
}

std::string ContentView::activeTitle() const {
  if (const auto& selection = sidebarSelection()) {
    if (const auto* chosen = selection->as<SidebarSelection::Mailbox>()) {
      return title(chosen->mailbox);
    }
    if (const auto* chosen = selection->as<SidebarSelection::GmailCategory>()) {
      return title(chosen->category);
    }
    if (const auto* chosen = selection->as<SidebarSelection::Label>()) {
      return labelTitle(chosen->path);
    }
    if (const auto* chosen = selection->as<SidebarSelection::Library>()) {
      const auto library = std::ranges::find(libraries(), chosen->id, &MBOXLibrary::id);
      if (library != libraries().end()) {
        return library->displayName.string();
      }
    }
  }
  return allLibrariesTitle();
}

std::int64_t ContentView::messageCount(const Text& libraryID) const {
  if (!derivedInput_.messages.isSame(messages())) {
    return std::ranges::count(messages(), libraryID,
                              [](const auto& message) -> const Text& { return message->sourceLibraryID; });
  }
  const auto found = derived_.countsByLibrary->find(libraryID);
  return found != derived_.countsByLibrary->end() ? found->second : 0;
}

std::shared_ptr<const EmailMessage> ContentView::selectedMessage() const {
  const auto& id = selectedMessageID();
  if (!id) {
    return nullptr;
  }
  if (selectionSearchedFor_ != id || !selectionSearchedIn_.isSame(messages())) {
    const auto position = positionOf(*id);
    selectedMessage_ = position ? messages()[*position] : nullptr;
    selectionSearchedFor_ = id;
    selectionSearchedIn_ = messages();
  }
  return selectedMessage_;
}

std::optional<std::size_t> ContentView::positionOf(const Text& id) const {
  if (derived_.facts && derived_.facts->list().isSame(messages())) {
    return derived_.facts->positionOf(id);
  }
  const auto found =
      std::ranges::find_if(messages(), [&id](const auto& message) { return message->id == id; });
  return found != messages().end() ? std::optional<std::size_t>(found - messages().begin()) : std::nullopt;
}

std::optional<std::size_t> ContentView::filteredPositionOf(const Text& id) const {
  const SharedMessageList& list = cachedFilteredMessages();
  if (derived_.facts && derived_.facts->repeated().empty()) {
    const auto position = derived_.facts->positionOf(id);
    return position ? list.indexOf(*position) : std::nullopt;
  }
  const auto found = std::ranges::find_if(list, [&id](const auto& message) { return message->id == id; });
  return found != list.end() ? std::optional<std::size_t>(found - list.begin()) : std::nullopt;
}

std::int64_t ContentView::conversationCount(const Text& conversationID) const {
  return cachedConversationCounts()->of(conversationID);
}

std::vector<std::string_view> ContentView::categoriesInScope() const {
  std::vector<std::string_view> names;
  for (const auto& category : smartCategories()) {
    if (cachedCategoryCounts()->contains(Text(category.name))) {
      names.push_back(category.name);
    }
  }
  return names;
}

bool ContentView::showsWelcome() const {
  return libraries().empty() && messages().empty() && !isImporting();
}

// -- Operations -------------------------------------------------------------------------------------------

void ContentView::selectMessage(const std::shared_ptr<const EmailMessage>& message) {
  if (!message) {
    selectedMessageID.set(std::nullopt);
    return;
  }
  selectedMessage_ = message;
  selectionSearchedFor_ = message->id;
  selectionSearchedIn_ = messages();
  selectedMessageID.set(message->id);
}

void ContentView::selectFirstFilteredMessage() {
  const auto& list = cachedFilteredMessages();
  selectMessage(list.empty() ? nullptr : list.front());
}

void ContentView::dismissImportStatus() {
  showImportStatusSheet.set(false);
  importStatus.set(std::nullopt);
}

DerivedInput ContentView::derivedInput() const {
  return {messages(), sidebarSelection(), advancedFilters(), searchText(), searchIndex(), indexedMessages_};
}

void ContentView::recomputeDerivedState() {
  recompute(false);
}

void ContentView::recompute(bool selectFirst) {
  DerivedInput input = derivedInput();
  if (selectFirst) {
    selectionToReplace_ = selectedMessageID();
  }
  if (isRecomputing_) {
    stopStaleDerivation(input);
  }
  if (prepared_ && isSameInput(prepared_->first, input)) {
    adopt(std::move(input), prepared_->second);
  } else if (derivationCost(input, derivedInput_, derived_) <= services_.synchronousLimit) {
    DerivedState state = deriveState(input, derivedInput_, derived_);
    adopt(std::move(input), std::move(state));
  } else {
    if (!isRecomputing_) {
      recomputeInBackground();
    }
    return;
  }
  selectFirstIfDue();
}

// A change of the sidebar selects the first message once its list stands. What has been selected since then
// stays.
void ContentView::selectFirstIfDue() {
  const auto replaced = std::exchange(selectionToReplace_, std::nullopt);
  if (replaced && *replaced == selectedMessageID()) {
    selectFirstFilteredMessage();
  }
}

// Work on another question than the present one would only keep this one waiting. Work on the same question
// over other messages goes on: its result is a good start for the present ones.
void ContentView::stopStaleDerivation(const DerivedInput& input) {
  if (backgroundCancelled_ && !isSameQuestion(backgroundInput_, input)) {
    backgroundCancelled_->store(true, std::memory_order_relaxed);
  }
}

Task<> ContentView::recomputeInBackground() {
  isRecomputing_ = true;
  while (true) {
    backgroundInput_ = derivedInput();
    if (isSameInput(backgroundInput_, derivedInput_)) {
      break;
    }
    backgroundCancelled_ = std::make_shared<std::atomic<bool>>(false);
    auto derive = [input = backgroundInput_, earlierInput = derivedInput_, earlier = derived_,
                   cancelled = backgroundCancelled_] {
      return deriveState(input, earlierInput, earlier, cancelled.get());
    };
    DerivedState state =
        co_await inBackground(services_.executor, TaskPriority::userInitiated, std::move(derive));
    // The fields may have moved on meanwhile; only what belongs to them now may stand.
    DerivedInput present = derivedInput();
    const DerivedInput input = backgroundInput_;
    if (state.isComplete && isSameInput(input, present)) {
      adopt(std::move(present), std::move(state));
    } else if (state.isComplete && derivationCost(present, input, state) <= services_.synchronousLimit) {
      DerivedState following = deriveState(present, input, state);
      adopt(std::move(present), std::move(following));
    } else if (state.textOutcomes) {
      derived_.textOutcomes = std::move(state.textOutcomes);  // What has been read need not be read again.
    }
  }
  isRecomputing_ = false;
  backgroundInput_ = {};
  backgroundCancelled_.reset();
  selectFirstIfDue();
  for (const auto& goOn : std::exchange(derivedStateWaiters_, {})) {
    goOn();
  }
}

Task<> ContentView::whenDerivedStateIsCurrent() {
  struct Awaiter {
    ContentView& screen;
    bool await_ready() const { return !screen.isRecomputing_; }
    void await_suspend(std::coroutine_handle<> waiting) {
      screen.derivedStateWaiters_.emplace_back([waiting] { waiting.resume(); });
    }
    void await_resume() const {}
  };
  while (isRecomputing_) {
    co_await Awaiter{*this};
  }
}

void ContentView::adopt(DerivedInput input, DerivedState state) {
  DerivedState earlier = std::exchange(derived_, std::move(state));
  derivedInput_ = std::move(input);
  // An observer may change a field and so bring in a newer state; the rest of this one is then out of date.
  const auto adoption = ++adoptions_;
  cachedFilteredMessages.set(derived_.filteredMessages);
  if (adoption == adoptions_) {
    cachedConversationCounts.set(derived_.counts.conversations);
  }
  if (adoption == adoptions_ && shownClassification_ != derived_.counts.labelClassification) {
    shownClassification_ = derived_.counts.labelClassification;
    cachedLabelClassification.set(*shownClassification_);
  }
  if (adoption == adoptions_) {
    cachedCategoryCounts.set(derived_.counts.categories);
  }
  if (earlier.facts != derived_.facts || !earlier.filteredMessages.isSame(derived_.filteredMessages)) {
    releaseInBackground(std::move(earlier));
  }
}

// A list in which only categories have changed has the same words in the same places.
void ContentView::keepIndexedMessages() {
  constexpr std::size_t mostChanges = 256;
  const auto changes = SharedMessageList::differences(indexedMessages_, messages(), mostChanges);
  if (changes && std::ranges::all_of(*changes, [this](std::uint32_t position) {
        const EmailMessage& before = *indexedMessages_[position];
        const EmailMessage& after = *messages()[position];
        return before.id == after.id && haveSameSearchableText(before, after);
      })) {
    indexedMessages_ = messages();
  }
}

void ContentView::refreshSearchIndexInBackground() {
  if (services_.maintainsSearchIndex && !isIndexing_) {
    rebuildSearchIndex();
  }
}

Task<> ContentView::rebuildSearchIndex() {
  isIndexing_ = true;
  indexingFailure_ = nullptr;
  while (!indexedMessages_.isSame(messages())) {
    const SharedMessageList list = messages();
    auto build = [list, index = searchIndex(), collected = std::exchange(collectedWords_, {})]() mutable {
      index.update(list, collected);
      return index;
    };
    try {
      const auto priority = importNeedsIndex_ ? TaskPriority::userInitiated : TaskPriority::utility;
      FullTextSearchIndex index = co_await inBackground(services_.executor, priority, std::move(build));
      releaseInBackground(std::exchange(indexedMessages_, list));
      keepIndexedMessages();
      searchIndex.set(std::move(index));
    } catch (const std::exception& failure) {
      // A body whose row has gone: the list that replaces this one is built next. Otherwise the store cannot
      // be read, and the earlier index stands.
      logger().error("No se pudo reconstruir el índice de búsqueda: %s", {failure.what()});
      if (list.isSame(messages())) {
        indexingFailure_ = std::current_exception();
        break;
      }
      continue;
    }
    recomputeDerivedState();
  }
  isIndexing_ = false;
  for (const auto& goOn : std::exchange(indexWaiters_, {})) {
    goOn();
  }
}

Task<> ContentView::bringSearchIndexUpToDate() {
  struct Awaiter {
    ContentView& screen;
    bool await_ready() const { return !screen.isIndexing_; }
    void await_suspend(std::coroutine_handle<> waiting) {
      screen.indexWaiters_.emplace_back([waiting] { waiting.resume(); });
    }
    void await_resume() const {}
  };
  if (!isIndexing_) {
    rebuildSearchIndex();
  }
  while (isIndexing_) {
    co_await Awaiter{*this};
  }
  if (indexingFailure_) {
    std::rethrow_exception(indexingFailure_);
  }
}

Task<> ContentView::storeMissingTokens() {
  try {
    co_await rewriteStoredTokens();
  } catch (const std::exception& failure) {
    logger().error("No se pudieron guardar los tokens de búsqueda: %s", {failure.what()});
  }
}

void ContentView::refreshDiscoveredLibraries() {
  if (isDiscovering_) {
    discoversAgain_ = true;
  } else {
    discover();
  }
}

Task<> ContentView::discover() {
  isDiscovering_ = true;
  do {
    discoversAgain_ = false;
    std::set<std::string> knownIDs;
    for (const auto& library : libraries()) {
      knownIDs.insert(library.id.string());
    }
    auto look = [container = services_.container, knownIDs = std::move(knownIDs)] {
      ModelContext context = container->newContext();
      return discoverLibraries(knownIDs, context);
    };
    try {
      auto found = co_await inBackground(services_.executor, TaskPriority::utility, std::move(look));
      discoveredRemoteLibraries.set(std::move(found));
    } catch (const std::exception& failure) {
      logger().error("Descubrimiento de bibliotecas remotas falló: %s", {failure.what()});
    }
  } while (discoversAgain_);
  isDiscovering_ = false;
}

Task<> ContentView::mergeIntoMessages(SharedMessageList list, std::function<void()> justBefore) {
  MessagesChange change = [list](const SharedMessageList& present) { return merge(present, list); };
  co_await changeMessages(std::move(change), std::move(justBefore));
}

Task<> ContentView::replaceMessages(SharedMessageList list, std::function<void()> justBefore) {
  MessagesChange change = [list](const SharedMessageList& /*present*/) { return list; };
  co_await changeMessages(std::move(change), std::move(justBefore));
}

Task<> ContentView::changeMessages(MessagesChange change, std::function<void()> justBefore) {
  struct Prepared {
    DerivedInput input;
    DerivedState state;
    std::shared_ptr<const EmailMessage> selected;
  };
  const auto turn = co_await messagesLock_.turn(services_.executor);
  while (true) {
    SharedMessageList present = messages();
    auto prepare = [change, input = derivedInput(), earlierInput = derivedInput_, earlier = derived_,
                    selectedID = selectedMessageID()] {
      Prepared prepared;
      prepared.input = input;
      prepared.input.messages = change(input.messages);
      prepared.state = deriveState(prepared.input, earlierInput, earlier);
      if (selectedID) {
        const auto position = prepared.state.facts->positionOf(*selectedID);
        prepared.selected = position ? prepared.input.messages[*position] : nullptr;
      }
      return prepared;
    };
    const auto searchedFor = selectedMessageID();
    Prepared prepared =
        co_await inBackground(services_.executor, TaskPriority::userInitiated, std::move(prepare));
    if (!messages().isSame(present)) {
      continue;
    }
    if (justBefore) {
      justBefore();
    }
    selectedMessage_ = std::move(prepared.selected);
    selectionSearchedFor_ = searchedFor;
    selectionSearchedIn_ = prepared.input.messages;
    const SharedMessageList changed = prepared.input.messages;
    prepared_.emplace(std::move(prepared.input), std::move(prepared.state));
    messages.set(changed);
    prepared_.reset();
    releaseInBackground(std::move(present));
    break;
  }
  co_await whenDerivedStateIsCurrent();
}

LibraryCatalog ContentView::catalog() const {
  return LibraryCatalog(services_.applicationFolder,
                        [&executor = services_.executor] { return executor.now(); });
}

bool ContentView::hasArgument(std::string_view argument) const {
  return std::ranges::find(services_.arguments, argument) != services_.arguments.end();
}

}  // namespace tidewrack
