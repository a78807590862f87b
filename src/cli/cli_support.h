// What every quillmere-cli command shares: the puzzle arguments (FILE, -n, --set),
// loading, the JSON and human outputs, and the exit codes.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <nlohmann/json.hpp>
#include <ostream>
#include <memory>
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

// A subcommand whose options fill an arguments struct of its own, which `run` is handed
// once the command line is parsed.
template <class Args>
struct ArgsCommand {
  CLI::App* command;
  std::shared_ptr<Args> args;
};
template <class Args>
ArgsCommand<Args> AddArgsCommand(CLI::App& app, CommandList& commands, const std::string& name,
                                 const std::string& description, bool& json, int (*run)(Output&, const Args&)) {
  auto args = std::make_shared<Args>();
  CLI::App* command = AddCommand(app, commands, name, description, json,
                                 [args, run](Output& output) { return run(output, *args); });
  return {command, args};
}

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

// Why a collection file cannot be read ("Cannot read collection file: FILE (it is a
// folder)"); empty when it can, and for a missing file when `missingIsEmpty`.
std::string UnreadableCollection(const std::string& file, bool missingIsEmpty);

// A seed: a whole number 0..18446744073709551615. A larger one is refused rather than
// clamped: two different seeds must never make the same run.
CLI::Validator SeedCheck();
// A number that must be finite (not nan or inf) and within [low, high].
CLI::Validator FiniteRange(double low, double high);

// A --range of puzzles: "A-B" or one number, 1 <= A <= B; throws UsageError otherwise.
struct Range {
  int first = 1;
  int last = 0;  // 0: to the end of the file
};
Range ParseRange(const std::string& text);

}  // namespace qm::cli
