#include <algorithm>
#include <iterator>

#include "library/store_operations.h"
#include "platform/localized.h"
#include "platform/unicode.h"
#include "screen/content_view.h"

namespace tidewrack {

void ContentView::requestRename(const MBOXLibrary& library) {
  renameDraft.set(library.displayName.string());
  libraryPendingRename.set(library);
}

void ContentView::cancelRename() {
  libraryPendingRename.set(std::nullopt);
}

Task<> ContentView::commitRename() {
  const auto library = libraryPendingRename();
  const Text name(trimWhitespaceAndNewlines(renameDraft()));
  libraryPendingRename.set(std::nullopt);
  if (!library || name.empty() || name == library->displayName) {
    co_return;
  }
  try {
    co_await renameInStoreAndMemory(*library, name);
    showToast(Toast::success(
        formatText(localized("library_renamed_toast", "Library renamed to \"%@\"", "Library renamed toast"),
                   {name.string()})));
  } catch (const std::exception& failure) {
    importErrorMessage.set(failure.what());
    showToast(
        Toast::error(localized("rename_error_toast", "Failed to rename library", "Rename error toast")));
  }
}

// Nothing in memory changes unless both the catalog and the store have the new name.
Task<> ContentView::renameInStoreAndMemory(MBOXLibrary library, Text name) {
  std::vector<MBOXLibrary> renamed;
  {
    const auto turn = co_await catalogLock_.turn(services_.executor);
    auto rename = [catalog = catalog(), id = library.id, name] { return catalog.renameLibrary(id, name); };
    renamed = co_await inBackground(services_.executor, TaskPriority::userInitiated, std::move(rename));
  }
  {
    const auto turn = co_await modelContextLock_.turn(services_.executor);
    auto rename = [context = modelContext_, id = library.id, name] { renameMessages(id, name, *context); };
    co_await inBackground(services_.executor, TaskPriority::userInitiated, std::move(rename));
  }
  auto all = libraries();
  const auto mine = std::ranges::find(all, library.id, &MBOXLibrary::id);
  const auto theirs = std::ranges::find(renamed, library.id, &MBOXLibrary::id);
  if (mine != all.end() && theirs != renamed.end()) {
    *mine = *theirs;
    libraries.set(std::move(all));
  }
  MessagesChange rename = [id = library.id, name](const SharedMessageList& present) {
    MessageList changed = present;
    for (auto& message : changed) {
      if (message->sourceLibraryID == id && message->sourceLibraryName != name) {
        auto copy = std::make_shared<EmailMessage>(*message);
        copy->sourceLibraryName = name;
        message = std::move(copy);
      }
    }
    return changed;
  };
  co_await changeMessages(std::move(rename), nullptr);
}

void ContentView::requestDelete(const MBOXLibrary& library) {
  libraryPendingDeletion.set(library);
  showDeleteConfirmation.set(true);
}

void ContentView::cancelDelete() {
  showDeleteConfirmation.set(false);
  libraryPendingDeletion.set(std::nullopt);
}

bool ContentView::showsDeletionStatus() const {
  const auto& status = importStatus();
  return status && (isDeletingLibrary() || status->as<ImportStatus::DeleteSuccess>() != nullptr ||
                    status->as<ImportStatus::Error>() != nullptr);
}

void ContentView::dismissDeletionStatus() {
  showDeleteConfirmation.set(false);
  importStatus.set(std::nullopt);
  libraryPendingDeletion.set(std::nullopt);
}

Task<> ContentView::deleteLibrary(MBOXLibrary library) {
  auto& executor = services_.executor;
  const std::string name = library.displayName.string();
  const int count = static_cast<int>(messageCount(library.id));
  const auto report = [&](DeleteProgressStep step) {
    importStatus.set(ImportStatus::Deleting{step, name, count});
  };
  isDeletingLibrary.set(true);
  showImportStatusSheet.set(true);
  report(DeleteProgressStep::preparing);

  report(DeleteProgressStep::deletingFile);
  std::vector<MBOXLibrary> remaining;
  try {
    const auto turn = co_await catalogLock_.turn(executor);
    auto remove = [catalog = catalog(), id = library.id] { return catalog.deleteLibrary(id); };
    remaining = co_await inBackground(executor, TaskPriority::userInitiated, std::move(remove));
  } catch (const std::exception& failure) {
    isDeletingLibrary.set(false);
    importStatus.set(ImportStatus::Error{failure.what()});
    showToast(
        Toast::error(localized("delete_error_toast", "Failed to delete library", "Delete error toast")));
    co_return;
  }

  report(DeleteProgressStep::deletingMessages);
  libraries.set(std::move(remaining));
  std::vector<Text> deletedIDs;
  for (const auto& message : messages()) {
    if (message->sourceLibraryID == library.id) {
      deletedIDs.push_back(message->id);
    }
  }
  try {
    const auto turn = co_await modelContextLock_.turn(executor);
    auto remove = [context = modelContext_, id = library.id] { deleteMessages(id, *context); };
    co_await inBackground(executor, TaskPriority::userInitiated, std::move(remove));
  } catch (const std::exception&) {
    // The library is gone from the catalog and the screen either way.
  }
  MessagesChange withoutLibrary = [id = library.id](const SharedMessageList& present) {
    MessageList kept;
    std::ranges::copy_if(present, std::back_inserter(kept),
                         [&id](const auto& message) { return message->sourceLibraryID != id; });
    return kept;
  };
  co_await changeMessages(std::move(withoutLibrary), nullptr);

  report(DeleteProgressStep::rebuildingIndex);
  try {
    co_await rewriteStoredTokens();
  } catch (const std::exception&) {
    // Tokens of messages that are gone find nothing.
  }
  refreshSearchIndexInBackground();

  if (sidebarSelection() == SidebarSelection::library(library.id)) {
    sidebarSelection.set(SidebarSelection::allLibraries());
    co_await whenDerivedStateIsCurrent();
  }
  selectFirstFilteredMessage();

  isDeletingLibrary.set(false);
  importStatus.set(ImportStatus::DeleteSuccess{name, count});
  showToast(Toast::success(formatText(
      localized("library_deleted_toast", "Library \"%@\" deleted", "Library deleted toast"), {name})));

  if (services_.spotlight && !deletedIDs.empty() &&
      services_.settings.boolean(SettingKey::spotlightIndexingEnabled)) {
    try {
      co_await services_.spotlight->remove(std::move(deletedIDs));
    } catch (const std::exception&) {
      // The system index forgets what it cannot open.
    }
  }
}

}  // namespace tidewrack
