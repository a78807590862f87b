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
#include "reasoning/explanation_json.h"
#include "reasoning/ladder.h"

namespace qm::cli {

namespace {

using reasoning::DigitMask;

using reasoning::CellJson;
using reasoning::DigitText;
using reasoning::GradeJson;
using reasoning::StepJson;

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

// Puzzles read ahead and graded together, one per core; the file is read once.
constexpr std::size_t kGradeBatch = 256;

// Grades the loaded puzzles of a batch, every core taking the next in turn.
void GradeBatch(std::vector<PuzzleModel>& models, std::vector<Graded>& graded, unsigned jobs) {
  std::atomic<std::size_t> next{0};
  auto work = [&] {
    for (std::size_t i = next++; i < graded.size(); i = next++) {
      if (graded[i].read) graded[i].result = reasoning::ExplainModel(models[i]);
    }
  };
  std::vector<std::thread> threads;
  for (unsigned j = 1; j < jobs && j < graded.size(); ++j) threads.emplace_back(work);
  work();
  for (std::thread& t : threads) t.join();
}

Json GradedJson(const Graded& g, const std::string& file) {
  if (!g.read) return {{"ordinal", g.ordinal}, {"error", Cp1252ToUtf8(ReadErrorMessage(g.ordinal, file))}};
  return {{"ordinal", g.ordinal},
          {"level", g.result.grade.level},
          {"name", g.result.grade.name},
          {"score", g.result.grade.score},
          {"solved", g.result.solved}};
}

// Prints the puzzles as they are graded: one JSON object whose "puzzles" list grows
// entry by entry, or one line each for people.
class GradePrinter {
 public:
  GradePrinter(Output& output, const std::string& file) : output_(output), file_(file) {
    if (output_.json) {
      std::string head = Json{{"file", file}}.dump(2, ' ', false, Json::error_handler_t::replace);
      head.pop_back();  // the closing brace
      while (!head.empty() && head.back() == '\n') head.pop_back();
      output_.out << head << ",\n  \"puzzles\": [";
    }
  }
  void Print(const Graded& g) {
    if (output_.json) {
      std::string entry = GradedJson(g, file_).dump(2, ' ', false, Json::error_handler_t::replace);
      std::string indented;
      for (char c : entry) {
        indented += c;
        if (c == '\n') indented += "    ";
      }
      output_.out << (first_ ? "\n    " : ",\n    ") << indented;
      first_ = false;
      return;
    }
    output_.out << g.ordinal << "  ";
    if (!g.read) {
      output_.out << "cannot be read\n";
      return;
    }
    output_.out << g.result.grade.name << " (level " << g.result.grade.level << "), score " << g.result.grade.score
                << ", " << (g.result.solved ? "solved by deduction" : g.result.broken ? "no solution" : "needs search")
                << '\n';
  }
  void Finish() {
    if (output_.json) output_.out << (first_ ? "]\n}\n" : "\n  ]\n}\n");
  }

 private:
  Output& output_;
  const std::string& file_;
  bool first_ = true;
};

// Grades the records of the range in one pass over the file. A range that reaches past
// the last record ends with the first ordinal that is not there, listed as unreadable.
int RunGrade(Output& output, const std::string& file, const std::string& rangeText, int jobOption) {
  const unsigned jobs = jobOption > 0 ? static_cast<unsigned>(jobOption)
                                      : std::max(1u, std::min(std::thread::hardware_concurrency(), 64u));
  const Range range = ParseRange(rangeText);
  const bool toTheEnd = rangeText.empty();
  if (const std::string why = UnreadableCollection(file, false); !why.empty()) return Fail(output, why, {{"file", file}});

  RecordStream stream(file);
  GradePrinter printer(output, file);
  std::vector<PuzzleModel> models;
  std::vector<Graded> graded;
  models.reserve(kGradeBatch);
  graded.reserve(kGradeBatch);
  auto flush = [&] {
    GradeBatch(models, graded, jobs);
    for (const Graded& g : graded) printer.Print(g);
    models.clear();
    graded.clear();
  };
  PuzzleModel skipped;
  ReadResult result;
  int reached = 0;
  while (toTheEnd || reached < range.last) {
    const bool inRange = stream.Ordinal() + 1 >= range.first;
    if (inRange && models.size() == kGradeBatch) flush();
    PuzzleModel& model = inRange ? models.emplace_back() : skipped;
    if (!stream.Next(model, inRange, result)) {
      if (inRange) models.pop_back();
      break;
    }
    reached = stream.Ordinal();
    if (inRange) graded.push_back({reached, !result.notFound, {}});
  }
  flush();
  if (!toTheEnd && reached < range.last) {
    const Graded missing{std::max(reached + 1, range.first), false, {}};
    printer.Print(missing);
  }
  printer.Finish();
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
  auto jobs = std::make_shared<int>(0);
  CLI::App* grade =
      AddCommand(app, commands, "grade", "Grade a range of the collection's puzzles with the ladder", json,
                 [file, range, jobs](Output& output) { return RunGrade(output, *file, *range, *jobs); });
  grade->add_option("FILE", *file, "Collection file")->required();
  grade->add_option("--range", *range, "Puzzles A-B (or one number); default all");
  grade->add_option("--jobs", *jobs, "Worker threads (default: one per core); the output is the same for any number")
      ->check(CLI::Range(1, 64));
}

}  // namespace qm::cli
