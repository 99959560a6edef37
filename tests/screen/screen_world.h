#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "library/store_operations.h"
#include "platform/settings.h"
#include "screen/content_view.h"
#include "support/temporary_folder.h"
#include "support/virtual_executor.h"

namespace tidewrack {

/// A system search index that remembers what it was given, and fails when told to.
class FakeIndexer : public MessageIndexer {
 public:
  Task<> index(MessageList messages, std::size_t batchSize) override {
    if (fails) {
      throw Failure("The system index is full.");
    }
    for (const auto& message : messages) {
      indexed.push_back(message->id.string());
    }
    batchSizes.push_back(batchSize);
    co_return;
  }
  Task<> remove(std::vector<Text> messageIDs) override {
    if (fails) {
      throw Failure("The system index is full.");
    }
    for (const auto& id : messageIDs) {
      removed.push_back(id.string());
    }
    co_return;
  }

  bool fails = false;
  std::vector<std::string> indexed;
  std::vector<std::string> removed;
  std::vector<std::size_t> batchSizes;
};

/// Stored search tokens, kept beside the store.
class FakeTokenStore : public SearchTokenStore {
 public:
  FullTextSearchIndex load(ModelContext& /*context*/) override {
    ++loads;
    FullTextSearchIndex index;
    index.load(entries);
    return index;
  }
  void rewrite(FullTextSearchIndex& index, ModelContext& /*context*/) override {
    ++rewrites;
    if (fails) {
      throw StoreFailure("The tokens cannot be written.");
    }
    entries = index.entries();
  }

  bool fails = false;
  int loads = 0;
  int rewrites = 0;
  std::vector<SearchTokenEntry> entries;
};

class FakeCategorizer : public MessageCategorizer {
 public:
  [[nodiscard]] bool isModelAvailable() const override { return isAvailable; }
  void categorize(const MessageList& messages,
                  std::function<void(const Text& id, const Text& category)> onCategorized) override {
    ++runs;
    given = messages.size();
    report = std::move(onCategorized);
  }

  bool isAvailable = true;
  int runs = 0;
  std::size_t given = 0;
  std::function<void(const Text& id, const Text& category)> report;
};

/// A user's world on disk with a screen in it, on the virtual clock.
class ScreenWorld : public testing::Test {
 protected:
  ScreenWorld() : settings(folder / "settings.ini") {
    std::filesystem::create_directories(folder / "archives");
  }

  ~ScreenWorld() override {
    // Flows that have begun come to their end, and with them what they hold.
    executor.runUntilIdle();
  }

  [[nodiscard]] ContentViewServices services() {
    if (!container) {
      container = ModelContainer::open(applicationFolder() / "default.store");
    }
    return {.executor = executor,
            .settings = settings,
            .container = container,
            .applicationFolder = applicationFolder(),
            .arguments = {"tidewrack"},
            .spotlight = spotlight.get(),
            .categorizer = categorizer.get(),
            .tokenStore = keepsTokens ? static_cast<SearchTokenStore*>(&persistedTokens) : tokenStore.get()};
  }

  ContentView& open() { return open(services()); }
  ContentView& open(ContentViewServices services) {
    screen_ = std::make_unique<ContentView>(std::move(services));
    watchStatus();
    return *screen_;
  }
  ContentView& screen() { return screen_ ? *screen_ : open(); }

  /// Ends the program and starts it again over the same files.
  ContentView& restart() {
    executor.runUntilIdle();
    statusSubscription_.reset();
    screen_.reset();
    container.reset();
    statuses.clear();
    ContentView& fresh = open();
    executor.finish(fresh.startup());
    return fresh;
  }

  [[nodiscard]] std::filesystem::path applicationFolder() const { return folder / "Tidewrack"; }
  [[nodiscard]] std::filesystem::path catalogFile() const { return applicationFolder() / "libraries.json"; }

