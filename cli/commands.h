#pragma once

#include "cli/command_line.h"
#include "cli/output.h"

namespace tidewrack {

/// The commands of tidewrackctl. Each prints its result to `output` and gives the exit status; a Failure
/// that ends the whole command is thrown.

int parseArchives(const CommandLine& line, Output& output);
int importArchives(const CommandLine& line, Output& output);
int listLibraries(Output& output);
int listMessages(const CommandLine& line, Output& output);
int classifyMessages(const CommandLine& line, Output& output);
int exportMessages(const CommandLine& line);
int showMessage(const CommandLine& line, Output& output);
int printDocument(const CommandLine& line, Output& output);
int renameLibrary(const CommandLine& line);
int deleteLibrary(const CommandLine& line);
int tokenizeText(const CommandLine& line, Output& output);

/// A sentence on standard error, behind the program's name.
void reportFailure(const std::string& description);

}  // namespace tidewrack
