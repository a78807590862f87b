// What every quillmere-cli command shares: the puzzle arguments (FILE, -n, --set),
// loading, the JSON and human outputs, and the exit codes.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "commands/headless_port.h"
#include "core/puzzle_model.h"

namespace qm::cli {

// Objects keep their keys in the order the commands document them.
using Json = nlohmann::ordered_json;

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

struct Output {
  std::ostream& out;
  std::ostream& err;
  bool json = false;
};

// A command's work, run after the command line has been parsed; returns the exit code.
using CommandRun = std::function<int(Output&)>;

using CommandList = std::vector<std::pair<CLI::App*, CommandRun>>;

// Adds a subcommand with the --json flag and records what runs it.
CLI::App* AddCommand(CLI::App& app, CommandList& commands,
                     const std::string& name, const std::string& description, bool& json,
                     CommandRun run);

struct PuzzleArgs {
  std::string file;
  int ordinal = 1;
  std::vector<std::string> sets;  // "K=TEXT"
};

// FILE, -n/--puzzle and, when `withSets`, the repeatable --set K=TEXT.
void AddPuzzleArgs(CLI::App& command, PuzzleArgs& args, bool withSets);

// A command-line fault found after parsing (such as a --set position past the grid).
struct UsageError {
  std::string message;
};

// Loads the puzzle as ReadPuzzle does and applies the --set edits. Returns false with
// the system's read error message when the record cannot be read; throws UsageError
// for a --set the loaded grid cannot take.
bool LoadFromArgs(PuzzleModel& model, HeadlessPort& port, const PuzzleArgs& args, std::string& error);

// A command's work on a loaded puzzle.
using PuzzleRun = std::function<int(Output&, const PuzzleArgs&, PuzzleModel&, HeadlessPort&)>;

// Adds a command that takes FILE, -n (and --set when `withSets`), loads the puzzle and
// then runs; a record that cannot be read fails with the system's message.
CLI::App* AddPuzzleCommand(CLI::App& app, CommandList& commands, const std::string& name,
                           const std::string& description, bool& json, bool withSets, PuzzleRun run);

// The one JSON object of a command's output. Bytes that are not UTF-8 (a file name
// given in another encoding) are printed as U+FFFD rather than failing.
void PrintJson(Output& output, const Json& object);

// Reports a failure: {"error": ...} plus the known fields with --json, the message on
// stderr otherwise. Returns kExitFailed.
int Fail(Output& output, const std::string& message, Json known = Json::object());

// Texts of the model (Windows-1252) as UTF-8 JSON strings.
Json TextsJson(const PuzzleModel& model, const PerPosition<std::string>& texts);
Json IntsJson(const PuzzleModel& model, const PerPosition<int>& values);

// The grid drawn for people: the shown texts and, beside them, the stored solution.
std::vector<std::string> DrawPuzzle(const PuzzleModel& model);
std::vector<std::string> DrawGrid(const PuzzleModel& model, const PerPosition<std::string>& texts);

// A --range of puzzles: "A-B" or one number, 1 <= A <= B; throws UsageError otherwise.
struct Range {
  int first = 1;
  int last = 0;  // 0: to the end of the file
};
Range ParseRange(const std::string& text);

}  // namespace qm::cli
