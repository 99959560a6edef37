#include <algorithm>

#include "library/store_operations.h"
#include "screen/content_view.h"
#include "sync/cloud_sync_monitor.h"

namespace tidewrack {

Task<> ContentView::startup() {
  if (hasLoadedPersistedLibraries()) {
    co_return;
  }
  hasLoadedPersistedLibraries.set(true);
  co_await loadPersistedLibraries();
  if (!hasArgument("--screenshots")) {
    refreshDiscoveredLibraries();
    if (services_.syncMonitor != nullptr) {
      discoveredObserverToken_ =
          services_.syncMonitor->observeImportDidComplete([this] { refreshDiscoveredLibraries(); });
    }
  }
}

Task<> ContentView::loadPersistedLibraries() {
  const auto turn = co_await importLock_.turn(services_.executor);
  if (services_.demoLibrary && (hasArgument("--screenshots") || hasArgument("--demo-data"))) {
    co_await showDemoLibrary();
    co_return;
  }
  isImporting.set(true);
  importStatus.set(ImportStatus::LoadingDatabase{DatabaseLoadStep::openingDatabase});
  showImportStatusSheet.set(true);
  try {
    co_await loadStoredMail();
    if (!selectedMessageID()) {
      selectFirstFilteredMessage();
    }
    dismissImportStatus();
    startCategorizationIfNeeded();
  } catch (const std::exception& failure) {
    importStatus.set(ImportStatus::Error{failure.what()});
    importErrorMessage.set(failure.what());
  }
  isImporting.set(false);
}

// Nothing is assigned before all of it has been read.
Task<> ContentView::loadStoredMail() {
  auto& executor = services_.executor;
  std::vector<MBOXLibrary> loaded;
  {
    const auto turn = co_await catalogLock_.turn(executor);
    auto load = [catalog = catalog()] { return catalog.loadLibraries(); };
    loaded = co_await inBackground(executor, TaskPriority::userInitiated, std::move(load));
  }

  importStatus.set(ImportStatus::LoadingDatabase{DatabaseLoadStep::loadingLibraries});
  auto fetch = [container = services_.container] {
    ModelContext context = container->newContext();
    MessageList list = fetchAllMessages(context);
    sortNewestFirst(list);
    return SharedMessageList(std::move(list));
  };
  const SharedMessageList fetched =
      co_await inBackground(executor, TaskPriority::userInitiated, std::move(fetch));

  importStatus.set(ImportStatus::LoadingDatabase{DatabaseLoadStep::loadingMessages});
  FullTextSearchIndex index;
  if (services_.tokenStore) {
    auto load = [container = services_.container, tokens = services_.tokenStore, fetched] {
      ModelContext context = container->newContext();
      FullTextSearchIndex loadedIndex = tokens->load(context);
      loadedIndex.align(fetched);
      return loadedIndex;
    };
    index = co_await inBackground(executor, TaskPriority::userInitiated, std::move(load));
  }
  const bool hasTokens = !index.empty();
  const bool hasTokensOfAll = index.messageCount() == fetched.size();

  std::function<void()> justBefore = [this, &loaded, &index] {
    libraries.set(std::move(loaded));
    // Before the messages, so that their reaction finds an index that needs little more.
    searchIndex.set(std::move(index));
  };
  co_await replaceMessages(fetched, std::move(justBefore));
  if (!messages().empty() && !hasTokens) {
    co_await rewriteStoredTokens();
    refreshSearchIndexInBackground();
  } else if (!hasTokensOfAll) {
    storeMissingTokens();  // Nobody waits for it; the messages are read in the background as it is.
  }
}

Task<> ContentView::showDemoLibrary() {
  DemoLibrary demo = services_.demoLibrary();
  libraries.set(std::move(demo.libraries));
  sortNewestFirst(demo.messages);
  SharedMessageList list = std::move(demo.messages);
  co_await replaceMessages(std::move(list), nullptr);
  refreshSearchIndexInBackground();
  recomputeDerivedState();
  co_await whenDerivedStateIsCurrent();
  if (!cachedFilteredMessages().empty()) {
    selectFirstFilteredMessage();
  }
  importStatus.set(std::nullopt);
  isImporting.set(false);
}

Task<> ContentView::rewriteStoredTokens() {
  if (!services_.tokenStore) {
    co_return;
  }
  co_await bringSearchIndexUpToDate();
  const FullTextSearchIndex index = searchIndex();
  const auto turn = co_await modelContextLock_.turn(services_.executor);
  auto rewrite = [tokens = services_.tokenStore, changed = index, context = modelContext_]() mutable {
    tokens->rewrite(changed, *context);
    return changed;
  };
  FullTextSearchIndex rewritten =
      co_await inBackground(services_.executor, TaskPriority::userInitiated, std::move(rewrite));
  if (searchIndex() == index) {
    searchIndex.set(std::move(rewritten));
  }
}

void ContentView::startCategorizationIfNeeded() {
  MessageCategorizer* categorizer = services_.categorizer;
  if (!categorizer || !intelligenceEnabled() || !enableCategoryDetection() ||
      !categorizer->isModelAvailable()) {
    return;
  }
  categorizer->categorize(messages(),
                          [this](const Text& id, const Text& category) { setCategory(id, category); });
}

Task<> ContentView::setCategory(Text id, Text category) {
  {
    // A change of the list that is under way would have to begin again.
    const auto turn = co_await messagesLock_.turn(services_.executor);
    showCategory(id, category);
  }
  const auto turn = co_await modelContextLock_.turn(services_.executor);
  auto store = [id, category, context = modelContext_] { updateCategory(id, category, *context); };
  try {
    co_await inBackground(services_.executor, TaskPriority::utility, std::move(store));
  } catch (const std::exception&) {
    // It keeps its category on the screen and is categorised again in a later run.
  }
}

void ContentView::showCategory(const Text& id, const Text& category) {
  const auto position = positionOf(id);
  if (!position) {
    return;
  }
  auto changed = std::make_shared<EmailMessage>(*messages()[*position]);
  changed->category = category;
  messages.set(messages().replacing(*position, std::move(changed)));
}

}  // namespace tidewrack
