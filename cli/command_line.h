#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tidewrack {

/// What the user asked of tidewrackctl.
struct CommandLine {
  enum class Command { help, version, parse, import, libraries, messages, show, rename, deleteLibrary };
  /// How messages are printed: columns, or one JSON object a line with the attachments' bytes or their
  /// digest.
  enum class Form { columns, json, digest };
  /// What of a message is shown.
  enum class Part { overview, text, html, attachments };

  Command command = Command::help;
  std::vector<std::string> operands;  ///< Files, or the id and the name.
  Form form = Form::columns;
  Part part = Part::overview;
  std::optional<std::string> libraryID;  ///< Only the messages of this library.
  std::string attachmentsFolder;         ///< Set with Part::attachments.
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
