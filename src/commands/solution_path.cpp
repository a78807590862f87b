#include "commands/solution_path.h"

#include <algorithm>
#include <sstream>

#include "core/headless_port.h"
#include "core/rule_checks.h"
#include "solver/candidates.h"
#include "solver/solve_driver.h"

namespace qm {

namespace {

struct Rung {
  const char* prefix;  // how the step's line starts
  const char* name;
  int level;
};

// The six techniques, easiest first, told apart by the start of their lines.
constexpr Rung kRungs[] = {{"Remove single values", "Naked single", 1},
                           {"N1>N2", "Sign bounds", 2},
                           {"Cell has unique candidate", "Hidden single", 3},
                           {"Row", "Naked subset", 4},
                           {"Col", "Naked subset", 4}};
constexpr const char* kLevelNames[] = {"Solved", "Very easy", "Easy", "Medium", "Hard"};

bool IsDigitText(const std::string& text) { return text.size() == 1 && text[0] >= '1' && text[0] <= '9'; }

std::vector<std::string> Texts(const PuzzleModel& model) {
  return {model.PosText.begin(), model.PosText.begin() + model.LastPosition + 1};
}

int PeopleIndex(int layoutIndex) { return (layoutIndex + 1) / 2; }

}  // namespace

PuzzleModel PathStart(const PuzzleModel& model, const CoachState* coach) {
  PuzzleModel start = model;
  start.StepMode = 0;
  start.CancelRequest = kNo;
  for (int k = 0; k <= start.LastPosition; ++k) {
    if (!IsCell(start, k)) continue;
    std::string& text = start.PosText[k];
    if (IsDigitText(text) || coach == nullptr || coach->Marks[k] == 0) continue;
    text.clear();
    for (int d = 1; d <= start.GridSize; ++d) {
      if (coach->Marks[k] & MarkBit(d)) text += static_cast<char>('0' + d);
    }
  }
  return start;
}

PuzzleModel PuzzleStart(const PuzzleModel& model, const CoachState& coach) {
  PuzzleModel start = PathStart(model, nullptr);
  for (int k = 0; k <= start.LastPosition; ++k) {
    if (IsCell(start, k) && !coach.ClueCell[k]) start.PosText[k].clear();
  }
  return start;
}

SolutionPath FindSolutionPath(const PuzzleModel& start, const std::atomic<bool>* cancel) {
  SolutionPath path;
  PuzzleModel model = start;
  PrepareCandidates(model);
  model.StepMode = -1;
  HeadlessPort port;
  auto closePrevious = [&] {
    if (!path.steps.empty() && path.steps.back().after.empty()) path.steps.back().after = Texts(model);
  };
  port.onStep = [&](const SolveStep& step) {
    closePrevious();
    PathStep s;
    s.text = step.line;
    for (const Rung& rung : kRungs) {
      if (s.technique.empty() && step.line.starts_with(rung.prefix)) {
        s.technique = rung.name;
        s.level = rung.level;
      }
    }
    if (s.technique.empty()) s.technique = "Deduction";
    const std::string& before = model.PosText[step.target];
    if (IsDigitText(step.text) && before != step.text) {
      s.placed.emplace_back(step.target, step.text[0] - '0');
    } else {
      std::string gone;
      for (char c : before) {
        if (step.text.find(c) == std::string::npos) gone += c;
      }
      if (!gone.empty()) s.removed.emplace_back(step.target, gone);
    }
    for (int i = 1; i <= model.LayoutExtent; i += 2) {
      if (step.row > 0) s.cells.push_back(model.PositionOf[step.row][i]);
      if (step.col > 0) s.cells.push_back(model.PositionOf[i][step.col]);
    }
    if (step.second >= 0) s.cells.push_back(step.second);
    s.cells.push_back(step.target);
    path.steps.push_back(std::move(s));
  };
  port.onProcessEvents = [&] {
    if (cancel != nullptr && cancel->load()) model.CancelRequest = kYes;
  };
  const SolveOutcome outcome = SolveByLogicOnTexts(model, port);
  closePrevious();
  path.cancelled = model.CancelRequest == kYes;
  path.solved = outcome.status == kSolved;
  int top = 0;
  double score = 0;
  for (const PathStep& step : path.steps) {
    top = std::max(top, step.level);
    score += step.level;
  }
  path.grade.needsSearch = !path.solved;
  path.grade.level = path.solved ? top : 5;
  path.grade.name = path.solved ? kLevelNames[std::min(top, 4)] : "Needs search";
  path.grade.score = score;
  return path;
}

std::string CellName(const PuzzleModel& model, int k) {
  return "row " + std::to_string(PeopleIndex(model.RowOf[k])) + ", column " +
         std::to_string(PeopleIndex(model.ColOf[k]));
}

std::string VagueHint(const PuzzleModel& model, const PathStep& step) {
  std::vector<int> cells;
  for (int k : step.cells) {
    if (k >= 0 && k <= model.LastPosition && std::find(cells.begin(), cells.end(), k) == cells.end()) cells.push_back(k);
  }
  std::string where;
  if (cells.empty()) {
    where = "the whole grid";
  } else if (cells.size() > 2 && std::all_of(cells.begin(), cells.end(),
                                             [&](int k) { return model.RowOf[k] == model.RowOf[cells[0]]; })) {
    where = "row " + std::to_string(PeopleIndex(model.RowOf[cells[0]]));
  } else if (cells.size() > 2 && std::all_of(cells.begin(), cells.end(),
                                             [&](int k) { return model.ColOf[k] == model.ColOf[cells[0]]; })) {
    where = "column " + std::to_string(PeopleIndex(model.ColOf[cells[0]]));
  } else if (cells.size() <= 3) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      where += (i == 0 ? "" : i + 1 == cells.size() ? " and " : "; ") + CellName(model, cells[i]);
    }
  } else {
    where = "the highlighted cells";
  }
  return step.technique + ": look at " + where;
}

std::vector<int> ChangedCells(const PathStep& step) {
  std::vector<int> cells;
  for (const auto& [k, digit] : step.placed) cells.push_back(k);
  for (const auto& [k, digits] : step.removed) cells.push_back(k);
  return cells;
}

std::string GradeLine(const PathGrade& grade) {
  std::ostringstream line;
  line << "Grade: " << grade.name << " (level " << grade.level << ", score " << grade.score << ")";
  return line.str();
}

std::string PathAsText(const SolutionPath& path) {
  std::string text = GradeLine(path.grade) + "\n";
  for (std::size_t i = 0; i < path.steps.size(); ++i) {
    text += std::to_string(i + 1) + ". " + path.steps[i].technique + ": " + path.steps[i].text + "\n";
  }
  if (!path.solved) text += "The steps stop here: the rest needs a search.\n";
  return text;
}

}  // namespace qm
