#include "cli/command_line.h"

#include <algorithm>
#include <array>
#include <limits>
#include <set>
#include <string_view>

#include "platform/localized.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

using Command = CommandLine::Command;
using Form = CommandLine::Form;
using Part = CommandLine::Part;

struct CommandDefinition {
  std::string_view name;
  Command command;
  std::size_t fewestOperands;
  std::size_t mostOperands;
};

constexpr auto anyNumber = std::numeric_limits<std::size_t>::max();
constexpr std::array commands = {CommandDefinition{"parse", Command::parse, 1, anyNumber},
                                 CommandDefinition{"import", Command::import, 1, anyNumber},
                                 CommandDefinition{"libraries", Command::libraries, 0, 0},
                                 CommandDefinition{"messages", Command::messages, 0, 0},
                                 CommandDefinition{"classify", Command::classify, 0, anyNumber},
                                 CommandDefinition{"export", Command::exportMessages, 0, 0},
                                 CommandDefinition{"show", Command::show, 1, 1},
                                 CommandDefinition{"html", Command::html, 1, 1},
                                 CommandDefinition{"rename", Command::rename, 2, 2},
                                 CommandDefinition{"delete", Command::deleteLibrary, 1, 1},
                                 CommandDefinition{"tokenize", Command::tokenize, 1, 1}};

UsageFailure unknownOption(const std::string& option) {
  return UsageFailure(formatText(
      localized("ctl_unknown_option", "Unknown option: %@", "tidewrackctl usage error"), {option}));
}

/// The arguments after the command, taken one by one.
class Reader {
 public:
  Reader(const std::vector<std::string>& arguments, CommandLine& result)
      : arguments_(arguments), result_(result) {}

  void read(std::size_t first) {
    bool optionsEnded = false;
    for (position_ = first; position_ < arguments_.size(); ++position_) {
      const auto& argument = arguments_[position_];
      if (optionsEnded || argument.size() < 2 || argument[0] != '-') {
        result_.operands.push_back(argument);
      } else if (argument == "--") {
        optionsEnded = true;
      } else {
        readOption(argument);
      }
    }
  }

 private:
  void readOption(const std::string& argument) {
    const auto equals = argument.find('=');
    const auto name = argument.substr(0, equals);
    const auto command = result_.command;
    const bool listsMessages = command == Command::messages;
    const bool isExport = command == Command::exportMessages;
    const bool takesSelectors = listsMessages || isExport;
    if (name == "--digest" && equals == std::string::npos && (listsMessages || command == Command::parse)) {
      setOnce(result_.form, Form::digest, Form::columns);
    } else if (name == "--json" && equals == std::string::npos && listsMessages) {
      setOnce(result_.form, Form::json, Form::columns);
    } else if (name == "--count" && equals == std::string::npos && listsMessages) {
      setOnce(result_.form, Form::count, Form::columns);
    } else if (const auto* selector = takesSelectors ? findSelectorOption(name) : nullptr;
               selector && (selector->takesValue || equals == std::string::npos)) {
      if (!selector->isRepeatable && !selectorsGiven_.insert(selector->name).second) {
        throw excludingOptions();
      }
      selector->enter(result_.selectors, selector->takesValue ? value(argument, equals) : std::string());
    } else if (name == "--format" && isExport) {
      result_.exportFormat = format(value(argument, equals));
    } else if (name == "--output" && isExport) {
      result_.exportFile = value(argument, equals);
    } else if (name == "--text" && equals == std::string::npos && command == Command::show) {
      setOnce(result_.part, Part::text, Part::overview);
    } else if (name == "--html" && equals == std::string::npos && command == Command::show) {
      setOnce(result_.part, Part::html, Part::overview);
    } else if (name == "--attachments" && command == Command::show) {
      setOnce(result_.part, Part::attachments, Part::overview);
      result_.attachmentsFolder = value(argument, equals);
    } else if (name == "--file" && command == Command::html) {
      result_.operandIsFile = true;
      result_.operands.push_back(value(argument, equals));
    } else if (name == "--appearance" && command == Command::html) {
      setOnce(result_.appearance, std::optional(appearance(value(argument, equals))), {});
    } else if (name == "--invert" && equals == std::string::npos && command == Command::html) {
      result_.invertsContent = true;
    } else {
      throw unknownOption(argument);
    }
  }

  static HTMLAppearance appearance(const std::string& name) {
    for (const auto candidate : {HTMLAppearance::light, HTMLAppearance::dark}) {
      if (name == rawValue(candidate)) {
        return candidate;
      }
    }
    throw UsageFailure(formatText(
        localized("ctl_unknown_appearance", "Unknown appearance: %@", "tidewrackctl usage error"), {name}));
  }

  static ExportUtility::ExportFormat format(const std::string& name) {
    const auto known = ExportUtility::formatFromExtension(name);
    if (!known) {
      throw UsageFailure(formatText(localized("ctl_unknown_format",
                                              "Unknown format: %@. The formats are txt, html, json, csv and "
                                              "mbox.",
                                              "tidewrackctl usage error"),
                                    {name}));
    }
    return *known;
  }

  // Two options that exclude each other are an error rather than a silent choice.
  template <typename Choice>
  void setOnce(Choice& choice, Choice chosen, Choice none) {
    if (choice != none && choice != chosen) {
      throw excludingOptions();
    }
    choice = chosen;
  }

