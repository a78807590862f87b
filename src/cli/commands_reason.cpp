// explain and grade: the technique ladder on one puzzle, step by step, and the grades
// of a range of a collection's puzzles.
#include <algorithm>
#include <atomic>
#include <charconv>
#include <thread>

#include "cli/cli_support.h"
#include "cli/commands.h"
#include "core/collection_file.h"
#include "core/text_rules.h"
#include "reasoning/ladder.h"

namespace qm::cli {

namespace {

using reasoning::DigitMask;

Json CellJson(int n, int cell) { return Json::array({cell / n + 1, cell % n + 1}); }

std::string DigitText(DigitMask m) {
  std::string text;
  masks::ForEachDigit(m, [&](int d) { text += static_cast<char>('0' + d); });
  return text;
}

Json GradeJson(const reasoning::Grade& grade) {
  return {{"level", grade.level}, {"name", grade.name}, {"score", grade.score}};
}

Json StepJson(int n, const reasoning::Step& step) {
  Json cells = Json::array();
  for (int c : step.cells) cells.push_back(CellJson(n, c));
  Json placed = Json::array();
  for (const auto& [c, d] : step.placed) placed.push_back({{"cell", CellJson(n, c)}, {"digit", d}});
  Json removed = Json::array();
  for (const auto& [c, m] : step.removed) removed.push_back({{"cell", CellJson(n, c)}, {"digits", DigitText(m)}});
  return {{"technique", step.technique}, {"level", step.level}, {"text", step.text},
          {"cells", cells},             {"placed", placed},     {"removed", removed}};
}

int RunExplain(Output& output, PuzzleModel& model) {
  const reasoning::Explanation result = reasoning::ExplainModel(model);
  PuzzleModel end = model;
  reasoning::StoreGrid(result.final, end);
  const int n = model.GridSize;
  if (output.json) {
    Json steps = Json::array();
    for (const reasoning::Step& step : result.steps) steps.push_back(StepJson(n, step));
    PrintJson(output, Json{{"solved", result.solved},
                           {"needs_search", result.needsSearch},
                           {"grade", GradeJson(result.grade)},
                           {"steps", steps},
                           {"positions", TextsJson(end, end.PosText)},
                           {"broken", result.broken}});
    return kExitOk;
  }
  for (std::size_t i = 0; i < result.steps.size(); ++i) {
    output.out << i + 1 << ". " << result.steps[i].technique << ": " << result.steps[i].text << '\n';
  }
  if (!result.steps.empty()) output.out << '\n';
  if (result.broken) {
    output.out << "The grid contradicts itself: it has no solution.\n";
  } else if (result.needsSearch) {
    output.out << "The techniques stop here; a search finishes the grid.\n";
  }
  output.out << "Grade: " << result.grade.name << " (level " << result.grade.level << ", score " << result.grade.score
             << ")\n\n";
  for (const std::string& line : DrawGrid(end, end.PosText)) output.out << (line.empty() ? "" : "  ") << line << '\n';
  return kExitOk;
}

struct Graded {
  int ordinal = 0;
  bool read = false;
  reasoning::Explanation result;
};

int RunGrade(Output& output, const std::string& file, const std::string& rangeText) {
  Range range = ParseRange(rangeText);
  if (rangeText.empty()) range.last = CountPuzzles(file);
  std::vector<Graded> graded(static_cast<std::size_t>(std::max(0, range.last - range.first + 1)));
  std::atomic<std::size_t> next{0};
  // Every core takes the next puzzle in turn; each worker reads with a model of its own.
  auto work = [&] {
    PuzzleModel model;
    for (std::size_t i = next++; i < graded.size(); i = next++) {
      Graded& g = graded[i];
      g.ordinal = range.first + static_cast<int>(i);
      g.read = !LoadPuzzle(model, file, g.ordinal).notFound;
      if (g.read) g.result = reasoning::ExplainModel(model);
    }
  };
  const unsigned jobs = std::max(1u, std::min(std::thread::hardware_concurrency(), 64u));
  std::vector<std::thread> threads;
  for (unsigned j = 1; j < jobs && j < graded.size(); ++j) threads.emplace_back(work);
  work();
  for (std::thread& t : threads) t.join();

  Json puzzles = Json::array();
  for (const Graded& g : graded) {
    if (!g.read) {
      puzzles.push_back({{"ordinal", g.ordinal}, {"error", Cp1252ToUtf8(ReadErrorMessage(g.ordinal, file))}});
      continue;
    }
    puzzles.push_back({{"ordinal", g.ordinal},
                       {"level", g.result.grade.level},
                       {"name", g.result.grade.name},
                       {"score", g.result.grade.score},
                       {"solved", g.result.solved}});
  }
  if (output.json) {
    PrintJson(output, Json{{"file", file}, {"puzzles", puzzles}});
    return kExitOk;
  }
  for (const Graded& g : graded) {
    output.out << g.ordinal << "  ";
    if (!g.read) {
      output.out << "cannot be read\n";
      continue;
    }
    output.out << g.result.grade.name << " (level " << g.result.grade.level << "), score " << g.result.grade.score
               << ", " << (g.result.solved ? "solved by deduction" : g.result.broken ? "no solution" : "needs search")
               << '\n';
  }
  return kExitOk;
}

}  // namespace

void RegisterReasonCommands(CLI::App& app, CommandList& commands, bool& json) {
  AddPuzzleCommand(app, commands, "explain",
                   "Explain the loaded puzzle step by step with the technique ladder, and grade it", json, true,
                   [](Output& output, const PuzzleArgs&, PuzzleModel& model, HeadlessPort&) {
                     return RunExplain(output, model);
                   });

  auto file = std::make_shared<std::string>();
  auto range = std::make_shared<std::string>();
  CLI::App* grade = AddCommand(app, commands, "grade", "Grade a range of the collection's puzzles with the ladder",
                               json, [file, range](Output& output) { return RunGrade(output, *file, *range); });
  grade->add_option("FILE", *file, "Collection file")->required();
  grade->add_option("--range", *range, "Puzzles A-B (or one number); default all");
}

}  // namespace qm::cli
