#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "classify/full_text_search_index.h"
#include "classify/label_classification.h"
#include "classify/search_filters.h"
#include "classify/search_token_store.h"
#include "intelligence/message_categorizer.h"
#include "library/library_catalog.h"
#include "library/library_discovery.h"
#include "library/model_container.h"
#include "platform/executor.h"
#include "platform/failure.h"
#include "platform/observable.h"
#include "platform/settings.h"
#include "platform/task.h"
#include "screen/derived_state.h"
#include "screen/flow_lock.h"
#include "screen/shared_message_list.h"
#include "screen/sidebar.h"
#include "screen/toast.h"
#include "spotlight/message_indexer.h"
#include "status/import_status.h"

namespace tidewrack {

class iCloudSyncMonitor;

/// A fixed set of made-up mail.
struct DemoLibrary {
  std::vector<MBOXLibrary> libraries;
  MessageList messages;
};

/// What the main screen needs from below. The references and pointers outlive the screen.
struct ContentViewServices {
  Executor& executor;
  Settings& settings;
  std::shared_ptr<ModelContainer> container;
  /// Folder of the catalog and the stored archives.
  std::filesystem::path applicationFolder = applicationSupportFolder();
  /// Of the process, the program's own path included.
  std::vector<std::string> arguments = {};
  /// The system-wide search index; null where there is none.
  MessageIndexer* spotlight = nullptr;
  /// The on-device categoriser; null where there is none.
  MessageCategorizer* categorizer = nullptr;
  /// What the replication of the store does; null where there is none.
  iCloudSyncMonitor* syncMonitor = nullptr;
  /// Where the search index is kept between two runs; null keeps it in memory alone.
  SearchTokenStore* tokenStore = nullptr;
  /// Whether the in-memory search index follows the messages. A program that never searches spares itself
  /// reading every body.
  bool maintainsSearchIndex = true;
  /// The made-up mail of the launch modes that show it; empty where there is none.
  std::function<DemoLibrary()> demoLibrary = {};
  /// What costs up to this much (see derivationCost) is filtered and counted at once; the rest in the
  /// background, so that the main thread never stalls. The result is the same.
  std::size_t synchronousLimit = 2'000'000;
};

/// The one controller of the main window: all mutable state of the screen, the reactions that join its
/// fields, and every flow as a method. It knows no toolkit; views read the fields, observe them and call the
/// operations. Long work runs in the background and comes back to assign its result. Main thread only. Flows
/// keep using the screen until they end, so it lives as long as its executor runs.
class ContentView {
 public:
  explicit ContentView(ContentViewServices services);
  ~ContentView();
  ContentView(const ContentView&) = delete;
  ContentView& operator=(const ContentView&) = delete;

  // -- Settings that the screen follows. They change when the settings do.
  Observable<bool> intelligenceEnabled;
  Observable<bool> enableCategoryDetection;
  Observable<bool> iCloudSyncEnabled;

  // -- State of the screen.
  Observable<SharedMessageList> messages;          ///< All loaded messages of all libraries, newest first.
  Observable<std::vector<MBOXLibrary>> libraries;  ///< The catalog in memory, newest first.
  Observable<std::optional<Text>> selectedMessageID;
  Observable<std::optional<SidebarSelection>> sidebarSelection;
  Observable<std::string> searchText;
  Observable<bool> isImporting{false};  ///< True during an import and during the startup load.
  Observable<std::optional<std::string>> importErrorMessage;  ///< Text of the import alert; present = shown.
  Observable<bool> hasLoadedPersistedLibraries{false};
  Observable<std::optional<MBOXLibrary>> libraryPendingDeletion;
  Observable<std::optional<MBOXLibrary>> libraryPendingRename;
  Observable<std::string> renameDraft;
  Observable<bool> isShowingManageLibrariesSheet{false};
  Observable<FullTextSearchIndex> searchIndex;
  Observable<bool> isShowingAdvancedSearch{false};
  Observable<SearchFilters> advancedFilters;
  Observable<bool> isShowingExport{false};
  Observable<bool> isShowingSettings{false};
  Observable<std::optional<ImportStatus>> importStatus;
  Observable<bool> showImportStatusSheet{false};
  Observable<std::optional<Toast>> currentToast;
  Observable<bool> isDeletingLibrary{false};
  Observable<bool> showDeleteConfirmation{false};
  Observable<bool> isPresentingImporter{false};
  Observable<SharedMessageList> cachedFilteredMessages;  ///< What the list shows.
  /// Messages by conversation, over the scope of the sidebar selection. Never null.
  Observable<std::shared_ptr<const ConversationCounts>> cachedConversationCounts;
  Observable<LabelClassification> cachedLabelClassification;
  /// Messages by their category, over the same scope. Never null.
  Observable<std::shared_ptr<const CategoryCounts>> cachedCategoryCounts;
  Observable<bool> isRestoringFromiCloud{false};
  Observable<std::vector<DiscoveredLibrary>> discoveredRemoteLibraries;
  Observable<std::set<Text>> adoptingLibraryIDs;
  Observable<bool> isShowingDiscoveredLibraries{false};

