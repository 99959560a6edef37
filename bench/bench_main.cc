// tidewrack-bench: prints how long the great operations take, each as a ratio to a reference that does the
// unavoidable part of the same work and is measured in the same run.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <glib.h>
#include <unistd.h>

#include "archive_generator.h"
#include "child_roles.h"
#include "derived_bench.h"
#include "export_bench.h"
#include "mail/mbox_importer.h"
#include "mail_indexers.h"
#include "measure.h"
#include "reference_pass.h"
#include "search_measures.h"

namespace tidewrack::bench {
namespace {

namespace fs = std::filesystem;

constexpr const char* usage =
    "Usage: tidewrack-bench [--quick] [--turns N] [--only parse|import|start|derived|search|tools|export]\n"
    "                       [--folder FOLDER]\n"
    "  --quick    archives of a tenth of the size\n"
    "  --turns    how often each piece of work is timed; the median counts (3)\n"
    "  --folder   where archives and databases go (build/bench/data)\n";

struct Options {
  bool quick = false;
  int turns = 3;
  std::string only;
  fs::path folder = "build/bench/data";
};

struct Archive {
  std::string name;
  fs::path file;
  std::uint64_t messages = 0;
};

Archive makeArchive(const Options& options, const std::string& name, const ArchivePlan& plan) {
  fs::create_directories(options.folder);
  Archive archive{name, options.folder / (name + "-" + std::to_string(plan.bytes) + ".mbox"), 0};
  // Written anew in each run: what lies there may come from an older generator.
  std::ofstream file(archive.file, std::ios::binary);
  const auto summary = generateArchive(plan, [&](std::string_view message) {
    file.write(message.data(), static_cast<std::streamsize>(message.size()));
  });
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + archive.file.string());
  }
  archive.messages = summary.messages;
  return archive;
}

void measureParsing(const Options& options, const Archive& archive, double parseGoal, double decodeGoal,
                    Table& table) {
  double vector = 0;
  const auto pass = [&](PassKind kind) {
    return secondsOf([&] {
      if (referencePass(archive.file, kind).lines == 0) {
        throw std::runtime_error("no lines");
      }
    });
  };
  const auto reference = [&] {
    vector = pass(PassKind::vector);
    return pass(PassKind::plain);
  };
  const auto parse = [&] {
    MessageList messages;
    const double seconds =
        secondsOf([&] { messages = MBOXImporter::parseFile(archive.file, "library", "library"); });
    if (messages.size() < archive.messages) {
      throw std::runtime_error("messages are missing");
    }
    return seconds;
  };
  const auto decode = [&] {
    std::uint64_t bytes = 0;
    return secondsOf([&] {
      MBOXImporter::forEachMessage(archive.file, "library", "library",
                                   [&](const std::shared_ptr<const EmailMessage>& message) {
                                     bytes += message->plainBody ? message->plainBody->bytes().size() : 0;
                                     bytes += message->htmlBody ? message->htmlBody->bytes().size() : 0;
                                     for (const auto& attachment : message->attachments) {
                                       bytes += attachment.data.bytes().size();
                                     }
                                   });
      if (bytes == 0) {
        throw std::runtime_error("nothing was decoded");
      }
    });
  };
  reference();  // The file is in the page cache from here on.
  const auto parsed = medianOfTurns(options.turns, parse, reference);
  table.addRatio("parse, " + archive.name, parsed, parseGoal);
  table.addRatio("  against the pass in AVX2", {parsed.measured, vector}, 0);
  const auto decoded = medianOfTurns(options.turns, decode, reference);
  table.addRatio("parse and decode everything, " + archive.name, decoded, decodeGoal);
  table.addRatio("  against the pass in AVX2", {decoded.measured, vector}, 0);
}

/// cp, made as durable as an import makes its copy.
double copySeconds(const fs::path& from, const fs::path& to) {
  fs::create_directories(to.parent_path());
  const double seconds = secondsOf([&] {
    const std::string command = "cp '" + from.string() + "' '" + to.string() + "'";
    const int descriptor = std::system(command.c_str()) == 0 ? open(to.c_str(), O_RDONLY | O_CLOEXEC) : -1;
    if (descriptor < 0 || fsync(descriptor) != 0) {
      throw std::runtime_error("cp failed");
    }
    close(descriptor);
  });
  fs::remove(to);
  return seconds;
}

