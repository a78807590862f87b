// An exact count of a puzzle's solutions by search. It answers what the deduction
// techniques cannot ("is this stalled puzzle really ambiguous?"); nothing else in the
// system uses it, so "unique" keeps meaning "solved by the techniques".
#pragma once

#include <string>
#include <vector>

#include "core/puzzle_model.h"

namespace qm {

struct SolutionCount {
  int count = 0;
  bool complete = true;            // false when the search stopped at the limit
  std::vector<std::string> first;  // every position's text in the first solution, or empty
};

// Counts the grids that complete the shown puzzle, stopping at `limit` (at least 1).
// A cell showing one digit is fixed, a candidate list restricts its cell, and the signs
// in the sign slots must hold.
SolutionCount CountSolutions(const PuzzleModel& model, int limit);

}  // namespace qm
