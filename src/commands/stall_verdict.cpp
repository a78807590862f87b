#include "commands/stall_verdict.h"

#include "solver/solution_search.h"

namespace qm {

std::string StallVerdict(const PuzzleModel& model) {
  const SolutionCount found = CountSolutions(model, 2);
  if (found.count >= 2) return std::string(kVerdictSeveral);
  if (found.count == 1) return std::string(kVerdictUnique);
  return std::string(kVerdictNone);
}

}  // namespace qm
