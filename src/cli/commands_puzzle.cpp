// count, show and check: reading a collection file and judging a grid.
#include <memory>

#include "cli/cli_support.h"
#include "cli/commands.h"
#include "core/collection_file.h"
#include "core/rule_checks.h"
#include "core/text_rules.h"

namespace qm::cli {

namespace {

void PrintIndented(std::ostream& out, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) out << (line.empty() ? "" : "  ") << line << '\n';
}

int RunCount(Output& output, const std::string& file) {
  // A missing file holds no puzzles; a folder, FIFO or device is no collection at all.
  if (const std::string why = UnreadableCollection(file, true); !why.empty()) return Fail(output, why, {{"file", file}});
  const int count = CountPuzzles(file);
  // Records numbered #0 or below are not counted but are read, shown and graded:
  // "records" says how many there are in all where that is more.
  const int records = CountRecords(file);
  if (output.json) {
    Json counted{{"file", file}, {"count", count}};
    if (records != count) counted["records"] = records;
    PrintJson(output, counted);
  } else {
    output.out << count << (count == 1 ? " puzzle in " : " puzzles in ") << file << '\n';
    if (records != count) {
      output.out << records << " records in all: " << records - count
                 << (records - count == 1 ? " is" : " are") << " numbered 0 or below (or not numbered) and not counted\n";
    }
  }
  return kExitOk;
}

int RunShow(Output& output, const PuzzleArgs& args, PuzzleModel& model, HeadlessPort&) {
  const std::string title = "#" + std::to_string(model.RecordNumber) + " " + model.Comment;
  if (output.json) {
    PrintJson(output, ShownPuzzleJson(model, args.ordinal, title));
  } else {
    PrintShownPuzzle(output.out, model,
                     "Puzzle " + std::to_string(args.ordinal) + " of " + std::to_string(CountRecords(args.file)) + " in " + args.file,
                     title);
  }
  return kExitOk;
}

int RunCheck(Output& output, const PuzzleArgs&, PuzzleModel& model, HeadlessPort&) {
  const CheckResult extremes = CheckExtremes(model);
  const CheckResult grid = CheckGrid(model);
  const VerifyOutcome verify = VerifyGrid(model);
  if (output.json) {
    const Json result = {
        {"extremes", {{"result", extremes.result}, {"message", extremes.message}}},
        {"grid", {{"result", grid.result}, {"message", grid.message}}},
        {"verify", verify.text},
    };
    PrintJson(output, result);
    return kExitOk;
  }
  PrintIndented(output.out, DrawGrid(model, model.PosText));
  output.out << '\n';
  output.out << "Extremes: " << extremes.result
             << (extremes.message.empty() ? "" : "  " + extremes.message) << '\n';
  output.out << "Grid:     " << grid.result << (grid.message.empty() ? "" : "  " + grid.message) << '\n';
  output.out << "Verify:   " << verify.text << '\n';
  return kExitOk;
}

}  // namespace

Json ShownPuzzleJson(const PuzzleModel& model, int ordinal, const std::string& title) {
  return {
      {"ordinal", ordinal},
      {"number", model.RecordNumber},
      {"title", Cp1252ToUtf8(title)},
      {"comment", Cp1252ToUtf8(model.Comment)},
      {"size", model.GridSize},
      {"signs", model.ConstraintCount},
      {"clues", model.ClueCount},
      {"puzzle_count", model.PuzzleCount},
      {"positions", TextsJson(model, model.PosText)},
      {"given", IntsJson(model, model.GivenValue)},
      {"solution", TextsJson(model, model.SolutionText)},
  };
}

void PrintShownPuzzle(std::ostream& out, const PuzzleModel& model, const std::string& heading,
                      const std::string& title) {
  out << heading << '\n'
      << Cp1252ToUtf8(title) << '\n'
      << "Size " << model.GridSize << "x" << model.GridSize << ", " << model.ConstraintCount << " signs, "
      << model.ClueCount << " clues\n\n";
  PrintIndented(out, DrawPuzzle(model));
}

void RegisterPuzzleCommands(CLI::App& app, CommandList& commands, bool& json) {
  auto countFile = std::make_shared<std::string>();
  CLI::App* count = AddCommand(app, commands, "count", "Count the puzzles of a collection file", json,
                               [countFile](Output& output) { return RunCount(output, *countFile); });
  count->add_option("FILE", *countFile, "Collection file")->required();

  AddPuzzleCommand(app, commands, "show", "Load a puzzle and print it", json, false, RunShow);
  AddPuzzleCommand(app, commands, "check", "Run the rule checks on a loaded (and edited) grid", json, true,
                   RunCheck);
}

}  // namespace qm::cli
