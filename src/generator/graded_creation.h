// Creation by grade: a puzzle with exactly one solution (by the exact search) whose
// technique-ladder grade lies in a requested range. A random solution gets every sign
// and enough clues to be unique; then givens go one at a time in random order while the
// puzzle stays unique, and, where the result would grade too hard, the removals are cut
// back to the last point the grade allowed and carried on with the grade checked. Where
// every puzzle must be minimal (Tough up), a minimal near miss is changed instead: a given
// goes back, what it makes redundant goes, and the grade is checked again.
//
// Plain data in and out, no model, window or hooks: one call makes one puzzle, cheaply
// enough for a web page to call it per puzzle.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "core/puzzle_model.h"

namespace qm {

enum class GradedSymmetry { None, Rotate, Mirror };

// Which clues a graded puzzle may keep. Free, Upto: the reduction chooses (at most
// `value` for Upto); None, Fixed and Exactly fix the clues, and only signs are reduced.
struct GradedClueRule {
  enum class Kind { Free, None, Fixed, Exactly, Upto };
  Kind kind = Kind::Free;
  int value = 0;  // the digit of Fixed, the count of Exactly and Upto
};

struct GradedOptions {
  int size = 9;
  int minGrade = 1;  // ladder rungs, both bounds included
  int maxGrade = 1;
  GradedClueRule clues;
  GradedSymmetry symmetry = GradedSymmetry::None;
  // From the subsets rung (Tough) up: no single clue or sign can go. Off: redundant
  // givens may stay.
  bool minimal = true;
  // Below that rung: at least this share of the sign slots keeps its sign.
  int minSignsPercent = 20;
  // Tries (solutions built and reduced) before giving up; 0: the size's default.
  int maxTries = 0;
};

// A puzzle as cells row-major from 0.
struct GradedPuzzle {
  int n = 0;
  std::vector<int> solution;  // the digit of every cell
  std::vector<int> clues;     // the given digit, or 0
  std::vector<char> right;    // the sign between a cell and its right neighbour: '<', '>' or 0
  std::vector<char> below;    // between a cell and the one below: '^' (upper smaller), 'v' or 0
  int ClueCount() const;
  int SignCount() const;
};

struct GradedResult {
  bool made = false;
  bool cancelled = false;
  GradedPuzzle puzzle;
  int grade = 0;  // the ladder rung
  std::string gradeName;
  double score = 0;
  int tries = 0;       // tries spent, the successful one included
  std::string reason;  // why nothing was made
};

// The default number of tries for a size.
int DefaultGradedTries(int n);

// What makes the options impossible before any try ("" when nothing does): a size out of
// 3..9, an empty or unknown grade range, a clue rule that cannot reach the range or
// cannot be symmetric.
std::string GradedConflict(const GradedOptions& options);

// Makes one puzzle from the stream `seed`: the same options and seed give the same
// puzzle. Polls `cancel` (may be null) between tries and removals.
GradedResult CreateGraded(const GradedOptions& options, std::uint64_t seed, const std::atomic<bool>* cancel = nullptr);

// The puzzle into the model as creation leaves one: clues and signs shown, the solution
// stored, ClueCount and ConstraintCount set. Sets the model's size.
void LoadGraded(PuzzleModel& model, const GradedPuzzle& puzzle);

// The same text for two puzzles exactly when one is the other turned, reflected,
// transposed and/or with its digits reversed (which turns every sign round).
std::string CanonicalPuzzleKey(const GradedPuzzle& puzzle);

// Whether removing any single given (clue or sign) leaves the puzzle with more than one
// solution.
bool IsMinimalPuzzle(const GradedPuzzle& puzzle);
// Exactly one solution by the exact search.
bool HasOneSolution(const GradedPuzzle& puzzle);
// The ladder's grade of the puzzle: rung and score, as the grade of the saved puzzle reads.
std::pair<int, double> GradePuzzle(const GradedPuzzle& puzzle);

}  // namespace qm
