// tidewrackctl: the program without its window, for scripts and servers.

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

#include "cli/commands.h"
#include "platform/localized.h"

namespace {

using namespace tidewrack;
using Command = CommandLine::Command;

constexpr int wrongUsage = 2;

int run(const CommandLine& line, Output& output) {
  switch (line.command) {
    case Command::help:
      output.write(usageText());
      return EXIT_SUCCESS;
    case Command::version:
      output.write("tidewrackctl " TIDEWRACK_VERSION "\n");
      return EXIT_SUCCESS;
    case Command::parse:
      return parseArchives(line, output);
    case Command::import:
      return importArchives(line, output);
    case Command::libraries:
      return listLibraries(output);
    case Command::messages:
      return listMessages(line, output);
    case Command::classify:
      return classifyMessages(line, output);
    case Command::exportMessages:
      return exportMessages(line);
    case Command::show:
      return showMessage(line, output);
    case Command::html:
      return printDocument(line, output);
    case Command::rename:
      return renameLibrary(line);
    case Command::deleteLibrary:
      return deleteLibrary(line);
    case Command::tokenize:
      return tokenizeText(line, output);
  }
  return wrongUsage;
}

}  // namespace

void tidewrack::reportFailure(const std::string& description) {
  std::fprintf(stderr, "tidewrackctl: %s\n", description.c_str());
}

namespace {

/// Does what the command line asks for and gives the exit status.
int runProgram(const std::vector<std::string>& arguments) {
  Output output(STDOUT_FILENO);
  try {
    const auto line = parseCommandLine(arguments);
    const int status = run(line, output);
    output.flush();
    return status;
  } catch (const UsageFailure& failure) {
    reportFailure(failure.what());
    std::fputs(usageText().c_str(), stderr);
    return wrongUsage;
  } catch (const OutputClosed&) {
    return EXIT_FAILURE;
  } catch (const std::exception& failure) {
    try {
      output.flush();  // What was printed before the failure belongs to the reader.
    } catch (const std::exception&) {
      // The failure that is told next is the one that matters.
    }
    reportFailure(failure.what());
    return EXIT_FAILURE;
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  std::signal(SIGPIPE, SIG_IGN);  // NOLINT(cert-err33-c): a closed pipe is met when writing.
  const int status = runProgram({argv + 1, argv + argc});
  // A flow that still waits for background work that was dropped ends with the process.
  std::fflush(nullptr);
  std::_Exit(status);
}
