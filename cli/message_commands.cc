#include "cli/attachment_files.h"
#include "cli/commands.h"
#include "cli/headless_screen.h"
#include "cli/message_output.h"
#include "platform/localized.h"

namespace tidewrack {
namespace {

using Form = CommandLine::Form;
using Part = CommandLine::Part;

void writeText(const std::string& text, Output& output) {
  output.write(output.isTerminal() ? terminalSafe(text) : text);
}

}  // namespace

int listMessages(const CommandLine& line, Output& output) {
  HeadlessScreen headless(needsSearch(line.selectors) ? HeadlessScreen::Search::with
                                                      : HeadlessScreen::Search::without);
  const MessageList messages = selectMessages(headless, line.selectors);
  if (line.form == Form::count) {
    output.write(std::to_string(messages.size()) + '\n');
    return 0;
  }
  if (line.form != Form::columns) {
    for (const auto& message : messages) {
      output.write(messageLine(*message, line.form));
    }
    return 0;
  }
  std::vector<std::vector<std::string>> rows;
  for (const auto& message : messages) {
    rows.push_back({message->id.string(), dateText(message->date), displayForm(message->from),
                    message->subject.string()});
  }
  output.write(formatColumns(rows, output.isTerminal()));
  return 0;
}

int showMessage(const CommandLine& line, Output& output) {
  HeadlessScreen headless;
  const auto message = headless.message(line.operands[0]);
  switch (line.part) {
    case Part::overview:
      writeText(overview(*message), output);
      break;
    case Part::text:
      writeText(bodyText(*message), output);
      break;
    case Part::html:
      if (!message->htmlBody) {
        throw Failure(
            localized("ctl_no_html", "The message has no HTML body.", "tidewrackctl error of show --html"));
      }
      writeText(message->htmlBody->bytes(), output);
      break;
    case Part::attachments:
      for (const auto& file : saveAttachments(*message, line.attachmentsFolder)) {
        output.write(file.string() + '\n');
      }
      break;
  }
  return 0;
}

}  // namespace tidewrack
