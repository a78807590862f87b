// The technique ladder: a second solver, beside the six techniques that define "unique",
// that reasons the way people do. It takes one step at a time, always the easiest one
// available, says in a sentence what it saw, and grades a puzzle by the hardest rung
// it needed. Nothing here changes how puzzles are made or what counts as unique.
#pragma once

#include <array>
#include <span>
#include <atomic>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/puzzle_model.h"
#include "solver/digit_masks.h"

namespace qm::reasoning {

using masks::DigitMask;
inline constexpr int kMaxCells = kMaxGridSize * kMaxGridSize;

// The rungs, easiest first. A puzzle's grade is the highest rung its solution needed.
enum Rung : int {
  kSingles = 1,        // naked and hidden singles
  kSignDigit = 2,      // a sign beside a placed digit
  kSignBounds = 3,     // chains of signs, and signs between open cells
  kSubsets = 4,        // naked and hidden pairs, triples, quads
  kFish = 5,           // one digit's places across rows or columns: X-wing, swordfish
  kForcing = 6,        // both digits of a two-candidate cell lead to the same result
  kContradiction = 7,  // a digit that leads to a contradiction is struck
  kMaster = 8,         // the same, following rungs 1 to 7 inside the assumption
  kNeedsSearch = 9,    // the ladder stalls: the rest needs a search
};
inline constexpr int kTopRung = kNeedsSearch;

// The grade's name for each rung; 0 is a grid that needed no step.
std::string RungName(int rung);

struct Sign {
  int greater;  // cell indices, row-major: row * n + column, from 0
  int smaller;
};

// Candidates per cell and which cells hold a placed digit; a placed digit has left the
// candidates of the rest of its row and column.
struct Grid {
  int n = 0;
  std::array<DigitMask, kMaxCells> cand{};
  std::array<bool, kMaxCells> placed{};
  // Fixed room for every sign of a 9x9 grid: trial copies of the grid, made by the
  // thousand while testing assumptions, then cost no allocation.
  std::array<Sign, 2 * kMaxGridSize * (kMaxGridSize - 1)> signs{};
  int signCount = 0;
  void AddSign(int greater, int smaller) { signs[static_cast<std::size_t>(signCount++)] = {greater, smaller}; }
  auto SignList() const { return std::span<const Sign>(signs.data(), static_cast<std::size_t>(signCount)); }
};

struct Step {
  std::string technique;
  int level = 0;
  std::vector<int> cells;                          // the cells the step looked at
  std::vector<std::pair<int, int>> placed;         // cell, digit
  std::vector<std::pair<int, DigitMask>> removed;  // cell, digits struck
  std::string text;                                // one sentence that says why
};

struct Grade {
  int level = 0;
  std::string name;
  double score = 0;  // weighted count of steps: orders puzzles within a rung
  bool needsSearch = false;
};

struct Explanation {
  bool solved = false;       // by deduction alone
  bool needsSearch = false;  // the ladder stalled on a grid that is not broken
  bool broken = false;       // the grid contradicts itself (no solution)
  bool cancelled = false;
  bool stopped = false;      // a step above ExplainOptions::stopAbove came next
  Grade grade;
  std::vector<Step> steps;
  std::vector<Grid> after;  // the grid after each step, when asked for
  Grid final;               // where the ladder ended
};

struct ExplainOptions {
  const std::atomic<bool>* cancel = nullptr;
  bool keepGrids = false;  // fill Explanation::after
  int maxSteps = 5000;
  // Stop before the first step of a rung above this one (Explanation::stopped): a grader
  // that only asks "at most this hard?" need not work through the hard part.
  int stopAbove = kTopRung;
};

// The grid of the model: one digit in a cell is placed (a clue or an entered digit), a
// candidate list restricts its cell, an empty cell may hold any digit; the signs.
Grid GridFromModel(const PuzzleModel& model);
// Writes the grid back as texts: a digit, or the candidates in ascending order.
void StoreGrid(const Grid& grid, PuzzleModel& model);

// "row 2, column 3", counted from 1.
std::string CellName(int n, int cell);

bool IsSolved(const Grid& grid);
// A cell with no candidate, a digit twice in a line or with no place left in one.
bool IsBroken(const Grid& grid);

// The easiest step the ladder finds, or false when it finds none.
bool NextStep(const Grid& grid, Step& step);
void Apply(Grid& grid, const Step& step);
// One technique of the ladder by its name ("X-wing"), on its own.
bool TryTechnique(const Grid& grid, std::string_view name, Step& step);

// Every step from `start` until the grid is solved, broken or the ladder stalls.
Explanation Explain(const Grid& start, const ExplainOptions& options = {});

// Explain on the model's grid; when the ladder stalls, the exact search finishes the
// grid (final holds its solution) and the grade is "needs search".
Explanation ExplainModel(const PuzzleModel& model, const ExplainOptions& options = {});

// The weight of one step of a rung in the score.
double RungWeight(int rung);

}  // namespace qm::reasoning
