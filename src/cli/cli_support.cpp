#include "cli/cli_support.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <limits>

#include <algorithm>
#include <memory>

#include "commands/record_commands.h"
#include "core/collection_file.h"
#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm::cli {

namespace {

// "K=TEXT" with K a position index 0..290; TEXT may be empty.
std::string CheckSetArgument(const std::string& value) {
  const auto equals = value.find('=');
  if (equals == std::string::npos || equals == 0) return "expected K=TEXT, got \"" + value + "\"";
  const std::string key = value.substr(0, equals);
  if (!std::all_of(key.begin(), key.end(), [](char c) { return c >= '0' && c <= '9'; }) ||
      key.size() > 3 || std::stoi(key) >= kPositionCount) {
    return "position must be a number 0.." + std::to_string(kPositionCount - 1) + ", got \"" + key + "\"";
  }
  return {};
}

std::string Padded(const std::string& text, std::size_t width) {
  std::string out = text;
  const std::size_t missing = width > text.size() ? width - text.size() : 0;
  out.insert(0, missing / 2, ' ');
  out.append(missing - missing / 2, ' ');
  return out;
}

}  // namespace

CLI::App* AddCommand(CLI::App& app, CommandList& commands,
                     const std::string& name, const std::string& description, bool& json,
                     CommandRun run) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_flag("--json", json, "Print one JSON object on stdout");
  commands.emplace_back(command, std::move(run));
  return command;
}

void AddPuzzleArgs(CLI::App& command, PuzzleArgs& args, bool withSets) {
  command.add_option("FILE", args.file, "Collection file")->required();
  command.add_option("-n,--puzzle", args.ordinal, "1-based ordinal of the record in the file (default 1)")
      ->check(CLI::Range(1, std::numeric_limits<int>::max()));
  if (withSets) {
    command.add_option("--set", args.sets, "Set the shown text of position K after loading (repeatable)")
        ->type_name("K=TEXT")
        ->allow_extra_args(false)
        ->check(CheckSetArgument);
  }
}

bool LoadFromArgs(PuzzleModel& model, HeadlessPort& port, const PuzzleArgs& args, std::string& error) {
  if (ReadPuzzle(model, port, args.file, args.ordinal).notFound) {
    error = ReadErrorMessage(args.ordinal, args.file);
    return false;
  }
  for (const std::string& set : args.sets) {
    const auto equals = set.find('=');
    const int k = std::stoi(set.substr(0, equals));
    if (k > model.LastPosition) {
      throw UsageError{"--set: position " + std::to_string(k) + " is outside 0.." +
                       std::to_string(model.LastPosition) + " of this " + std::to_string(model.GridSize) +
                       "x" + std::to_string(model.GridSize) + " puzzle"};
    }
    model.PosText[k] = Utf8ToCp1252(set.substr(equals + 1));
    model.Modified = -1;
  }
  return true;
}

CLI::App* AddPuzzleCommand(CLI::App& app, CommandList& commands, const std::string& name,
                           const std::string& description, bool& json, bool withSets, PuzzleRun run) {
  auto args = std::make_shared<PuzzleArgs>();
  CLI::App* command = AddCommand(app, commands, name, description, json, [args, run](Output& output) {
    PuzzleModel model;
    HeadlessPort port;
    std::string error;
    if (!LoadFromArgs(model, port, *args, error)) return Fail(output, error, {{"ordinal", args->ordinal}});
    return run(output, *args, model, port);
  });
  AddPuzzleArgs(*command, *args, withSets);
  return command;
}

