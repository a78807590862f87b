#include "solver/solving_commands.h"

#include <algorithm>

#include "core/text_rules.h"
#include "settings/config_file.h"
#include "solver/candidates.h"

namespace qm {

namespace {

constexpr int kPaceStep = 200;
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

void CancelCommand(PuzzleModel& model, WindowPort& port) {
  if (model.StepMode != 0) {
    port.SetPacingTimer(false, model.PacingInterval);
    model.StepGo = 0;
    model.StepMode = 0;
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (IsCell(model, k) && model.GivenValue[k] == 0) model.PosText[k].clear();
      port.ColourPosition(k, CellColour::Normal);
    }
    model.SolutionShown = false;
    port.RedrawGrid();
    port.SetStatusLine("Interactive solve Cancelled");
    return;
  }
  model.StepMode = 0;
  if (port.ProgressLine() != "Canceling...") {
    model.CancelRequest = kYes;
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
