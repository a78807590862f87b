#include "support/created_puzzles.h"

#include "core/rule_checks.h"
#include "core/text_rules.h"
#include "solver/candidates.h"
#include "solver/solve_driver.h"

namespace qm::test {

::testing::AssertionResult IsSoundPuzzle(const PuzzleModel& model) {
  PuzzleModel filled = model;
  PuzzleModel solving = model;
  for (int k = 0; k <= model.LastPosition; ++k) {
    const std::string& text = model.PosText[k];
    const bool clue = model.GivenValue[k] != 0;
    const bool fits = IsCell(model, k) ? (clue ? text == model.SolutionText[k] && model.GivenValue[k] == IntegerValue(text)
                                               : text.empty())
                                       : text.empty() || text == model.SolutionText[k];
    if (!fits) return ::testing::AssertionFailure() << "position " << k << " holds \"" << text << "\"";
    if (IsCell(model, k)) filled.PosText[k] = model.SolutionText[k];
  }
  // The rule check of the filled grid judges rows, columns and the puzzle's signs.
  PrepareCandidates(filled);
  if (const CheckResult check = CheckGrid(filled); check.result != kSolved) {
    return ::testing::AssertionFailure() << "the stored solution fails: " << check.message;
  }
  PrepareCandidates(solving);
  if (const SolveOutcome outcome = SolveByLogic(solving); outcome.status != kSolved) {
    return ::testing::AssertionFailure() << "the logic solve ends with " << outcome.status;
  }
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (IsCell(model, k) && solving.PosText[k] != model.SolutionText[k]) {
      return ::testing::AssertionFailure() << "the logic solve differs from the solution at " << k;
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace qm::test
