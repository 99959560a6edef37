#include "export_bench.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include "archive_generator.h"
#include "export/export_file.h"
#include "library/store_operations.h"

namespace tidewrack::bench {
namespace {

namespace fs = std::filesystem;

constexpr const char* role = "role:export";

// Many small messages and some with large attachments, as mail is: about 100,000 messages in a gigabyte.
void makeArchive(const fs::path& file, bool quick) {
  const std::uint64_t scale = quick ? 10 : 1;
  std::ofstream stream(file, std::ios::binary);
  const auto write = [&](std::string_view message) {
    stream.write(message.data(), static_cast<std::streamsize>(message.size()));
  };
  generateArchive({ArchiveKind::small, 380'000'000 / scale, 1, LineEnds::lf}, write);
  generateArchive({ArchiveKind::large, 620'000'000 / scale, 2, LineEnds::lf}, write);
  if (!stream.flush()) {
    throw std::runtime_error("cannot write " + file.string());
  }
}

// What all threads of this process have computed so far, the system's work for them included.
double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// cp, made as durable as an export.
double copySeconds(const fs::path& from, const fs::path& to) {
  fs::remove(to);
  sync();
  return secondsOf([&] {
    const std::string command = "cp '" + from.string() + "' '" + to.string() + "'";
    const int descriptor = std::system(command.c_str()) == 0 ? open(to.c_str(), O_RDONLY | O_CLOEXEC) : -1;
    if (descriptor < 0 || fsync(descriptor) != 0) {
      throw std::runtime_error("cp failed");
    }
    close(descriptor);
  });
}

}  // namespace

void measureExport(const fs::path& folder, bool quick, int turns, Table& table) {
  fs::create_directories(folder);
  const auto archive = folder / (quick ? "export-quick.mbox" : "export.mbox");
  const auto world = folder / "world-export";
  makeArchive(archive, quick);
  fs::remove_all(world);
  runChild({"role:import", archive}, world);
  fs::remove(archive);
  const auto store = world / "data/Tidewrack/default.store";
  for (const auto format : ExportUtility::allFormats) {
    const std::string extension = ExportUtility::fileExtension(format);
    const auto file = folder / ("export-result." + extension);
    const auto copy = folder / ("export-copy." + extension);
    Report last;
    const auto exported = [&] {
      fs::remove(file);
      sync();
      last = runChild({role, store, extension, file}, world);
      return last["seconds"];
    };
    const auto copied = [&] { return copySeconds(file, copy); };
    exported();  // What is copied has to be there, and what is read in the page cache.
    const auto pair = medianOfTurns(turns, exported, copied);
    char what[80];
    std::snprintf(what, sizeof what, "export as %s, %.0f messages, %.0f MB (cp)", extension.c_str(),
                  last["messages"], static_cast<double>(fs::file_size(file)) / 1e6);
    table.addRatio(what, pair, 2.0);
    table.addBytes("  peak anonymous memory, the list included", last["peakBytes"], 200e6);
    table.addNote("  of that the list", std::to_string(std::llround(last["listBytes"] / 1e6)) + " MB");
    fs::remove(file);
    fs::remove(copy);
  }
}

int runExportRole(const std::vector<std::string>& arguments) {
  if (arguments.at(0) != role) {
    return -1;
  }
  const auto container = ModelContainer::open(arguments.at(1));
  auto context = container->newContext();
  MessageList messages = fetchAllMessages(context);
  sortNewestFirst(messages);
  const auto format = ExportUtility::formatFromExtension(arguments.at(2)).value();
  malloc_trim(0);
  const auto listBytes = MemoryWatch::now();
  const MemoryWatch memory;
  const double processorBefore = processorSeconds();
  const double seconds =
      secondsOf([&] { exportToFile(messages, format, arguments.at(3), Date(std::chrono::seconds(0))); });
  std::printf("seconds %.9g\nprocessorSeconds %.9g\nmessages %zu\nlistBytes %.9g\npeakBytes %.9g\n", seconds,
              processorSeconds() - processorBefore, messages.size(), static_cast<double>(listBytes),
              static_cast<double>(memory.peak()));
  std::fflush(stdout);
  _exit(EXIT_SUCCESS);
}

}  // namespace tidewrack::bench
