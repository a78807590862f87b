#include "commands/solving_commands.h"

#include <algorithm>

#include "core/rule_checks.h"
#include "core/text_rules.h"
#include "settings/config_file.h"
#include "solver/candidates.h"

namespace qm {

namespace {

constexpr int kPaceStep = 200;
constexpr int kFastestPace = 11;  // below this a paced solve starts at the default pace
constexpr std::string_view kAutoSolveEntry = "autosolve";

// Stores an accepted entry: the old text goes on the undo list first.
void Enter(PuzzleModel& model, WindowPort& port, int p, const std::string& text) {
  model.UndoList.insert(model.UndoList.begin(), ZeroPadded(p, 3) + model.PosText[p]);
  model.PosText[p] = text;
  // An entered digit counts as given from now on (it survives a cancelled paced solve),
  // and a hint such as "134" reads as 134.
  if (IsCell(model, p)) model.GivenValue[p] = IntegerValue(text);
  model.Modified = -1;
  port.ShowPosition(p);
}

bool Ignored(const std::string& choice) { return choice == "Cancel" || choice == "-"; }

}  // namespace

int CheckSignEntry(const PuzzleModel& model, WindowPort& port, int p, char sign) {
  const std::string error = SignEntryError(model, p, sign);
  if (error.empty()) return p;
  port.SetStatusLine(error);
  return -1;
}


bool ChangePace(PuzzleModel& model, WindowPort& port, PaceButton button) {
  if (!model.UndoList.empty() && !port.AskYesNo("Discard all changes?")) return false;
  int& pace = model.PacingInterval;
  switch (button) {
    case PaceButton::Previous:
      pace += kPaceStep;
      break;
    case PaceButton::First:
      pace = 0;
      break;
    case PaceButton::Next:
      pace -= kPaceStep;
      break;
    case PaceButton::Last:
      pace = kMaxPace;
      break;
    case PaceButton::Random:
      pace = kDefaultPaceMs;
      break;
  }
  pace = std::clamp(pace, kMinPace, kMaxPace);
  return true;
}

void ShowCellText(WindowPort& port, int k, std::string_view text) {
  port.ShowCellText(k, std::string(Trim(text)));
}

void ShowAllPositions(const PuzzleModel& model, WindowPort& port) {
  for (int k = 0; k <= model.LastPosition; ++k) ShowCellText(port, k, model.PosText[k]);
}

AutoSolveResult AutoSolve(PuzzleModel& model, RunControl& run) {
  WindowPort& port = run.Port();
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
    run.StepMode = false;
    result.solve.status = kSolved;
    result.outcome = kOutcomeSolvedAlready;
    port.SetProgressLine("");
    port.ShowMessage(result.outcome);
    return result;
  }
  if (run.StepMode) {
    // The user watches the candidates shrink from the full set.
    const int l = model.LayoutExtent;
    for (int row = 1; row <= l; row += 2) {
      for (int col = 1; col <= l; col += 2) {
        const int k = model.PositionOf[row][col];
        if (model.PosText[k].size() > 1) ShowCellText(port, k, model.AllDigits);
      }
    }
  }

  result.solve = SolveByLogic(model, run);
  endBusy();
  if (result.solve.status == kSolved) {
    ShowAllPositions(model, port);
    port.SetProgressLine("Solved");
    result.outcome = kOutcomeDone;
  } else {
    // The display is left where an explanation stopped; only the texts go back. After
    // a Cancel nothing of the explanation stands: the grid shows the texts put back.
    RestoreCandidates(model, model.SavedCandidates);
    if (run.StepCancelled) port.RedrawGrid();
    port.SetProgressLine("");
    result.outcome = result.solve.status == kStalled ? kOutcomeMultiple : kOutcomeInvalid;
  }
  run.StepCancelled = false;
  port.ShowMessage(result.outcome);
  return result;
}

