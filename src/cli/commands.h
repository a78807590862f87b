// The commands of quillmere-cli, grouped by what they work on.
#pragma once

#include <ostream>

#include "cli/cli_support.h"

namespace qm::cli {

void RegisterPuzzleCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterSolveCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterCollectionCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterExportCommands(CLI::App& app, CommandList& commands, bool& json);

// Parses the command line and runs one command; returns the exit status.
int RunCli(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

}  // namespace qm::cli
