#include "solver/solve_driver.h"

#include "core/rule_checks.h"
#include "solver/candidates.h"
#include "solver/mask_sweeps.h"
#include "solver/technique_table.h"

namespace qm {

namespace {

bool CancelRequested(const RunHooks& run, SolveOutcome& outcome) {
  if (!run.Cancelled()) return false;
  outcome.status = kBroken;
  outcome.message = "Canceled";
  return true;
}

// Sweeps on the texts, explaining every change while the run explains. False when
// cancelled.
bool SweepTexts(PuzzleModel& model, RunHooks& run, SolveOutcome& outcome) {
  for (;;) {
    if (CancelRequested(run, outcome)) return false;
    model.ChangeCount = 0;
    run.Yield();
    for (const SweepTechnique& technique : kSweepOrder) {
      const bool explained = run.Explaining();
      const int before = model.ChangeCount;
      (explained ? technique.onTextsExplained : technique.onTexts)(model, run);
      outcome.changes[static_cast<std::size_t>(explained ? technique.explained : technique.quiet)] +=
          model.ChangeCount - before;
    }
    if (model.ChangeCount == 0) return true;
    ++outcome.sweeps;
  }
}

// The same quiet sweeps on digit masks, written back to the texts at the end. False
// when cancelled.
bool SweepMasks(MaskGrid& grid, PuzzleModel& model, RunHooks& run, SolveOutcome& outcome) {
  bool finished = true;
  for (;;) {
    if (CancelRequested(run, outcome)) {
      finished = false;
      break;
    }
    model.ChangeCount = 0;
    run.Yield();
    model.ChangeCount = MaskSweep(grid, outcome.changes);
    if (model.ChangeCount == 0) break;
    ++outcome.sweeps;
  }
  StoreMaskGrid(grid, model);
  return finished;
}

SolveOutcome Finish(PuzzleModel& model, RunHooks& run, SolveOutcome outcome, bool finished) {
  if (!finished) return outcome;  // cancelled: no rule check, the candidates stay
  run.EndExplaining();            // explaining ends with the logic phase
  const CheckResult check = CheckGrid(model);
  outcome.status = static_cast<SolveStatus>(check.result);  // -1, 1 or 99 only
  if (check.result == kBroken) {
    outcome.message = "ERROR:" + check.message;
  } else if (check.result == kStalled) {
    outcome.message = "No error but not done yet";
  } else if (check.result == kSolved) {
    outcome.message = "Are we done?";
  } else {
    outcome.message = check.message;
  }
  return outcome;
}

}  // namespace

SolveOutcome SolveByLogic(PuzzleModel& model, RunHooks& run) {
  MaskGrid grid;
  if (run.Explaining() || !LoadMaskGrid(model, grid)) return SolveByLogicOnTexts(model, run);
  SolveOutcome outcome;
  const bool finished = SweepMasks(grid, model, run, outcome);
  return Finish(model, run, std::move(outcome), finished);
}

SolveOutcome SolveByLogicOnTexts(PuzzleModel& model, RunHooks& run) {
  SolveOutcome outcome;
  const bool finished = SweepTexts(model, run, outcome);
  return Finish(model, run, std::move(outcome), finished);
}

}  // namespace qm
