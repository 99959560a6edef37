#include "child_roles.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>

#include <glib.h>
#include <malloc.h>
#include <unistd.h>

#include "classify/search_token_store.h"
#include "export_bench.h"
#include "library/store_operations.h"
#include "mail/json_coding.h"
#include "mail/mbox_importer.h"
#include "measure.h"
#include "platform/main_loop_executor.h"
#include "platform/settings.h"
#include "platform/sqlite.h"
#include "screen/content_view.h"
#include "sync/store_bootstrap.h"

namespace tidewrack::bench {
namespace {

namespace fs = std::filesystem;

void report(const char* name, double value) {
  std::printf("%s %.9g\n", name, value);
}

double clockSeconds() {
  return static_cast<double>(g_get_monotonic_time()) / 1e6;
}

/// Ticks on the main loop every ten milliseconds and keeps the longest time between two ticks: how long the
/// window would not have answered.
class StallWatch {
 public:
  StallWatch() : last_(g_get_monotonic_time()), source_(g_timeout_add(10, tick, this)) {}
  ~StallWatch() { g_source_remove(source_); }
  StallWatch(const StallWatch&) = delete;
  StallWatch& operator=(const StallWatch&) = delete;

  [[nodiscard]] double longestMilliseconds() const { return static_cast<double>(longest_) / 1000.0; }

 private:
  static gboolean tick(gpointer self) {
    auto& watch = *static_cast<StallWatch*>(self);
    const auto now = g_get_monotonic_time();
    watch.longest_ = std::max(watch.longest_, now - watch.last_);
    watch.last_ = now;
    return G_SOURCE_CONTINUE;
  }

  gint64 last_;
  gint64 longest_ = 0;
  guint source_;
};

struct Screen {
  explicit Screen(bool hasStoredTokens = true) {
    const std::vector<std::string> arguments = {"tidewrack-bench"};
    view = std::make_unique<ContentView>(ContentViewServices{
        .executor = executor,
        .settings = settings,
        .container = makeSharedModelContainer({.arguments = arguments, .settings = settings}),
        .arguments = arguments,
        .tokenStore = hasStoredTokens ? &tokens : nullptr});
  }
  void run(Task<> flow) {
    executor.runUntil([&] { return flow.done(); });
    flow.await_resume();
  }

