#include "solver/solve_driver.h"

#include "core/rule_checks.h"
#include "solver/candidates.h"
#include "solver/mask_sweeps.h"

namespace qm {

namespace {

constexpr int kFastestPace = 11;  // below this a paced solve starts at the default pace
constexpr int kDefaultPace = 4000;

bool CancelRequested(const PuzzleModel& model, SolveOutcome& outcome) {
  if (model.CancelRequest != kYes) return false;
  outcome.status = kBroken;
  outcome.message = "Canceled";
  return true;
}

template <class Run>
void Tally(SolveOutcome& outcome, PuzzleModel& model, Technique technique, Run&& run) {
  const int before = model.ChangeCount;
  run();
  outcome.changes[static_cast<std::size_t>(technique)] += model.ChangeCount - before;
}

// Sweeps on the texts, explaining every change in step mode. False when cancelled.
bool SweepTexts(PuzzleModel& model, WindowPort& port, SolveOutcome& outcome) {
  for (;;) {
    if (CancelRequested(model, outcome)) return false;
    model.ChangeCount = 0;
    port.ProcessEvents();
    Tally(outcome, model, Technique::RemoveSingles, [&] { RemoveSingles(model, port); });
    if (model.StepMode != 0) {
      Tally(outcome, model, Technique::OrderPropagateExplained, [&] { OrderPropagateExplained(model, port); });
    } else {
      Tally(outcome, model, Technique::OrderPropagate, [&] { OrderPropagate(model, port); });
    }
    Tally(outcome, model, Technique::HiddenSingle, [&] { HiddenSingle(model, port); });
    Tally(outcome, model, Technique::NakedPair, [&] { NakedPair(model, port); });
    Tally(outcome, model, Technique::NakedTriple, [&] { NakedTriple(model, port); });
    Tally(outcome, model, Technique::NakedQuad, [&] { NakedQuad(model, port); });
    if (model.ChangeCount == 0) return true;
    ++outcome.sweeps;
  }
}

// The same quiet sweeps on digit masks, written back to the texts at the end. False
// when cancelled.
bool SweepMasks(MaskGrid& grid, PuzzleModel& model, WindowPort& port, SolveOutcome& outcome) {
  bool finished = true;
  for (;;) {
    if (CancelRequested(model, outcome)) {
      finished = false;
      break;
    }
    model.ChangeCount = 0;
    port.ProcessEvents();
    model.ChangeCount = MaskSweep(grid, outcome.changes);
    if (model.ChangeCount == 0) break;
    ++outcome.sweeps;
  }
  StoreMaskGrid(grid, model);
  return finished;
}

}  // namespace

namespace {

SolveOutcome Finish(PuzzleModel& model, SolveOutcome outcome, bool finished) {
  if (!finished) return outcome;  // cancelled: no rule check, the candidates stay
  model.StepMode = 0;             // explaining ends with the logic phase
  const CheckResult check = CheckGrid(model);
  outcome.status = check.result;
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

SolveOutcome SolveByLogic(PuzzleModel& model, WindowPort& port) {
  MaskGrid grid;
  if (model.StepMode != 0 || !LoadMaskGrid(model, grid)) return SolveByLogicOnTexts(model, port);
  SolveOutcome outcome;
  const bool finished = SweepMasks(grid, model, port, outcome);
  return Finish(model, std::move(outcome), finished);
}

SolveOutcome SolveByLogicOnTexts(PuzzleModel& model, WindowPort& port) {
  SolveOutcome outcome;
  const bool finished = SweepTexts(model, port, outcome);
  return Finish(model, std::move(outcome), finished);
}

AutoSolveResult AutoSolve(PuzzleModel& model, WindowPort& port) {
  AutoSolveResult result;
  model.SolverBusy = true;
  port.SetBusy(true);
  port.SetProgressLine("Solving...");
  model.SavedCandidates = SaveCandidates(model);
  PrepareCandidates(model);

  auto endBusy = [&] {
    model.SolverBusy = false;
    port.SetBusy(false);
  };
  if (CheckGrid(model).result == kSolved) {
    endBusy();
    model.StepMode = 0;
    result.solve.status = kSolved;
    result.outcome = kOutcomeSolvedAlready;
    port.ShowMessage(result.outcome);
    return result;
  }
  if (model.StepMode != 0) {
    // The user watches the candidates shrink from the full set.
    const int l = model.LayoutExtent;
    for (int row = 1; row <= l; row += 2) {
      for (int col = 1; col <= l; col += 2) {
        const int k = model.PositionOf[row][col];
        if (model.PosText[k].size() > 1) ShowCellText(port, k, model.AllDigits);
      }
    }
  }

  result.solve = SolveByLogic(model, port);
  endBusy();
  if (result.solve.status == kSolved) {
    ShowAllPositions(model, port);
    port.SetProgressLine("Solved");
    result.outcome = kOutcomeDone;
  } else {
    // The display is left where an explanation stopped; only the texts go back.
    RestoreCandidates(model, model.SavedCandidates);
    result.outcome = result.solve.status == kStalled ? kOutcomeMultiple : kOutcomeInvalid;
  }
  port.ShowMessage(result.outcome);
  return result;
}

AutoSolveResult PacedAutoSolve(PuzzleModel& model, WindowPort& port) {
  model.StepMode = -1;
  port.SetStatusLine(std::string(kPacedSolvePrompt));
  if (model.PacingInterval < kFastestPace) model.PacingInterval = kDefaultPace;
  model.StepGo = 0;
  port.SetPacingTimer(false, model.PacingInterval);
  // Cancel ends step mode: then there is nothing to wait for, and nothing to solve.
  while (model.StepGo == 0 && model.StepMode != 0) port.WaitForEvents();
  if (model.StepMode == 0) {
    AutoSolveResult cancelled;
    cancelled.solve.status = kBroken;
    cancelled.solve.message = "Canceled";
    return cancelled;
  }
  port.SetPacingTimer(true, model.PacingInterval);
  return AutoSolve(model, port);
}

}  // namespace qm
