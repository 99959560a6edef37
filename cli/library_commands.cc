#include <cerrno>
#include <cstring>
#include <set>

#include <fcntl.h>
#include <unistd.h>

#include "cli/commands.h"
#include "cli/headless_screen.h"
#include "cli/message_output.h"
#include "cli/progress.h"
#include "platform/localized.h"

namespace tidewrack {
namespace {

using Rows = std::vector<std::vector<std::string>>;

std::vector<std::string> row(const MBOXLibrary& library, const ContentView& screen) {
  return {library.id.string(), library.displayName.string(), std::to_string(screen.messageCount(library.id)),
          formatISO8601(library.importedAt), library.fileName.string()};
}

/// Finds out before anything is copied that a file cannot be read: a run that fails at its second file
/// would leave the first one's copy behind without its messages.
void requireReadable(const std::string& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  char byte = 0;
  const bool failed = descriptor < 0 || pread(descriptor, &byte, 1, 0) < 0;
  const int error = errno;
  if (descriptor >= 0) {
    close(descriptor);
  }
  if (failed) {
    throw FileFailure(formatText(localized("ctl_unreadable", "The file \"%@\" cannot be read: %@",
                                           "tidewrackctl error, file and reason"),
                                 {file, std::string(std::strerror(error))}));
  }
}

}  // namespace

int importArchives(const CommandLine& line, Output& output) {
  for (const auto& file : line.operands) {
    requireReadable(file);
  }
  HeadlessScreen headless(HeadlessScreen::Search::with);
  auto& screen = headless.screen();
  std::set<Text> known;
  for (const auto& library : screen.libraries()) {
    known.insert(library.id);
  }
  {
    Progress progress(Progress::Output::nothing);
    const auto subscription = screen.importStatus.observe([&] {
      if (const auto& status = screen.importStatus()) {
        progress.show(status->message());
      }
    });
    headless.run(screen.performImport({line.operands.begin(), line.operands.end()}));
  }
  headless.run(screen.whenDerivedStateIsCurrent());
  Rows rows;
  for (const auto& library : screen.libraries()) {
    if (!known.contains(library.id)) {
      rows.push_back(row(library, screen));
    }
  }
  output.write(formatColumns(rows, output.isTerminal()));
  return 0;
}

int listLibraries(Output& output) {
  HeadlessScreen headless;
  const auto& screen = headless.screen();
  Rows rows;
  for (const auto& library : screen.libraries()) {
    rows.push_back(row(library, screen));
  }
  output.write(formatColumns(rows, output.isTerminal()));
  return 0;
}

int renameLibrary(const CommandLine& line) {
  HeadlessScreen headless;
  auto& screen = headless.screen();
  screen.requestRename(headless.importedLibrary(line.operands[0]));
  screen.renameDraft.set(line.operands[1]);
  headless.run(screen.commitRename());
  return 0;
}

int deleteLibrary(const CommandLine& line) {
  HeadlessScreen headless(HeadlessScreen::Search::with);
  auto& screen = headless.screen();
  Progress progress(Progress::Output::nothing);
  const auto subscription = screen.importStatus.observe([&] {
    if (const auto& status = screen.importStatus()) {
      progress.show(status->message());
    }
  });
  headless.run(screen.deleteLibrary(headless.importedLibrary(line.operands[0])));
  return 0;
}

}  // namespace tidewrack