void measureImport(const Options& options, const Archive& archive, Table& table) {
  const auto world = options.folder / ("world-" + archive.name);
  const auto scratch = options.folder / "reference";
  Report last;
  double stall = 0;
  double peak = 0;
  double insertWAL = 0;
  const auto import = [&] {
    fs::remove_all(world);
    sync();
    last = runChild({"role:import", archive.file}, world);
    stall = std::max(stall, last["stallMilliseconds"]);
    peak = std::max(peak, last["peakBytes"]);
    return last["seconds"];
  };
  const auto insert = [&](const char* journalMode) {
    fs::remove_all(scratch);
    sync();
    const double seconds = runChild({"role:insert", archive.file, scratch, journalMode}, world)["seconds"];
    fs::remove_all(scratch);
    return seconds;
  };
  const auto reference = [&] {
    const double copy = copySeconds(archive.file, scratch / "copy.mbox");
    insertWAL = copy + insert("WAL");
    return copy + insert("DELETE");
  };
  const auto pair = medianOfTurns(options.turns, import, reference);
  table.addRatio("import, " + archive.name + " (cp + insert, rollback journal)", pair, 1.3);
  table.addRatio("import, " + archive.name + " (cp + insert, WAL)", {pair.measured, insertWAL}, 0);
  char note[160];
  std::snprintf(note, sizeof note, "copy %.2f, parse %.2f, save and list %.2f, with the search index %.2f s",
                last["copySeconds"], last["parseSeconds"], last["saveSeconds"], last["wholeSeconds"]);
  table.addNote("  steps of the last run", note);
  table.addBytes("peak anonymous memory, import, " + archive.name, peak, 200e6 + 1200 * last["messages"]);
  table.addNote("  with the search index",
                std::to_string(std::llround(last["wholePeakBytes"] / 1e6)) + " MB");
  table.addMilliseconds("longest stall of the main thread, import, " + archive.name, stall, 100);
}

void measureStart(const Options& options, const Archive& archive, Table& table) {
  const auto world = options.folder / ("world-" + archive.name);
  const auto store = world / "data/Tidewrack/default.store";
  if (!fs::exists(store)) {
    runChild({"role:import", archive.file}, world);
  }
  double messages = 0;
  const auto startWith = [&](const std::vector<std::string>& role) {
    const double began = static_cast<double>(g_get_monotonic_time()) / 1e6;
    const auto report = runChild(role, world);
    messages = report.at("messages");
    return report.at("clock") - began;
  };
  // The reference reads the messages alone, so the list is measured alone, and then with the search index.
  const auto start = [&] { return startWith({"role:start", "without stored tokens"}); };
  const auto startWithIndex = [&] { return startWith({"role:start"}); };
  const std::string query =
      "SELECT number, source, id, subject, fromName, fromAddress, toData, ccData, date, snippet, plainBody, "
      "plainBodySize, htmlBody, htmlBodySize, labelsData, conversationID, inReplyTo, referencesData, "
      "category "
      "FROM message; SELECT number, libraryID, libraryName FROM source; SELECT message, id, fileName, "
      "mimeType, "
      "contentID, isInline, data, dataSize FROM attachment;";
  const auto shell = [&] {
    const std::string command = "sqlite3 -readonly '" + store.string() + "' '" + query + "' >/dev/null";
    return secondsOf([&] {
      if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("the SQLite shell failed");
      }
    });
  };
  start();
  table.addRatio("start until the list stands, " + std::to_string(archive.messages) + " messages",
                 medianOfTurns(options.turns * 2 + 1, start, shell), 1.5);
  table.addRatio("  and the stored search index", medianOfTurns(options.turns * 2 + 1, startWithIndex, shell),
                 0);
  const auto list = runChild({"role:list"}, world);
  table.addBytes("memory of a loaded list, a message", list.at("bytes") / list.at("messages"), 1000);
}

constexpr std::size_t derivedMessages = 1'000'000;

/// From the archive to a library that can be searched, against the indexers of other mail tools over the same
/// messages as a Maildir. One turn of theirs takes minutes.
void measureAgainstTools(const Options& options, const Archive& archive, const ArchivePlan& plan,
                         double muGoal, double notmuchGoal, Table& table) {
  const auto maildir = options.folder / ("maildir-" + archive.name);
  const auto scratch = options.folder / "indexers";
  const auto world = options.folder / ("world-" + archive.name);
  {
    MaildirWriter writer(maildir);
    generateArchive(plan, [&writer](std::string_view message) { writer.write(message); });
  }
  // Each program runs over a little mail first, so that it is in memory as its input is.
  const auto rehearsal = options.folder / "rehearsal";
  const auto rehearsalArchive = rehearsal / "archive.mbox";
  const auto rehearsalMaildir = rehearsal / "maildir";
  fs::create_directories(rehearsal);
  {
    MaildirWriter writer(rehearsalMaildir);
    std::ofstream file(rehearsalArchive, std::ios::binary);
    constexpr std::uint64_t little = 100'000;  // bytes
    generateArchive({plan.kind, little, 1, LineEnds::lf}, [&](std::string_view message) {
      writer.write(message);
      file << message;
    });
  }
  const auto import = [&] {
    fs::remove_all(world);
    warmInput(archive.file);
    runChild({"role:import", rehearsalArchive}, rehearsal / "world");
    fs::remove_all(rehearsal / "world");
    return runChild({"role:import", archive.file}, world)["wholeSeconds"];
  };
  const auto add = [&](const char* tool, double (*index)(const fs::path&, const fs::path&), double goal) {
    fs::remove_all(world);
    warmInput(maildir);
    index(rehearsalMaildir, scratch);
    const double reference = index(maildir, scratch);
    const auto pair = medianOfTurns(options.turns, import, [reference] { return reference; });
    if (reference < 0) {
      table.addNote("import to searchable, " + archive.name, std::string(tool) + " is not installed");
    } else {
      table.addRatio("import to searchable, " + archive.name + " (" + tool + ")", pair, goal);
    }
  };
  add("mu index", muIndexSeconds, muGoal);
  add("notmuch new", notmuchNewSeconds, notmuchGoal);
  fs::remove_all(maildir);
  fs::remove_all(rehearsal);
}