  // -- Derived values read by the views.
  /// Title of the list, from the sidebar selection.
  [[nodiscard]] std::string activeTitle() const;
  /// Number of messages in the list.
  [[nodiscard]] std::size_t messageCount() const { return cachedFilteredMessages().size(); }
  /// Number of loaded messages of one library.
  [[nodiscard]] std::int64_t messageCount(const Text& libraryID) const;
  /// The line under the title.
  [[nodiscard]] std::string subtitle() const;
  /// The first loaded message whose id is selected, or null.
  [[nodiscard]] std::shared_ptr<const EmailMessage> selectedMessage() const;
  /// Where the first message with this id stands in cachedFilteredMessages, if it is there.
  [[nodiscard]] std::optional<std::size_t> filteredPositionOf(const Text& id) const;
  /// Messages of a conversation in scope; 0 for an unknown one.
  [[nodiscard]] std::int64_t conversationCount(const Text& conversationID) const;
  /// The nine known categories that occur in scope, in their fixed order.
  [[nodiscard]] std::vector<std::string_view> categoriesInScope() const;
  /// Whether the middle column shows the welcome view in place of the list.
  [[nodiscard]] bool showsWelcome() const;
  /// Whether the detail column shows a message in place of its placeholder.
  [[nodiscard]] bool showsDetail() const { return selectedMessage() != nullptr; }
  [[nodiscard]] MessageCategorizer* categorizer() const { return services_.categorizer; }
  [[nodiscard]] const ContentViewServices& services() const { return services_; }

  // -- Operations.
  /// Selects a message that the caller has at hand, which spares the search for it.
  void selectMessage(const std::shared_ptr<const EmailMessage>& message);
  void selectFirstFilteredMessage();
  /// Brings the cached fields in line with the fields they follow. For long lists this goes on in the
  /// background; `whenDerivedStateIsCurrent` waits for it.
  void recomputeDerivedState();
  Task<> whenDerivedStateIsCurrent();
  /// Brings the in-memory index in line with `messages`. Runs that overlap become one.
  void refreshSearchIndexInBackground();
  /// Whether a refresh of the in-memory index is under way.
  [[nodiscard]] bool isIndexing() const { return isIndexing_; }
  /// Looks for libraries that only the stored messages know. Runs that overlap become one.
  void refreshDiscoveredLibraries();
  /// Makes `list`, which is sorted newest first, the loaded messages. Goes through the background like
  /// mergeIntoMessages; `justBefore` runs on the main thread right before the assignment.
  Task<> replaceMessages(SharedMessageList list, std::function<void()> justBefore);
  /// Puts messages into `messages`: each replaces the one of its id or is added. `justBefore` as above.
  Task<> mergeIntoMessages(SharedMessageList list, std::function<void()> justBefore = nullptr);
  /// Shows a toast at once, in place of any other.
  void showToast(Toast toast) { currentToast.set(std::move(toast)); }
  /// The status panel's button.
  void dismissImportStatus();

  // -- Startup.
  /// Run when the view appears; loads once per process.
  Task<> startup();
  Task<> loadPersistedLibraries();
  void startCategorizationIfNeeded();
  /// Gives a message its category, on the screen and in the store.
  Task<> setCategory(Text id, Text category);

  // -- Import.
  /// What the file picker gives: the chosen files, or its failure.
  using ImportResult = std::variant<std::vector<std::filesystem::path>, Failure>;
  void handleImportResult(ImportResult result);
  /// Files opened from outside (file manager, command line, drop): like a choice in the picker. Waits for a
  /// startup load or an import that is under way. No files are nothing to open.
  void openFiles(std::vector<std::filesystem::path> urls);
  /// Imports the files, to success or failure in `importStatus`. Runs do not overlap: one that is called
  /// while another is under way waits for it.
  Task<> performImport(std::vector<std::filesystem::path> urls);

  // -- Rename and delete.
  void requestRename(const MBOXLibrary& library);
  void cancelRename();
  /// Gives the library of the rename dialog the name in `renameDraft`.
  Task<> commitRename();
  void requestDelete(const MBOXLibrary& library);
  void cancelDelete();
  /// Whether the delete dialog shows the status panel in place of its question.
  [[nodiscard]] bool showsDeletionStatus() const;
  /// The button of the status panel where the delete dialog shows it.
  void dismissDeletionStatus();
  Task<> deleteLibrary(MBOXLibrary library);

