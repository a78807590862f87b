// The commands of quillmere-cli, grouped by what they work on.
#pragma once

#include <ostream>

#include "cli/cli_support.h"

namespace qm::cli {

void RegisterPuzzleCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterSolveCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterCollectionCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterExportCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterCreateCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterReasonCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterBookCommands(CLI::App& app, CommandList& commands, bool& json);
void RegisterShareCommands(CLI::App& app, CommandList& commands, bool& json);

// The model as `show` prints it, for people under a heading line, or as its JSON object.
Json ShownPuzzleJson(const PuzzleModel& model, int ordinal, const std::string& title);
void PrintShownPuzzle(std::ostream& out, const PuzzleModel& model, const std::string& heading,
                      const std::string& title);

// Parses the command line and runs one command; returns the exit status.
int RunCli(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

}  // namespace qm::cli