int run(const Options& options) {
  const std::uint64_t scale = options.quick ? 10 : 1;
  const auto wants = [&](const char* what) { return options.only.empty() || options.only == what; };
  if (options.only == "derived") {  // Needs no archives.
    Table table;
    measureDerivedState(derivedMessages / scale, options.turns, options.folder, table);
    return table.allReached() ? EXIT_SUCCESS : EXIT_FAILURE;
  }
  const ArchivePlan largePlan{ArchiveKind::large, 1'000'000'000 / scale, 1, LineEnds::lf};
  const ArchivePlan smallPlan{ArchiveKind::small, 400'000'000 / scale, 1, LineEnds::lf};
  const auto large = makeArchive(options, "large", largePlan);
  const auto small = makeArchive(options, "small", smallPlan);
  std::printf(
      "large: %.0f MB, %llu messages; small: %.0f MB, %llu messages\n",
      static_cast<double>(fs::file_size(large.file)) / 1e6, static_cast<unsigned long long>(large.messages),
      static_cast<double>(fs::file_size(small.file)) / 1e6, static_cast<unsigned long long>(small.messages));
  std::printf(
      "Parsing is compared with one pass of one thread that finds the line ends and validates UTF-8, in\n"
      "portable C++; beside it stands the same pass written by hand in AVX2.\n\n");
  Table table;
  if (wants("parse")) {
    measureParsing(options, large, 2.0, 3.0, table);
    measureParsing(options, small, 8.0, 0, table);
    // Archives as the provider writes them end their lines with CR and LF.
    const auto crlf =
        makeArchive(options, "large-crlf", {ArchiveKind::large, 1'000'000'000 / scale, 1, LineEnds::crlf});
    measureParsing(options, crlf, 0, 0, table);
    fs::remove(crlf.file);
  }
  if (wants("import")) {
    measureImport(options, large, table);
    measureImport(options, small, table);
  }
  if (wants("start")) {
    measureStart(options, small, table);
  }
  if (wants("derived")) {
    measureDerivedState(derivedMessages / scale, options.turns, options.folder, table);
  }
  if (wants("search")) {
    measureSearch(large.file, large.name, false, options.folder / "search", options.turns, table);
    measureSearch(small.file, small.name, true, options.folder / "search", options.turns, table);
  }
  if (wants("tools")) {
    measureAgainstTools(options, large, largePlan, 1.0 / 5, 1.0 / 15, table);
    measureAgainstTools(options, small, smallPlan, 1.0 / 25, 1.0 / 45, table);
  }
  if (wants("export")) {
    measureExport(options.folder, options.quick, options.turns, table);
  }
  return table.allReached() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace tidewrack::bench

int main(int argc, char** argv) {
  using namespace tidewrack::bench;
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  try {
    const int status = runChildRole(arguments);
    if (status >= 0) {
      return status;
    }
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      const bool hasValue = i + 1 < arguments.size();
      if (arguments[i] == "--quick") {
        options.quick = true;
      } else if (arguments[i] == "--turns" && hasValue) {
        options.turns = std::max(1, std::atoi(arguments[++i].c_str()));
      } else if (arguments[i] == "--only" && hasValue) {
        options.only = arguments[++i];
      } else if (arguments[i] == "--folder" && hasValue) {
        options.folder = arguments[++i];
      } else {
        std::fputs(usage, arguments[i] == "--help" ? stdout : stderr);
        return arguments[i] == "--help" ? EXIT_SUCCESS : 2;
      }
    }
    options.folder = std::filesystem::absolute(options.folder);
    return run(options);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "tidewrack-bench: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