void PrintJson(Output& output, const Json& object) {
  output.out << object.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

int Fail(Output& output, const std::string& message, Json known) {
  if (output.json) {
    known["error"] = message;
    PrintJson(output, known);
  } else {
    output.err << message << '\n';
    // A note says why, where the system's own message cannot.
    if (known.contains("note")) output.err << known["note"].get<std::string>() << '\n';
  }
  return kExitFailed;
}

Json TextsJson(const PuzzleModel& model, const PerPosition<std::string>& texts) {
  Json list = Json::array();
  for (int k = 0; k <= model.LastPosition; ++k) list.push_back(Cp1252ToUtf8(texts[k]));
  return list;
}

Json IntsJson(const PuzzleModel& model, const PerPosition<int>& values) {
  Json list = Json::array();
  for (int k = 0; k <= model.LastPosition; ++k) list.push_back(values[k]);
  return list;
}

std::vector<std::string> DrawGrid(const PuzzleModel& model, const PerPosition<std::string>& texts) {
  const int l = model.LayoutExtent;
  std::size_t width = 1;
  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      width = std::max(width, Cp1252ToUtf8(texts[model.PositionOf[row][col]]).size());
    }
  }
  std::vector<std::string> lines;
  for (int row = 1; row <= l; ++row) {
    std::string line;
    for (int col = 1; col <= l; ++col) {
      const int k = model.PositionOf[row][col];
      std::string text = Cp1252ToUtf8(texts[k]);
      const bool cellColumn = col % 2 == 1;
      // "." marks an unknown value in a stored solution; between cells it is just a gap.
      const bool cell = KindOf(model, k) == PositionKind::Cell;
      if (cell && text.empty()) text = ".";
      if (!cell && text == ".") text.clear();
      if (col > 1) line += ' ';
      line += cellColumn ? Padded(text, width) : Padded(text, 1);
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> DrawPuzzle(const PuzzleModel& model) {
  const auto puzzle = DrawGrid(model, model.PosText);
  const auto solution = DrawGrid(model, model.SolutionText);
  std::size_t width = std::string("Puzzle").size();
  for (const auto& line : puzzle) width = std::max(width, line.size());
  std::vector<std::string> lines;
  lines.push_back("Puzzle" + std::string(width - 6, ' ') + "    Solution");
  for (std::size_t i = 0; i < puzzle.size(); ++i) {
    std::string line = puzzle[i] + std::string(width - puzzle[i].size(), ' ') + "    " + solution[i];
    while (!line.empty() && line.back() == ' ') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

std::string UnreadableCollection(const std::string& file, bool missingIsEmpty) {
  std::error_code ec;
  const auto status = std::filesystem::status(file, ec);
  const std::string cannot = "Cannot read collection file: " + file;
  if (!std::filesystem::exists(status)) return missingIsEmpty ? "" : cannot + " (it does not exist)";
  if (std::filesystem::is_directory(status)) return cannot + " (it is a folder)";
  if (!std::filesystem::is_regular_file(status)) return cannot + " (it is not a regular file)";
  if (!LineReader(file).IsOpen()) return cannot;
  return {};
}

CLI::Validator SeedCheck() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        std::uint64_t value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (text.empty() || error != std::errc{} || end != text.data() + text.size()) {
          return "a seed must be a whole number 0.." + std::to_string(std::numeric_limits<std::uint64_t>::max()) +
                 ", got " + text;
        }
        return {};
      },
      "SEED");
}

CLI::Validator FiniteRange(double low, double high) {
  return CLI::Validator(
      [low, high](std::string& text) -> std::string {
        char* end = nullptr;
        const double value = std::strtod(text.c_str(), &end);
        if (text.empty() || *end != 0 || !std::isfinite(value) || value < low || value > high) {
          std::ostringstream range;
          range << low << ".." << high;
          return "must be a number " + range.str() + ", got " + text;
        }
        return {};
      },
      "NUMBER");
}

Range ParseRange(const std::string& text) {
  Range range;
  if (text.empty()) return range;
  const auto dash = text.find('-');
  auto number = [&](std::string_view part) {
    int value = 0;
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), value);
    if (error != std::errc{} || end != part.data() + part.size() || value < 1) {
      throw UsageError{"--range must be A-B with 1 <= A <= B, got " + text};
    }
    return value;
  };
  const std::string_view all(text);
  range.first = number(dash == std::string::npos ? all : all.substr(0, dash));
  range.last = dash == std::string::npos ? range.first : number(all.substr(dash + 1));
  if (range.last < range.first) throw UsageError{"--range must be A-B with 1 <= A <= B, got " + text};
  return range;
}

}  // namespace qm::cli
