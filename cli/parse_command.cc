#include "cli/commands.h"
#include "cli/message_output.h"
#include "cli/progress.h"
#include "mail/mbox_importer.h"
#include "platform/localized.h"

namespace tidewrack {

int parseArchives(const CommandLine& line, Output& output) {
  int status = 0;
  Progress progress(Progress::Output::lines);
  long long count = 0;
  for (const auto& file : line.operands) {
    try {
      // No library is made, so the messages name none.
      MBOXImporter::forEachMessage(file, Text(), Text(), [&](const auto& message) {
        output.write(messageLine(*message, line.form));
        ++count;
        if (progress.isDue()) {
          progress.show(formatText(
              localized("ctl_parse_progress", "%@: %d messages", "tidewrackctl progress with file and count"),
              {file, count}));
        }
      });
      output.flush();
    } catch (const Failure& failure) {
      progress.clear();
      reportFailure(failure.what());
      status = 1;
    }
  }
  return status;
}

}  // namespace tidewrack
