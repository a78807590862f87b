#include "commands/grid_commands.h"

#include "core/rule_checks.h"

namespace qm {

namespace {

void Cleared(PuzzleModel& model, WindowPort& port) {
  model.SolutionShown = false;
  port.SetProgressLine("");
  port.SetStatusLine("");
  port.RedrawGrid();
}

}  // namespace

void Verify(const PuzzleModel& model, WindowPort& port) {
  const VerifyOutcome outcome = VerifyGrid(model);
  if (outcome.errorPosition < 0) {
    port.ShowMessage(outcome.text);
    return;
  }
  const CellColour previous = port.ColourOf(outcome.errorPosition);
  port.ColourPosition(outcome.errorPosition, CellColour::Error);
  port.ShowMessage(outcome.text);
  port.ColourPosition(outcome.errorPosition, previous);
}

void NewGrid(PuzzleModel& model, WindowPort& port, int entry) {
  if (entry < 0 || entry > kMaxGridSize - kMinGridSize) return;
  SetSize(model, entry + kMinGridSize);
  // Nothing of the previous puzzle may print or save with the new grid.
  for (std::string& solution : model.SolutionText) solution.clear();
  model.SolutionList.clear();
  model.Comment.clear();
  model.RecordNumber = 0;
  model.ConstraintCount = 0;
  model.ClueCount = 0;
  model.SolutionShown = false;
  port.SetStatusLine("");
  port.SetProgressLine("");
  port.RedrawGrid();
  port.RefreshPuzzleInfo();
}

void ClearNumbers(PuzzleModel& model, WindowPort& port) {
  if (!port.AskYesNo("Clear All Numbers?")) return;
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (IsCell(model, k) && model.GivenValue[k] == 0) model.PosText[k].clear();
  }
  Cleared(model, port);
}

void ClearConstraints(PuzzleModel& model, WindowPort& port) {
  if (!port.AskYesNo("Clear All Constraints?")) return;
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (IsSignSlot(model, k)) model.PosText[k].clear();
  }
  Cleared(model, port);
}

void ClearGrid(PuzzleModel& model, WindowPort& port) {
  if (!port.AskYesNo("Clear Entire Grid?")) return;
  for (int k = 0; k <= model.LastPosition; ++k) {
    model.PosText[k].clear();
    model.GivenValue[k] = 0;
    port.ColourPosition(k, CellColour::Normal);
  }
  model.SolutionList.clear();
  Cleared(model, port);
}

std::string MouseStatusText(const PuzzleModel& model, const RunControl& run, int k) {
  if (run.StepMode || k < 0 || k > model.LastPosition || !IsCell(model, k) || model.PosText[k].empty()) {
    return {};
  }
  return "Row=" + std::to_string(model.RowOf[k]) + ", Col=" + std::to_string(model.ColOf[k]) +
         ", Candidates= " + model.PosText[k];
}

}  // namespace qm
