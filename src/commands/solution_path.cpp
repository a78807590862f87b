#include "commands/solution_path.h"

#include <algorithm>
#include <sstream>

#include "reasoning/ladder.h"

namespace qm {

namespace {

bool IsDigitText(const std::string& text) { return text.size() == 1 && text[0] >= '1' && text[0] <= '9'; }

std::vector<std::string> Texts(const PuzzleModel& model) {
  return {model.PosText.begin(), model.PosText.begin() + model.LastPosition + 1};
}

int PeopleIndex(int layoutIndex) { return (layoutIndex + 1) / 2; }

}  // namespace

PuzzleModel PathStart(const PuzzleModel& model, const CoachState* coach) {
  PuzzleModel start = model;
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
  reasoning::ExplainOptions options;
  options.cancel = cancel;
  options.keepGrids = true;
  const reasoning::Explanation result = reasoning::Explain(reasoning::GridFromModel(start), options);
  const int n = start.GridSize;
  auto position = [&](int cell) { return CellPosition(start, cell / n + 1, cell % n + 1); };
  SolutionPath path;
  PuzzleModel shown = start;
  for (std::size_t i = 0; i < result.steps.size(); ++i) {
    const reasoning::Step& step = result.steps[i];
    PathStep s;
    s.technique = step.technique;
    s.level = step.level;
    s.text = step.text;
    for (int c : step.cells) s.cells.push_back(position(c));
    for (const auto& [c, d] : step.placed) s.placed.emplace_back(position(c), d);
    for (const auto& [c, m] : step.removed) {
      std::string digits;
      masks::ForEachDigit(m, [&](int d) { digits += static_cast<char>('0' + d); });
      s.removed.emplace_back(position(c), digits);
    }
    reasoning::StoreGrid(result.after[i], shown);
    s.after = Texts(shown);
    path.steps.push_back(std::move(s));
  }
  path.cancelled = result.cancelled;
  path.broken = result.broken;
  path.solved = result.solved;
  path.grade.level = result.grade.level;
  path.grade.name = result.grade.name;
  path.grade.score = result.grade.score;
  path.grade.needsSearch = result.grade.needsSearch;
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