AutoSolveResult PacedAutoSolve(PuzzleModel& model, RunControl& run) {
  WindowPort& port = run.Port();
  run.StepMode = true;
  run.StepCancelled = false;
  port.SetStatusLine(std::string(kPacedSolvePrompt));
  if (model.PacingInterval < kFastestPace) model.PacingInterval = kDefaultPaceMs;
  run.StepGo = false;
  port.SetPacingTimer(false, model.PacingInterval);
  // Cancel ends step mode: then there is nothing to wait for, and nothing to solve.
  run.WaitForGo();
  if (!run.StepMode) {
    run.StepCancelled = false;
    AutoSolveResult cancelled;
    cancelled.solve.status = kBroken;
    cancelled.solve.message = "Canceled";
    return cancelled;
  }
  port.SetPacingTimer(true, model.PacingInterval);
  return AutoSolve(model, run);
}

void CancelCommand(PuzzleModel& model, RunControl& run) {
  WindowPort& port = run.Port();
  if (run.StepMode) {
    port.SetPacingTimer(false, model.PacingInterval);
    run.StepGo = false;
    run.StepMode = false;
    run.StepCancelled = true;
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (IsCell(model, k) && model.GivenValue[k] == 0) model.PosText[k].clear();
      port.ColourPosition(k, CellColour::Normal);
    }
    model.SolutionShown = false;
    port.RedrawGrid();
    port.SetStatusLine("Interactive solve Cancelled");
    return;
  }
  run.StepMode = false;
  if (port.ProgressLine() != "Canceling...") {
    run.CancelRequest = true;
    port.ProcessEvents();
  } else {
    port.SetProgressLine("");
  }
}

void CellMenuChoice(PuzzleModel& model, WindowPort& port, int p, const std::string& choice) {
  if (Ignored(choice)) return;
  std::string text;
  if (choice == "Hint") {
    if (model.PosText[p].size() == 1) {
      port.SetProgressLine("No need for a hint here");
      return;
    }
    text = CellCandidates(model, p);
  } else if (choice != "Clear") {
    if (choice.size() != 1 || CellCandidates(model, p).find(choice) == std::string::npos) {
      port.SetProgressLine("Invalid entry");
      return;
    }
    text = choice;
  }
  Enter(model, port, p, text);
}

void EnterAnyDigit(PuzzleModel& model, WindowPort& port, int p, int digit) {
  if (p < 0 || p > model.LastPosition || !IsCell(model, p) || digit < 1 || digit > model.GridSize) return;
  Enter(model, port, p, std::to_string(digit));
}

void SignMenuChoice(PuzzleModel& model, WindowPort& port, int p, const std::string& choice) {
  if (Ignored(choice)) return;
  if (choice != "Clear" && (choice.size() != 1 || CheckSignEntry(model, port, p, choice[0]) < 0)) return;
  Enter(model, port, p, choice == "Clear" ? std::string() : choice);
}

void UndoEntry(PuzzleModel& model, WindowPort& port) {
  if (model.UndoList.empty()) return;
  const std::string entry = model.UndoList.front();
  model.UndoList.erase(model.UndoList.begin());
  if (entry == kAutoSolveEntry) {
    if (!model.SavedCandidates.empty()) {
      RestoreCandidates(model, model.SavedCandidates);
      port.RedrawGrid();
    }
    return;
  }
  const int p = IntegerValue(std::string_view(entry).substr(0, 3));
  if (p < 0 || p > model.LastPosition) return;
  model.PosText[p] = entry.substr(std::min<std::size_t>(3, entry.size()));
  port.ShowPosition(p);
}

void ToggleSolutionView(PuzzleModel& model, WindowPort& port) {
  if (model.SolutionShown) {
    RestoreCandidates(model, model.ViewSnapshot);
    model.SolutionShown = false;
    port.RedrawGrid();
    port.SetStatusLine("");
    return;
  }
  model.ViewSnapshot = SaveCandidates(model);
  for (int k = 0; k <= model.LastPosition; ++k) {
    const std::string& s = model.SolutionText[k];
    ShowCellText(port, k, s == "." || s == "?" ? std::string() : s);
  }
  model.SolutionShown = true;
  port.SetStatusLine("Solution");
}

}  // namespace qm