  /// An archive file with one message for each id, one day apart; the first is the newest.
  std::filesystem::path archive(const std::string& name, const std::vector<std::string>& ids,
                                const std::string& labels = "") {
    const auto file = folder / "archives" / name;
    std::ofstream out(file);
    int day = 28;
    for (const auto& id : ids) {
      out << "From someone@example.org Thu Jan 01 00:00:00 2026\n"
          << (id.empty() ? "" : "Message-ID: <" + id + ">\n") << "From: Ann <ann@example.org>\n"
          << "Subject: About " << id << "\nDate: " << day-- << " Jan 2026 10:00:00 +0000\n"
          << (labels.empty() ? "" : "X-Gmail-Labels: " + labels + "\n") << "\nText of " << id << ".\n\n";
    }
    return file;
  }

  void import(const std::vector<std::filesystem::path>& files) {
    executor.finish(screen().performImport(files));
    executor.runUntilIdle();
  }

  [[nodiscard]] std::vector<std::string> shownIDs() { return idsOf(screen().cachedFilteredMessages()); }
  [[nodiscard]] std::vector<std::string> loadedIDs() { return idsOf(screen().messages()); }
  static std::vector<std::string> idsOf(const MessageList& list) {
    std::vector<std::string> ids;
    for (const auto& message : list) {
      ids.push_back(message->id.string());
    }
    return ids;
  }
  [[nodiscard]] std::vector<std::string> storedIDs() {
    ModelContext context = container->newContext();
    return idsOf(fetchAllMessages(context));
  }
  [[nodiscard]] std::vector<std::string> storedFiles() const {
    std::vector<std::string> names;
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator(applicationFolder() / "Libraries", failed)) {
      names.push_back(entry.path().filename());
    }
    return names;
  }
  [[nodiscard]] LibraryCatalog catalog() const { return LibraryCatalog(applicationFolder()); }

  static std::string textOf(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
  }
  static void write(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text;
  }

  /// Changes the store behind the program's back.
  void sql(const std::string& statement) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open((applicationFolder() / "default.store").c_str(), &database), SQLITE_OK);
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(database, statement.c_str(), nullptr, nullptr, &error), SQLITE_OK)
        << (error ? error : "");
    sqlite3_free(error);
    sqlite3_close(database);
  }
  void makeSavingFail() {
    sql("CREATE TRIGGER fails BEFORE INSERT ON message BEGIN SELECT RAISE(ABORT, 'the disk is tired'); END");
  }
  void letSavingWork() { sql("DROP TRIGGER fails"); }

  /// Runs one piece of work after the other until the condition holds.
  void runUntil(const std::function<bool()>& condition) {
    executor.runMain();
    while (!condition()) {
      ASSERT_TRUE(executor.runNextInBackground()) << "all work is done and the condition does not hold";
      executor.runMain();
    }
  }
  /// The import's step now, if there is one.
  [[nodiscard]] std::optional<ImportProgressStep> importStep() {
    const auto& status = screen().importStatus();
    const auto* importing = status ? status->as<ImportStatus::Importing>() : nullptr;
    return importing ? std::optional(importing->step) : std::nullopt;
  }
  template <typename Case>
  [[nodiscard]] const Case* statusAs() {
    const auto& status = screen().importStatus();
    return status ? status->template as<Case>() : nullptr;
  }

  TemporaryFolder folder;
  VirtualExecutor executor;
  Settings settings;
  std::unique_ptr<FakeIndexer> spotlight;
  std::unique_ptr<FakeCategorizer> categorizer;
  std::unique_ptr<FakeTokenStore> tokenStore;
  bool keepsTokens = false;  ///< Tokens go where the program keeps them, in the store.
  PersistedSearchTokenStore persistedTokens;
  std::shared_ptr<ModelContainer> container;
  std::vector<ImportStatus> statuses;  ///< Every status that the screen has shown, in order.

 private:
  void watchStatus() {
    statusSubscription_ = screen_->importStatus.observe([this] {
      if (const auto& status = screen_->importStatus()) {
        statuses.push_back(*status);
      }
    });
  }

  std::unique_ptr<ContentView> screen_;
  Subscription statusSubscription_;
};

inline ImportStatus importing(ImportProgressStep step, std::optional<std::string> fileName, int completed,
                              int total, int libraries, int messages) {
  return ImportStatus::Importing{step, std::move(fileName), completed, total, libraries, messages};
}

}  // namespace tidewrack
