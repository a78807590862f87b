// The first, plain solution search, kept only as the reference the fast search is
// checked against. `nodeBudget` bounds its work on inputs where it is too slow: past
// it the result has `complete` false and `nodes` above the budget.
#pragma once

#include "solver/solution_search.h"

namespace qm {

SolutionCount ReferenceCountSolutions(const PuzzleModel& model, int limit, long nodeBudget);

}  // namespace qm
