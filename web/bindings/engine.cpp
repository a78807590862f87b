// The engine as the web page sees it: one puzzle at a time, loaded from a collection
// file in the module's memory or from a share code; the page keeps the player's digits
// and marks and hands them in with every question. Answers are JSON texts (UTF-8) with
// the same fields as quillmere-cli's.
#include <emscripten/bind.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "commands/solution_path.h"
#include "core/collection_file.h"
#include "core/share_code.h"
#include "core/text_rules.h"
#include "reasoning/explanation_json.h"
#include "reasoning/ladder.h"
#include "solver/grid_masks.h"
#include "solver/solution_search.h"
#include "web_create.h"

namespace qm::web {

namespace {

using Json = nlohmann::ordered_json;

// The puzzle as loaded: clues and signs, the stored solution, the record's comment.
PuzzleModel g_puzzle;
bool g_loaded = false;
// The search's count of the loaded puzzle's solutions, made once for every Check.
std::optional<SolutionCount> g_answer;

std::string Error(const std::string& message) { return Json{{"error", message}}.dump(); }

Json Texts(const PuzzleModel& model, const PerPosition<std::string>& texts) {
  Json list = Json::array();
  for (int k = 0; k <= model.LastPosition; ++k) list.push_back(Cp1252ToUtf8(texts[k]));
  return list;
}

Json PuzzleJson(const PuzzleModel& model) {
  Json given = Json::array();
  for (int k = 0; k <= model.LastPosition; ++k) given.push_back(model.GivenValue[k]);
  return {{"size", model.GridSize},
          {"number", model.RecordNumber},
          {"comment", Cp1252ToUtf8(model.Comment)},
          {"count", model.PuzzleCount},
          {"code", EncodeShareCode(model)},
          {"positions", Texts(model, model.PosText)},
          {"given", given},
          {"solution", Texts(model, model.SolutionText)}};
}

// The loaded puzzle with the player's digits and marks: `cells` holds N*N characters,
// row by row, a digit or "." (or "0"); `marks` the same number of entries joined by ","
// of marked digits ("" for none). A player's digit is entered the way a user's edit
// leaves the grid: shown, with the clue value unchanged.
PuzzleModel Played(const std::string& cells, const std::string& marks = {}) {
  PuzzleModel model = g_puzzle;
  const int n = model.GridSize;
  std::vector<std::string> markList;
  if (!marks.empty()) {
    std::size_t from = 0;
    for (;;) {
      const std::size_t comma = marks.find(',', from);
      markList.push_back(marks.substr(from, comma == std::string::npos ? std::string::npos : comma - from));
      if (comma == std::string::npos) break;
      from = comma + 1;
    }
  }
  for (int i = 0; i < n * n && i < static_cast<int>(cells.size()); ++i) {
    const int k = CellPosition(model, i / n + 1, i % n + 1);
    if (model.GivenValue[k] > 0) continue;
    const char c = cells[static_cast<std::size_t>(i)];
    if (c >= '1' && c - '0' <= n) {
      model.PosText[k] = std::string(1, c);
    } else if (i < static_cast<int>(markList.size()) && !markList[static_cast<std::size_t>(i)].empty()) {
      model.PosText[k] = markList[static_cast<std::size_t>(i)];
    }
  }
  return model;
}

using reasoning::CellJson;
using reasoning::DigitText;
using reasoning::GradeJson;
using reasoning::StepJson;

std::string Load(PuzzleModel& model) {
  g_puzzle = model;
  g_loaded = true;
  g_answer.reset();
  return PuzzleJson(g_puzzle).dump();
}

}  // namespace

// Puzzle n (from 1) of a collection file written into the module's file system.
std::string LoadRecord(const std::string& path, int n) {
  PuzzleModel model;
  const ReadResult read = LoadPuzzle(model, path, n);
  if (read.notFound) return Error(Cp1252ToUtf8(ReadErrorMessage(n, path)));
  return Load(model);
}

std::string LoadCode(const std::string& code) {
  PuzzleModel model;
  std::string error;
  if (!LoadShareCode(model, code, &error)) return Error(error);
  model.Comment = EncodeShareCode(model);
  model.RecordNumber = 1;  // the one record of a collection of its own
  model.PuzzleCount = 1;
  return Load(model);
}

std::string ShareCode() { return g_loaded ? EncodeShareCode(g_puzzle) : std::string(); }

// The record of the loaded puzzle with the player's digits, as the desktop writes it
// when it saves the puzzle: CR LF lines, Windows-1252 (handed out byte for byte, one
// character code 0..255 each).
std::string RecordText(const std::string& cells) {
  if (!g_loaded) return {};
  const PuzzleModel model = Played(cells);
  PuzzleModel written = model;
  for (int k = 0; k <= written.LastPosition; ++k) {
    if (IsCell(written, k) && written.GivenValue[k] == 0) written.GivenValue[k] = IntegerValue(written.PosText[k]);
  }
  return RecordTextOf(written, written.Comment, written.RecordNumber);
}

// Clashes (a digit twice in a row or column, a sign broken) and, when the puzzle has
// one solution, the player's digits that differ from it.
std::string Check(const std::string& cells) {
  if (!g_loaded) return Error("No puzzle is loaded");
  const PuzzleModel model = Played(cells);
  const int n = model.GridSize;
  // Cell indices row by row from 0, as ForEachSign hands them out.
  auto digit = [&](int cell) { return NumericValue(model.PosText[CellPosition(model, cell / n + 1, cell % n + 1)]); };
  std::vector<bool> clash(static_cast<std::size_t>(n * n), false);
  bool complete = true;
  for (int a = 0; a < n * n; ++a) {
    const double d = digit(a);
    if (d <= 0) {
      complete = false;
      continue;
    }
    for (int b = 0; b < n * n; ++b) {
      if (b != a && (b / n == a / n || b % n == a % n) && digit(b) == d) clash[static_cast<std::size_t>(a)] = true;
    }
  }
  ForEachSign(model, [&](int greater, int smaller) {
    const double g = digit(greater);
    const double s = digit(smaller);
    if (g > 0 && s > 0 && g <= s) clash[static_cast<std::size_t>(greater)] = clash[static_cast<std::size_t>(smaller)] = true;
  });
  Json conflicts = Json::array();
  for (int i = 0; i < n * n; ++i) {
    if (clash[static_cast<std::size_t>(i)]) conflicts.push_back(i);
  }
  // The answer: the stored solution, else the search's one solution.
  std::vector<std::string> answer;
  if (!g_answer) g_answer = CountSolutions(g_puzzle, 2);
  const SolutionCount& count = *g_answer;
  if (count.count == 1 && count.complete) answer = count.first;
  Json wrong = Json::array();
  bool solved = complete && !answer.empty();
  for (int i = 0; i < n * n && !answer.empty(); ++i) {
    const int k = CellPosition(model, i / n + 1, i % n + 1);
    const std::string& shown = model.PosText[k];
    if (shown.size() == 1 && shown != answer[static_cast<std::size_t>(k)]) {
      wrong.push_back(i);
      solved = false;
    }
    if (shown.size() != 1) solved = false;
  }
  return Json{{"conflicts", conflicts},
              {"wrong", wrong},
              {"complete", complete},
              {"solved", solved},
              {"solutions", count.count}}
      .dump();
}

// Each cell's candidates as the ladder's grid holds them before any step.
std::string Candidates(const std::string& cells) {
  if (!g_loaded) return Error("No puzzle is loaded");
  const reasoning::Grid grid = reasoning::GridFromModel(Played(cells));
  Json list = Json::array();
  for (int i = 0; i < grid.n * grid.n; ++i) list.push_back(DigitText(grid.cand[static_cast<std::size_t>(i)]));
  return list.dump();
}

// The easiest step from the player's grid (marks restrict their cells), with the
// window's three hint texts.
std::string NextStep(const std::string& cells, const std::string& marks) {
  if (!g_loaded) return Error("No puzzle is loaded");
  const PuzzleModel start = PathStart(Played(cells, marks), nullptr);
  const reasoning::Grid grid = reasoning::GridFromModel(start);
  reasoning::Step step;
  if (!reasoning::NextStep(grid, step)) {
    const std::string status = reasoning::IsSolved(grid)   ? "Nothing is left to deduce: the grid is complete"
                               : reasoning::IsBroken(grid) ? "The grid as entered contradicts itself: check your digits and marks"
                                                           : "No step is found from here: the rest needs a search";
    return Json{{"status", status}}.dump();
  }
  const int n = grid.n;
  PathStep shown;
  shown.technique = step.technique;
  for (int c : step.cells) shown.cells.push_back(CellPosition(start, c / n + 1, c % n + 1));
  Json out = StepJson(n, step);
  out["hint"] = "Hint: " + Cp1252ToUtf8(VagueHint(start, shown));
  out["shown"] = "Step: " + step.technique + ": " + step.text;
  out["made"] = "Made: " + step.technique + ": " + step.text;
  return out.dump();
}

// What `quillmere-cli explain` answers for the same grid.
std::string Explain(const std::string& cells) {
  if (!g_loaded) return Error("No puzzle is loaded");
  const PuzzleModel model = Played(cells);
  const reasoning::Explanation result = reasoning::ExplainModel(model);
  PuzzleModel end = model;
  reasoning::StoreGrid(result.final, end);
  Json steps = Json::array();
  for (const reasoning::Step& step : result.steps) steps.push_back(StepJson(model.GridSize, step));
  return Json{{"solved", result.solved},
              {"needs_search", result.needsSearch},
              {"grade", GradeJson(result.grade)},
              {"steps", steps},
              {"positions", Texts(end, end.PosText)},
              {"broken", result.broken}}
      .dump();
}

// What `quillmere-cli solutions --limit LIMIT` answers.
std::string Solutions(const std::string& cells, int limit) {
  if (!g_loaded) return Error("No puzzle is loaded");
  SearchOptions options;
  options.limit = limit < 1 ? 1 : limit;
  const SolutionCount count = CountSolutions(Played(cells), options);
  Json first = Json::array();
  for (const std::string& text : count.first) first.push_back(Cp1252ToUtf8(text));
  return Json{{"solutions", count.count}, {"complete", count.complete}, {"first", first}, {"nodes", count.nodes}}
      .dump();
}

// The grade names, rung by rung, for the page's choice of grade.
std::string Grades() {
  Json list = Json::array();
  for (int rung = 1; rung <= reasoning::kTopRung; ++rung) {
    list.push_back({{"level", rung}, {"name", reasoning::RungName(rung)}, {"search", rung == reasoning::kTopRung}});
  }
  return list.dump();
}

// A new puzzle of size N whose grade lies in minGrade..maxGrade (0 0: any), loaded.
std::string Create(int size, int minGrade, int maxGrade, double seed) {
  const WebCreation made = CreateForWeb(size, minGrade, maxGrade, static_cast<std::uint64_t>(seed));
  if (!made.ok) return Error(made.error);
  PuzzleModel model = made.puzzle;
  model.Comment = EncodeShareCode(model);
  model.RecordNumber = 1;
  model.PuzzleCount = 1;
  std::string loaded = Load(model);
  Json out = Json::parse(loaded);
  out["grade"] = GradeJson(made.grade);
  out["tries"] = made.tries;
  return out.dump();
}

}  // namespace qm::web

EMSCRIPTEN_BINDINGS(quillmere) {
  using namespace emscripten;
  function("loadRecord", &qm::web::LoadRecord);
  function("loadCode", &qm::web::LoadCode);
  function("shareCode", &qm::web::ShareCode);
  function("recordText", &qm::web::RecordText);
  function("check", &qm::web::Check);
  function("candidates", &qm::web::Candidates);
  function("nextStep", &qm::web::NextStep);
  function("explain", &qm::web::Explain);
  function("solutions", &qm::web::Solutions);
  function("grades", &qm::web::Grades);
  function("create", &qm::web::Create);
}
