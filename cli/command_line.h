#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/message_selectors.h"
#include "export/export_utility.h"
#include "reading/html_document.h"

namespace tidewrack {

/// What the user asked of tidewrackctl.
struct CommandLine {
  enum class Command {
    help,
    version,
    parse,
    import,
    libraries,
    messages,
    classify,
    exportMessages,
    show,
    html,
    rename,
    deleteLibrary,
    tokenize
  };
  /// How messages are printed: columns, or one JSON object a line with the attachments' bytes or their
  /// digest, or nothing but their number.
  enum class Form { columns, json, digest, count };
  /// What of a message is shown.
  enum class Part { overview, text, html, attachments };

  Command command = Command::help;
  std::vector<std::string> operands;  ///< Files, or the id and the name, or a text.
  Form form = Form::columns;
  Part part = Part::overview;
  MessageSelectors selectors;                ///< Of the commands that work on a choice of messages.
  std::string attachmentsFolder;             ///< Set with Part::attachments.
  bool operandIsFile = false;                ///< Of the command html: a file in place of a message.
  std::optional<HTMLAppearance> appearance;  ///< Of the command html: always set.
  bool invertsContent = false;
  std::optional<ExportUtility::ExportFormat> exportFormat;  ///< Set with the command that exports.
  std::string exportFile;                                   ///< Likewise.
};

/// The arguments do not make sense; `what()` says why, in the user's language.
class UsageFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the arguments, without the program's own name. Throws UsageFailure.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// The text of --help.
std::string usageText();

}  // namespace tidewrack
