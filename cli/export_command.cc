#include "cli/commands.h"
#include "cli/headless_screen.h"
#include "cli/progress.h"
#include "export/export_file.h"
#include "platform/localized.h"

namespace tidewrack {

int exportMessages(const CommandLine& line) {
  const auto format = *line.exportFormat;
  HeadlessScreen headless(needsSearch(line.selectors) ? HeadlessScreen::Search::with
                                                      : HeadlessScreen::Search::without);
  const MessageList messages = selectMessages(headless, line.selectors);
  Progress progress(Progress::Output::nothing);
  const auto report = [&](std::size_t done) {
    if (progress.isDue()) {
      progress.show(formatText(
          localized("ctl_export_progress", "%d of %d messages", "tidewrackctl progress with two counts"),
          {static_cast<long long>(done), static_cast<long long>(messages.size())}));
    }
  };
  try {
    exportToFile(messages, format, line.exportFile, headless.screen().services().executor.now(), report);
  } catch (const FileFailure& failure) {
    throw ExportUtility::ExportError(ExportUtility::ExportError::Kind::writeFailed, failure.what());
  }
  return 0;
}

}  // namespace tidewrack