  MainLoopExecutor executor;
  Settings settings;
  PersistedSearchTokenStore tokens;
  std::unique_ptr<ContentView> view;
};

[[noreturn]] void endProcess() {
  // Work in the background, as on the search index, is no part of a measurement; it is not waited for.
  std::fflush(stdout);
  _exit(EXIT_SUCCESS);
}

int importRole(const fs::path& archive) {
  Screen screen;
  auto& view = *screen.view;
  screen.run(view.startup());
  const MemoryWatch memory;
  const StallWatch stall;
  const double start = clockSeconds();
  // Search tokens are left out: their step comes right behind the merge into the list.
  double listed = 0;
  std::uint64_t peakUntilListed = 0;
  std::map<ImportProgressStep, double> steps;
  const auto subscription = view.importStatus.observe([&] {
    const auto& status = view.importStatus();
    const auto* importing = status ? status->as<ImportStatus::Importing>() : nullptr;
    if (importing != nullptr) {
      steps.try_emplace(importing->step, clockSeconds() - start);
      if (importing->step == ImportProgressStep::rebuildingIndex && listed == 0) {
        listed = clockSeconds() - start;
        peakUntilListed = memory.peak();
      }
    }
  });
  screen.run(view.performImport({archive}));
  const double whole = clockSeconds() - start;
  const auto& status = view.importStatus();
  const auto* success = status ? status->as<ImportStatus::Success>() : nullptr;
  if (success == nullptr) {
    std::fprintf(stderr, "%s\n", view.importErrorMessage().value_or("The import failed.").c_str());
    return EXIT_FAILURE;
  }
  report("seconds", listed);
  report("wholeSeconds", whole);
  report("copySeconds", steps[ImportProgressStep::parsingMessages] - steps[ImportProgressStep::copyingFiles]);
  report("parseSeconds",
         steps[ImportProgressStep::savingMessages] - steps[ImportProgressStep::parsingMessages]);
  report("saveSeconds", listed - steps[ImportProgressStep::savingMessages]);
  report("peakBytes", static_cast<double>(peakUntilListed));
  report("wholePeakBytes", static_cast<double>(memory.peak()));
  report("stallMilliseconds", stall.longestMilliseconds());
  report("messages", success->messagesCount);
  endProcess();
}

/// The yardstick of an import: the bytes that an import stores, decoded beforehand, go into plain tables of a
/// fresh database in one transaction, with the durability of the store (synchronous = FULL).
int insertRole(const fs::path& archive, const fs::path& folder, const std::string& journalMode) {
  struct Attachment {
    std::string name;
    std::string type;
    std::string bytes;
  };
  struct Row {
    std::shared_ptr<const EmailMessage> message;
    std::string to, cc, labels, references, plain, html;
    std::vector<Attachment> attachments;
  };
  std::vector<Row> rows;
  MBOXImporter::forEachMessage(
      archive, "library", "library", [&](std::shared_ptr<const EmailMessage> message) {
        Row row{message,
                encodeAddresses(message->to),
                encodeAddresses(message->cc),
                encodeStrings(message->labels),
                encodeStrings(message->references),
                message->plainBody ? message->plainBody->bytes() : "",
                message->htmlBody ? message->htmlBody->bytes() : "",
                {}};
        for (const auto& attachment : message->attachments) {
          row.attachments.push_back(
              {attachment.fileName.string(), attachment.mimeType.string(), attachment.data.bytes()});
        }
        rows.push_back(std::move(row));
      });
  fs::create_directories(folder);
  const auto file = folder / "reference.sqlite";
  const double seconds = secondsOf([&] {
    SQLiteConnection database(file, SQLiteConnection::Mode::readWriteCreate);
    database.execute("PRAGMA journal_mode = " + journalMode);
    database.execute("PRAGMA synchronous = FULL; PRAGMA cache_size = -32768");
    database.execute(
        "CREATE TABLE message (number INTEGER PRIMARY KEY, id, subject, fromName, fromAddress, toData, "
        "ccData, "
        "date, snippet, plainBody, htmlBody, labelsData, conversationID, inReplyTo, referencesData);"
        "CREATE TABLE attachment (message, fileName, mimeType, data)");
    SQLiteTransaction transaction(database);
    auto insertMessage = database.prepare(
        "INSERT INTO message (id, subject, fromName, fromAddress, toData, ccData, date, snippet, plainBody, "
        "htmlBody, labelsData, conversationID, inReplyTo, referencesData) VALUES "
        "(?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    auto insertAttachment = database.prepare("INSERT INTO attachment VALUES (?,?,?,?)");
    for (const auto& row : rows) {
      const auto& message = *row.message;
      insertMessage.bindText(1, message.id);
      insertMessage.bindText(2, message.subject);
      insertMessage.bindText(3, message.from.name.value_or(Text()));
      insertMessage.bindText(4, message.from.address);
      insertMessage.bindBlob(5, row.to);
      insertMessage.bindBlob(6, row.cc);
      insertMessage.bindReal(7, message.date ? secondsSince1970(*message.date) : 0);
      insertMessage.bindText(8, message.snippet);
      insertMessage.bindText(9, row.plain);
      insertMessage.bindText(10, row.html);
      insertMessage.bindBlob(11, row.labels);
      insertMessage.bindText(12, message.conversationID);
      insertMessage.bindText(13, message.inReplyTo.value_or(Text()));
      insertMessage.bindBlob(14, row.references);
      insertMessage.run();
      const auto number = database.lastInsertRow();
      for (const auto& attachment : row.attachments) {
        insertAttachment.bindInteger(1, number);
        insertAttachment.bindText(2, attachment.name);
        insertAttachment.bindText(3, attachment.type);
        insertAttachment.bindBlob(4, attachment.bytes);
        insertAttachment.run();
      }
    }
    transaction.commit();
  });
  report("seconds", seconds);
  report("messages", static_cast<double>(rows.size()));
  endProcess();
}

/// From the start of the process to the list on the screen; the parent knows when it began.
int startRole(bool hasStoredTokens) {
  Screen screen(hasStoredTokens);
  auto& view = *screen.view;
  screen.run(view.startup());
  screen.run(view.whenDerivedStateIsCurrent());
  report("clock", clockSeconds());
  report("messages", static_cast<double>(view.cachedFilteredMessages().size()));
  endProcess();
}

/// What a loaded list costs.
int listRole() {
  const auto container = ModelContainer::open(applicationSupportFolder() / "default.store");
  auto context = container->newContext();
  malloc_trim(0);
  const auto before = MemoryWatch::now();
  const auto messages = fetchAllMessages(context);
  malloc_trim(0);
  const auto after = MemoryWatch::now();
  report("messages", static_cast<double>(messages.size()));
  report("bytes", static_cast<double>(after) - static_cast<double>(before));
  endProcess();
}

}  // namespace

int runChildRole(const std::vector<std::string>& arguments) {
  if (arguments.empty()) {
    return -1;
  }
  const auto& role = arguments[0];
  if (role == "role:import") {
    return importRole(arguments.at(1));
  }
  if (role == "role:insert") {
    return insertRole(arguments.at(1), arguments.at(2), arguments.at(3));
  }
  if (role == "role:start") {
    return startRole(arguments.size() < 2);
  }
  if (role == "role:list") {
    return listRole();
  }
  return runExportRole(arguments);
}

}  // namespace tidewrack::bench
