// Reduction of a random solution to a puzzle: keep the requested clues, check that clues
// and all signs let the logic solve finish, then remove signs one by one in queue order
// for as long as it still finishes. Unique here means: solved to the end by the logic
// solve; nothing else is counted.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "core/puzzle_model.h"
#include "core/run_hooks.h"
#include "generator/solution_builder.h"

namespace qm {

// Level codes: more clues means an easier level. Index 0 is not a level.
inline constexpr std::array<std::string_view, 5> LevelNames = {"", "VeryHard", "Hard", "Easy", "VeryEasy"};
inline constexpr int kVeryHard = 1;
inline constexpr int kVeryEasy = 4;

// The codes ClueSpec takes: which clues a new puzzle keeps.
inline constexpr int kNoClues = 0;
inline constexpr int kRandomClues = -1;      // CluesForLevel(N, -1)
inline constexpr int kCluesByLevel = 99;     // CluesForLevel(N, level)
inline constexpr int kFixedClueBase = 100;   // 100 + d: one clue, the digit d

// Which clues a new puzzle keeps, as the dialog and the command line ask for them.
struct ClueRule {
  enum class Kind { None, Fixed, Exactly, Upto, ByLevel, Random };
  Kind kind = Kind::ByLevel;
  int value = 0;  // the digit of Fixed, the count of Exactly and Upto
};

// The one conversion of a rule to the code ClueSpec takes. "Upto" is the count
// negated, so "Upto 1" gives -1, the code of Random: the two make the same puzzles.
int ClueSpecOf(const ClueRule& rule);

// Generation settings, work lists and results, kept between calls: the cell order
// carries over from one attempt (and one puzzle) to the next.
struct Generator {
  // Settings.
  int ClueSpec = kCluesByLevel;
  int RequestedLevel = 3;  // read only when ClueSpec is 99

  // Work lists.
  std::vector<int> CellOrder;  // cell codes 10 * column + row
  int CellOrderSize = 0;       // the N CellOrder was filled for; 0 forces a refill
  SignQueue Queue;

  // Results of the last CreatePuzzle.
  int GenerationResult = -1;  // 99 success, -1 attempts used up or cancelled
  int ClueCount = 0;          // 0 for no clues and for the one fixed clue
  int SignCount = 0;
  int LevelCode = 0;
};

// Clues for a level of size N (L = 1..4), or a random count over the same span
// (L = -1). 3x3 puzzles never get clues from this rule.
int CluesForLevel(PuzzleModel& model, int n, int level);

// The level of a finished puzzle, from its clue count alone.
int LevelForClues(PuzzleModel& model, int n, int clues);

// Fills CellOrder for N when N differs from the size it was last filled for.
void SetUpCellOrder(Generator& generator, int n);
// The layout position of a cell code.
int CellOfCode(const PuzzleModel& model, int code);
// Permutes CellOrder in place. The partner of entry i is drawn from 1..i-1 only, so
// only cyclic permutations come out; that is how the order has always been shuffled.
void ShuffleCellOrder(PuzzleModel& model, Generator& generator);

// Tries the queued signs one at a time, in queue order, keeping a removal while the
// logic solve still finishes; each sign is tried once. `snapshot` is the texts to come
// back to, replaced after every kept removal. False when cancelled.
bool ReduceSigns(PuzzleModel& model, RunHooks& run, const SignQueue& queue,
                 PerPosition<std::string> snapshot);

// Makes one puzzle of the model's size: up to 100 attempts of solution and clues, then
// ReduceSigns. On success (99) the model holds the clues and the kept signs, every
// other cell blank, and SolutionText the solved grid; ConstraintCount and ClueCount
// take the results. Returns GenerationResult.
int CreatePuzzle(PuzzleModel& model, RunHooks& run, Generator& generator);

}  // namespace qm
