#include "search_measures.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <vector>

#include "classify/message_text.h"
#include "classify/search_token_store.h"
#include "classify/token_segment.h"
#include "library/message_store.h"
#include "library/store_operations.h"
#include "mail/mbox_importer.h"
#include "platform/sqlite.h"

namespace tidewrack::bench {
namespace {

namespace fs = std::filesystem;

void require(bool holds, const char* what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

/// The pairs as rows of the documented entity, in a database with the durability of the store.
class PairRows {
 public:
  explicit PairRows(const fs::path& file) : file_(file) {}

  double insert(const std::vector<SearchTokenEntry>& entries) const {
    fs::remove(file_);
    SQLiteConnection database(file_, SQLiteConnection::Mode::readWriteCreate);
    database.execute("PRAGMA page_size = 16384; PRAGMA journal_mode = DELETE; PRAGMA synchronous = FULL;");
    database.execute(
        "CREATE TABLE token (id TEXT NOT NULL DEFAULT '', token TEXT NOT NULL DEFAULT '', "
        "messageID TEXT NOT NULL DEFAULT '')");
    return secondsOf([&] {
      SQLiteTransaction transaction(database);
      auto insert = database.prepare("INSERT INTO token VALUES (?, ?, ?)");
      char id[40];
      unsigned number = 0;
      for (const auto& entry : entries) {
        std::snprintf(id, sizeof id, "%08X-0000-4000-8000-%012X", number, number);
        ++number;
        insert.bindText(1, id);
        insert.bindText(2, entry.token);
        insert.bindText(3, entry.messageID);
        insert.run();
      }
      transaction.commit();
    });
  }

  [[nodiscard]] double read(std::size_t count) const {
    SQLiteConnection database(file_, SQLiteConnection::Mode::readOnly);
    std::vector<SearchTokenEntry> entries;
    entries.reserve(count);
    return secondsOf([&] {
      auto rows = database.prepare("SELECT token, messageID FROM token");
      while (rows.step()) {
        entries.push_back({rows.bytes(0), rows.bytes(1)});
      }
      require(entries.size() == count, "pairs are missing");
    });
  }

 private:
  fs::path file_;
};

/// FTS5 in memory, without positions, over the same texts.
class FullTextRows {
 public:
  explicit FullTextRows(const MessageList& messages) : database_({}, SQLiteConnection::Mode::inMemory) {
    database_.execute(
        "CREATE VIRTUAL TABLE text USING fts5(all_text, content='', detail=none, columnsize=0, "
        "tokenize=\"unicode61 remove_diacritics 2\")");
    SQLiteTransaction transaction(database_);
    auto insert = database_.prepare("INSERT INTO text (rowid, all_text) VALUES (?, ?)");
    std::int64_t row = 0;
    std::string room;
    for (const auto& message : messages) {
      std::string all;
      forEachSearchableText(*message, room, [&all](std::string_view text) { all.append(text).append(" "); });
      insert.bindInteger(1, ++row);
      insert.bindText(2, all);
      insert.run();
    }
    transaction.commit();
    database_.execute("INSERT INTO text (text) VALUES ('optimize')");
  }

  std::vector<std::int64_t> rowsWith(const std::string& query) {
    std::vector<std::int64_t> rows;
    auto statement = database_.prepare("SELECT rowid FROM text WHERE text MATCH ?");
    statement.bindText(1, query);
    while (statement.step()) {
      rows.push_back(statement.integer(0));
    }
    return rows;
  }

 private:
  SQLiteConnection database_;
};

/// The word whose number of messages comes nearest to the one wished for.
std::string wordWith(const TokenSegment& segment, std::size_t wished) {
  std::string best;
  std::size_t distance = static_cast<std::size_t>(-1);
  for (std::size_t i = 0; i < segment.tokenCount(); ++i) {
    const auto count = segment.messagesWith(i).size();
    const auto away = count > wished ? count - wished : wished - count;
    const auto token = segment.token(i);
    const bool isPlain = std::ranges::all_of(token, [](char c) { return c >= 'a' && c <= 'z'; });
    if (isPlain && away < distance) {
      distance = away;
      best = token;
    }
  }
  return best;
}

void measureQueries(const FullTextSearchIndex& index, const TokenSegment& segment,
                    const MessageList& messages, const std::string& name, int turns, Table& table) {
  FullTextRows rows(messages);
  const auto common = wordWith(segment, messages.size());
  const auto middle = wordWith(segment, messages.size() / 10);
  struct Query {
    const char* what;
    std::string words;
    int times;
  };
  for (const auto& each : {Query{"common word", common, 50}, Query{"rare word", wordWith(segment, 1), 5000},
                           Query{"two words", common + " " + middle, 50}}) {
    const auto& words = each.words;
    require(index.positionsMatching(words).size() == rows.rowsWith(words).size(),
            "the two do not find the same");
    const auto repeat = [times = each.times](const std::function<void()>& query) {
      return secondsOf([&] {
               for (int i = 0; i < times; ++i) {
                 query();
               }
             }) /
             times;
    };
    const auto pair = medianOfTurns(
        turns * 3, [&] { return repeat([&] { (void)index.positionsMatching(words); }); },
        [&] { return repeat([&] { (void)rows.rowsWith(words); }); });
    table.addRatio("query, " + std::string(each.what) + ", " + name + " (FTS5)", pair, 1.0);
    char times_[80];
    std::snprintf(times_, sizeof times_, "%.1f us against %.1f us", pair.measured * 1e6,
                  pair.reference * 1e6);
    table.addNote("  " + std::to_string(index.positionsMatching(words).size()) + " messages", times_);
  }
}

void measureStored(FullTextSearchIndex& index, MessageList& messages, const std::string& name, bool hasGoals,
                   const fs::path& scratch, int turns, Table& table) {
  const auto container = ModelContainer::open(scratch / "default.store");
  ModelContext context = container->newContext();
  messages = saveMessages(std::move(messages), context);
  PersistedSearchTokenStore tokens;
  const auto usedBytes = [&context] {
    MessageStore::Writing writing(context.store());
    return static_cast<double>(writing.with([](SQLiteConnection& connection) {
      return (connection.queryInteger("PRAGMA page_count") -
              connection.queryInteger("PRAGMA freelist_count")) *
             connection.queryInteger("PRAGMA page_size");
    }));
  };
  const auto pairs = static_cast<double>(index.pairCount());
  const double before = usedBytes();
  tokens.rewrite(index, context);
  table.addBytesAPair("stored tokens, a pair, " + name, (usedBytes() - before) / pairs, hasGoals ? 4 : 0);

  const PairRows rows(scratch / "rows.sqlite");
  const auto entries = index.entries();
  table.addRatio("rewrite the stored tokens, " + name + " (pairs as rows)",
                 medianOfTurns(
                     turns, [&] { return secondsOf([&] { tokens.rewrite(index, context); }); },
                     [&] { return rows.insert(entries); }),
                 hasGoals ? 1.0 / 15 : 0);
  // What is loaded, like the rows that are read, goes outside the time.
  const auto load = [&] {
    FullTextSearchIndex loaded;
    return secondsOf([&] {
      loaded = tokens.load(context);
      require(loaded.pairCount() == index.pairCount(), "pairs are missing");
    });
  };
  table.addRatio("load the stored tokens, " + name + " (pairs as rows)",
                 medianOfTurns(turns, load, [&] { return rows.read(entries.size()); }), hasGoals ? 0.1 : 0);
}

}  // namespace

void measureSearch(const fs::path& archive, const std::string& name, bool hasGoals, const fs::path& scratch,
                   int turns, Table& table) {
  MessageList messages;
  FullTextSearchIndex index;
  // The messages and the index of the turn before go outside the time of either.
  const auto parse = [&] {
    index = FullTextSearchIndex();
    messages.clear();
    return secondsOf([&] { messages = MBOXImporter::parseFile(archive, "library", "library"); });
  };
  const auto build = [&] {
    index = FullTextSearchIndex();
    return secondsOf([&] { index.build(messages); });
  };
  parse();
  table.addRatio("tokenise and build the index, " + name + " (parse)", medianOfTurns(turns, build, parse),
                 hasGoals ? 1.2 : 0);
  const auto segment = index.asOneSegment();
  table.addNote("  pairs, words",
                std::to_string(segment->pairCount()) + ", " + std::to_string(segment->tokenCount()));
  table.addBytesAPair("memory of the index, a pair, " + name,
                      static_cast<double>(index.memory()) / static_cast<double>(index.pairCount()),
                      hasGoals ? 4 : 0);
  fs::remove_all(scratch);
  fs::create_directories(scratch);
  measureStored(index, messages, name, hasGoals, scratch, turns, table);
  measureQueries(index, *segment, messages, name, turns, table);
  messages.clear();
  fs::remove_all(scratch);
}

}  // namespace tidewrack::bench