  static UsageFailure excludingOptions() {
    return UsageFailure(
        localized("ctl_options_exclude", "These options exclude each other.", "tidewrackctl usage error"));
  }

  std::string value(const std::string& argument, std::size_t equals) {
    auto text = equals != std::string::npos         ? argument.substr(equals + 1)
                : position_ + 1 < arguments_.size() ? arguments_[++position_]
                                                    : std::string();
    if (text.empty()) {
      throw UsageFailure(formatText(
          localized("ctl_option_needs_value", "The option %@ needs a value.", "tidewrackctl usage error"),
          {argument.substr(0, equals)}));
    }
    return text;
  }

  const std::vector<std::string>& arguments_;
  std::set<std::string_view> selectorsGiven_;  // Those that can be given only once.
  CommandLine& result_;
  std::size_t position_ = 0;
};

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  const auto optionsEnd = std::find(arguments.begin(), arguments.end(), "--");
  if (std::find(arguments.begin(), optionsEnd, "--help") != optionsEnd) {
    return result;
  }
  if (arguments.empty()) {
    throw UsageFailure(localized("ctl_no_command", "A command is missing.", "tidewrackctl usage error"));
  }
  if (arguments == std::vector<std::string>{"--version"}) {
    result.command = Command::version;
    return result;
  }
  const auto definition =
      std::find_if(commands.begin(), commands.end(),
                   [&](const CommandDefinition& candidate) { return candidate.name == arguments[0]; });
  if (definition == commands.end()) {
    throw UsageFailure(formatText(
        localized("ctl_unknown_command", "Unknown command: %@", "tidewrackctl usage error"), {arguments[0]}));
  }
  result.command = definition->command;
  Reader(arguments, result).read(1);
  if (result.operands.size() < definition->fewestOperands ||
      result.operands.size() > definition->mostOperands) {
    throw UsageFailure(formatText(
        localized("ctl_wrong_operands", "Wrong number of arguments for \"%@\".", "tidewrackctl usage error"),
        {arguments[0]}));
  }
  if (result.command == Command::html && !result.appearance) {
    throw UsageFailure(
        formatText(localized("ctl_option_missing", "The option %@ is missing.", "tidewrackctl usage error"),
                   {std::string("--appearance")}));
  }
  if (result.command == Command::exportMessages && (!result.exportFormat || result.exportFile.empty())) {
    throw UsageFailure(localized("ctl_export_needs_options",
                                 "An export needs the options --format and --output.",
                                 "tidewrackctl usage error"));
  }
  if (result.command == Command::rename && trimWhitespaceAndNewlines(result.operands[1]).empty()) {
    throw UsageFailure(localized("ctl_empty_name", "A library needs a name.", "tidewrackctl usage error"));
  }
  return result;
}

std::string usageText() {
  return R"(Usage: tidewrackctl COMMAND [ARGUMENT...]

Commands:
  parse [--digest] FILE...       print the messages of mail archives, one JSON object a line,
                                 without storing anything
  import FILE...                 make a library of each mail archive and print it as "libraries" does
  libraries                      list the libraries: id, name, messages, import time, stored file
  messages [SELECTOR...] [--json | --digest | --count]
                                 list the messages, newest first: id, date, sender, subject;
                                 or one JSON object a line; or only their number
  classify [FILE...]             count mailboxes, tabs and labels, of mail archives or else of all
                                 stored messages, as one JSON object
  export --format FORMAT --output FILE [SELECTOR...]
                                 write the messages into a file as txt, html, json, csv or mbox
  show ID [--text | --html | --attachments FOLDER]
                                 show a message, only its text or HTML body, or save its
                                 attachments into a folder
  html ID|--file FILE --appearance light|dark [--invert]
                                 print the document that the window would show of an HTML body
                                 or file, and on standard error what it says of its own
                                 appearance: light, dark or none
  rename ID NAME                 give a library a new name
  delete ID                      delete a library with its messages
  tokenize TEXT                  print the words under which a text is found, one a line

Selectors (a message is chosen when it passes all that are given; the first five can be given
several times):
  --library ID                   the messages of one library
  --mailbox NAME                 inbox, starred, important, sent, drafts, scheduled, archived, spam
                                 or trash, or a name that mail providers have for one of them
  --gmail-category NAME          personal, updates, promotions, social or forums, likewise
  --label PATH                   a label of the user's own, and all below it: Work or Work/Done
  --category NAME                a category of the on-device model
  --search TEXT                  every word of the text is in the message
  --subject TEXT, --from TEXT    the text is in the subject or the sender, without regard to case
  --body TEXT                    the text is in the plain text or in the HTML source
  --since DATE, --until DATE     2026-05-14 or 2026-05-14T10:00:00Z, both inclusive, in UTC;
                                 messages without a date pass
  --attachments any|with|without
  --attachment-type TEXT         with "--attachments with": in a file name or MIME type
  --in-conversations             messages that belong to a conversation
  --html-only                    messages with an HTML body
  --size any|small|medium|large  bytes of all attachments: below 10 KB, up to 100 KB, above

Options:
  --digest                       print size and SHA-256 of attachments in place of their bytes
  --help                         print this text
  --version                      print the version

Lists are aligned on a terminal and separated by tabs in a pipe. The exit status is 0 for success,
1 for a failure and 2 for wrong usage.
)";
}

}  // namespace tidewrack