 private:
  // content_view.cc
  void followSettings();
  void reactToChanges();
  [[nodiscard]] DerivedInput derivedInput() const;
  void recompute(bool selectFirst);
  void selectFirstIfDue();
  void stopStaleDerivation(const DerivedInput& input);
  void keepIndexedMessages();
  /// Where the first loaded message with this id stands. Quick while the derived state is current.
  [[nodiscard]] std::optional<std::size_t> positionOf(const Text& id) const;
  void adopt(DerivedInput input, DerivedState state);
  Task<> recomputeInBackground();
  Task<> rebuildSearchIndex();
  /// Waits until the in-memory index is that of `messages`. Throws what kept it from becoming so.
  Task<> bringSearchIndexUpToDate();
  Task<> discover();
  /// Makes the new list from the present one. It runs on a worker, again when the list has changed meanwhile,
  /// and must not use the screen.
  using MessagesChange = std::function<SharedMessageList(const SharedMessageList& present)>;
  /// Assigns `messages` once the derived state that belongs to the new list has been worked out in the
  /// background, so that the assignment itself is quick. `justBefore` runs on the main thread right before
  /// the assignment; it may be null. Waits until the derived state is current. Call it with named functions:
  /// GCC 12 destroys a closure that is made within a co_await expression twice.
  Task<> changeMessages(MessagesChange change, std::function<void()> justBefore);
  /// Lets go of something on a worker thread: with many messages that takes a while. Hand over the last
  /// reference.
  template <typename Garbage>
  void releaseInBackground(Garbage garbage) {
    services_.executor.runInBackground(TaskPriority::utility, [garbage = std::move(garbage)] {});
  }
  [[nodiscard]] LibraryCatalog catalog() const;
  [[nodiscard]] bool hasArgument(std::string_view argument) const;

  // import_flow.cc
  struct ImportRun;
  void report(const ImportRun& run, ImportProgressStep step);
  Task<> copyFiles(ImportRun& run);
  Task<> parseFiles(ImportRun& run);
  Task<> saveMessages(ImportRun& run);
  Task<> indexMessages(ImportRun& run);
  Task<> selectImported(const ImportRun& run);

  // startup_flow.cc
  Task<> loadStoredMail();
  Task<> showDemoLibrary();
  void showCategory(const Text& id, const Text& category);
  /// Replaces the stored tokens by those of the loaded messages, once these are indexed. Throws what the
  /// store reports.
  Task<> rewriteStoredTokens();
  /// The same for tokens that an earlier run had no time to store; what fails is tried at the next start.
  Task<> storeMissingTokens();

  // library_flows.cc
  Task<> renameInStoreAndMemory(MBOXLibrary library, Text name);

  ContentViewServices services_;
  std::vector<Subscription> subscriptions_;

  /// The screen's own context: pending changes of a failed save stay in it. One flow at a time uses it.
  std::shared_ptr<ModelContext> modelContext_;
  FlowLock modelContextLock_;
  FlowLock catalogLock_;
  FlowLock importLock_;  ///< Held by an import and by the startup load.
  FlowLock messagesLock_;

  DerivedInput derivedInput_;  ///< What `derived_` was worked out from.
  DerivedState derived_;
  std::optional<std::pair<DerivedInput, DerivedState>> prepared_;  ///< For the list about to be assigned.
  std::uint64_t adoptions_ = 0;
  std::shared_ptr<const LabelClassification> shownClassification_;  ///< That of the field.
  bool isRecomputing_ = false;
  DerivedInput backgroundInput_;  ///< What is being worked out in the background.
  std::shared_ptr<std::atomic<bool>> backgroundCancelled_;
  /// The selection to which the first message of the list to come is to be preferred, while one is due.
  std::optional<std::optional<Text>> selectionToReplace_;
  std::vector<std::function<void()>> derivedStateWaiters_;

  bool importNeedsIndex_ = false;  ///< The user waits for the search index.
  bool isIndexing_ = false;
  std::exception_ptr indexingFailure_;  ///< Of the last refresh; null when it succeeded.
  std::vector<std::function<void()>> indexWaiters_;
  SharedMessageList indexedMessages_;  ///< The list that `searchIndex` was built from.
  CollectedWords collectedWords_;      ///< Of messages that the next refresh of the index finds new.

  bool isDiscovering_ = false;
  bool discoversAgain_ = false;

  Subscription discoveredObserverToken_;  ///< An import from the cloud may have brought libraries.

  mutable SharedMessageList selectionSearchedIn_;  ///< The list in which `selectedMessage_` was looked up.
  mutable std::optional<Text> selectionSearchedFor_;
  mutable std::shared_ptr<const EmailMessage> selectedMessage_;
};

}  // namespace tidewrack
