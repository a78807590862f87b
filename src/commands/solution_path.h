// The coach's view of a solve: every step from a starting grid to the end, each with the
// cells it looked at, what it placed and removed and the grid after it, and the grade
// of what the puzzle needed. Next Step, the solution-path panel and the grades are built
// on this.
#pragma once

#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "commands/coach_state.h"
#include "core/puzzle_model.h"

namespace qm {

struct PathStep {
  std::string technique;
  int level = 0;
  std::string text;        // the sentence of the step
  std::vector<int> cells;  // positions the step looks at
  std::vector<std::pair<int, int>> placed;           // position, digit
  std::vector<std::pair<int, std::string>> removed;  // position, digits
  std::vector<std::string> after;  // every position's text after the step
};

struct PathGrade {
  int level = 0;
  std::string name;
  double score = 0;
  bool needsSearch = false;
};

struct SolutionPath {
  bool solved = false;
  bool cancelled = false;
  bool broken = false;  // the starting grid contradicts itself
  PathGrade grade;
  std::vector<PathStep> steps;
};

// The grid a path starts from: clues, signs, the digits and candidate texts shown; a
// cell with the player's pencil marks starts from those marks (when `coach` is given).
PuzzleModel PathStart(const PuzzleModel& model, const CoachState* coach);
// The grid of the puzzle alone: clues and signs.
PuzzleModel PuzzleStart(const PuzzleModel& model, const CoachState& coach);

// Every step from `start` to the end or to where the techniques stall. `cancel`, when
// given, is polled between steps.
SolutionPath FindSolutionPath(const PuzzleModel& start, const std::atomic<bool>* cancel = nullptr);

// A cell named as people name it: "row 2, column 3" (rows and columns counted 1..N).
std::string CellName(const PuzzleModel& model, int k);
// The first hint: the technique and where to look ("Hidden single: look at row 2").
std::string VagueHint(const PuzzleModel& model, const PathStep& step);
// The positions a hint lights: the cells looked at, and the cells the step changes.
std::vector<int> ChangedCells(const PathStep& step);

// "Grade: Hard (level 3, score 41)", or the grade still being worked out.
std::string GradeLine(const PathGrade& grade);
// The path as text, one numbered line per step under the grade, for the clipboard.
std::string PathAsText(const SolutionPath& path);

}  // namespace qm
