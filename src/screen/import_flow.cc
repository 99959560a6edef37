#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <span>

#include "classify/token_segment.h"
#include "library/copy_and_read.h"
#include "library/store_operations.h"
#include "platform/localized.h"
#include "platform/log.h"
#include "screen/content_view.h"

namespace tidewrack {

namespace {

constexpr std::size_t spotlightBatchSize = 50;

struct SavedMessages {
  MessageList messages;
  CollectedWords words;  // None where nobody asked for them.
};

// The words are collected while the messages are being written.
SavedMessages save(MessageList parsed, bool collectsWords, ModelContext& context) {
  SavedMessages saved;
  std::shared_ptr<const TokenSegment> segment;
  WhileSaving collect;
  if (collectsWords) {
    collect = [&segment](std::span<const std::shared_ptr<const EmailMessage>> written) {
      try {
        segment = TokenSegment::build(written);
      } catch (const std::exception& failure) {
        // The index reads the stored messages instead.
        Logger::of("ContentView").error("No se pudieron reunir las palabras: %s", {failure.what()});
      }
    };
  }
  saved.messages = saveMessages(std::move(parsed), context, {}, collect);
  if (segment) {
    saved.words = CollectedWords::ofSaved(std::move(segment), saved.messages);
  }
  return saved;
}

}  // namespace

// What one run has got so far. It lies in the frame of performImport.
struct ContentView::ImportRun {
  std::vector<std::filesystem::path> urls;
  std::vector<MBOXLibrary> newLibraries;
  std::map<Text, EarlyMessages> early;  // By library, until its turn to be parsed comes.
  MessageList parsed;
  SharedMessageList stored;
  std::size_t messageCount = 0;  // Parsed so far.
  std::optional<std::string> fileName;
  std::size_t completedFiles = 0;
};

void ContentView::handleImportResult(ImportResult result) {
  if (const auto* failure = std::get_if<Failure>(&result)) {
    importErrorMessage.set(failure->what());
    return;
  }
  showToast(Toast::success(localized("import_started_toast", "Starting import…", "Import started toast")));
  services_.executor.post([this, urls = std::get<std::vector<std::filesystem::path>>(std::move(result))] {
    performImport(urls);
  });
}

void ContentView::openFiles(std::vector<std::filesystem::path> urls) {
  if (!urls.empty()) {
    handleImportResult(std::move(urls));
  }
}

Task<> ContentView::performImport(std::vector<std::filesystem::path> urls) {
  const auto turn = co_await importLock_.turn(services_.executor);
  ImportRun run;
  run.urls = std::move(urls);
  report(run, ImportProgressStep::preparing);
  showImportStatusSheet.set(true);
  isImporting.set(true);
  importNeedsIndex_ = true;
  try {
    co_await copyFiles(run);
    co_await parseFiles(run);
    co_await saveMessages(run);
    co_await indexMessages(run);
    importStatus.set(
        ImportStatus::Success{static_cast<int>(run.newLibraries.size()), static_cast<int>(run.messageCount)});
    co_await selectImported(run);
    startCategorizationIfNeeded();
  } catch (const std::exception& failure) {
    importStatus.set(ImportStatus::Error{failure.what()});
    importErrorMessage.set(failure.what());
  }
  importNeedsIndex_ = false;
  releaseInBackground(std::move(run.stored));
  if (!run.early.empty()) {
    releaseInBackground(std::move(run.early));
  }
  services_.executor.post([this] { isImporting.set(false); });
}

void ContentView::report(const ImportRun& run, ImportProgressStep step) {
  importStatus.set(ImportStatus::Importing{
      step, run.fileName, static_cast<int>(run.completedFiles), static_cast<int>(run.urls.size()),
      static_cast<int>(run.newLibraries.size()), static_cast<int>(run.messageCount)});
}

Task<> ContentView::copyFiles(ImportRun& run) {
  for (std::size_t index = 0; index < run.urls.size(); ++index) {
    run.fileName = displayPath(run.urls[index].filename());
    run.completedFiles = index;
    report(run, ImportProgressStep::copyingFiles);
    const auto turn = co_await catalogLock_.turn(services_.executor);
    auto copy = [catalog = catalog(), url = run.urls[index]] { return copyAndRead(catalog, url); };
    auto added = co_await inBackground(services_.executor, TaskPriority::userInitiated, std::move(copy));
    if (added.early && !added.libraries.empty()) {
      run.early.emplace(added.libraries.front().id, *std::move(added.early));
    }
    std::ranges::move(added.libraries, std::back_inserter(run.newLibraries));
  }
  auto all = libraries();
  all.insert(all.end(), run.newLibraries.begin(), run.newLibraries.end());
  sortNewestFirst(all);
  libraries.set(std::move(all));
}

Task<> ContentView::parseFiles(ImportRun& run) {
  for (std::size_t index = 0; index < run.newLibraries.size(); ++index) {
    const MBOXLibrary& library = run.newLibraries[index];
    run.fileName = library.fileName.string();
    run.completedFiles = index;
    report(run, ImportProgressStep::parsingMessages);
    auto locate = [catalog = catalog(), library] {
      catalog.ensureDirectories();
      return catalog.fileLocation(library);
    };
    const auto file =
        co_await inBackground(services_.executor, TaskPriority::userInitiated, std::move(locate));
    std::optional<EarlyMessages> early;
    if (auto read = run.early.extract(library.id)) {
      early = std::move(read.mapped());
    }
    auto parse = [file, library, early = std::move(early)]() mutable {
      return messagesOfCopy(file, library, std::move(early));
    };
    auto parsed = co_await inBackground(services_.executor, TaskPriority::userInitiated, std::move(parse));
    run.messageCount += parsed.size();
    if (run.parsed.empty()) {
      run.parsed = std::move(parsed);
    } else {
      std::ranges::move(parsed, std::back_inserter(run.parsed));
    }
  }
  run.fileName.reset();
  run.completedFiles = run.urls.size();
}

Task<> ContentView::saveMessages(ImportRun& run) {
  report(run, ImportProgressStep::savingMessages);
  CollectedWords words;
  {
    const auto turn = co_await modelContextLock_.turn(services_.executor);
    // The parsed records become the stored ones, and let the mapped archives go.
    auto work = [parsed = std::move(run.parsed), context = modelContext_,
                 collectsWords = services_.maintainsSearchIndex || services_.tokenStore]() mutable {
      return save(std::move(parsed), collectsWords, *context);
    };
    auto saved = co_await inBackground(services_.executor, TaskPriority::userInitiated, std::move(work));
    run.stored = std::move(saved.messages);
    words = std::move(saved.words);
  }
  std::function<void()> justBefore = [this, &words] { collectedWords_ = std::move(words); };
  co_await mergeIntoMessages(run.stored, std::move(justBefore));
}

Task<> ContentView::indexMessages(ImportRun& run) {
  report(run, ImportProgressStep::rebuildingIndex);
  co_await rewriteStoredTokens();
  refreshSearchIndexInBackground();

  if (!services_.spotlight || !services_.settings.boolean(SettingKey::spotlightIndexingEnabled)) {
    co_return;
  }
  report(run, ImportProgressStep::indexingSpotlight);
  co_await services_.spotlight->index(run.stored, spotlightBatchSize);
  showToast(Toast::success(formatText(
      localized("spotlight_indexed_toast", "%d messages indexed in Spotlight", "Spotlight indexed toast"),
      {static_cast<long long>(run.messageCount)})));
}

Task<> ContentView::selectImported(const ImportRun& run) {
  const auto& selection = sidebarSelection();
  if (!run.newLibraries.empty() && (!selection || *selection == SidebarSelection::allLibraries())) {
    sidebarSelection.set(SidebarSelection::library(run.newLibraries.front().id));
  }
  co_await whenDerivedStateIsCurrent();
  if (!selectedMessageID()) {
    selectFirstFilteredMessage();
  }
}

}  // namespace tidewrack
