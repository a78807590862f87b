#include "commands/coach_state.h"

#include <array>
#include <functional>

#include "core/text_rules.h"
#include "solver/candidates.h"
#include "solver/solution_search.h"
#include "commands/solving_commands.h"

namespace qm {

namespace {

bool IsDigitText(const PuzzleModel& model, const std::string& text) {
  return text.size() == 1 && text[0] >= '1' && text[0] <= '0' + model.GridSize;
}

CoachState::Flags Capture(const CoachState& coach) { return {coach.Marks, coach.ClueCell, coach.PlayerCell}; }

void Restore(CoachState& coach, const CoachState::Flags& flags) {
  coach.Marks = flags.marks;
  coach.ClueCell = flags.clue;
  coach.PlayerCell = flags.player;
}

void Record(CoachState& coach, CoachState::Flags before, int entries) {
  coach.Done.push_back({std::move(before), entries});
  coach.Undone.clear();
}

// The cells of p's row and column, p included.
std::vector<int> LinesThrough(const PuzzleModel& model, int p) {
  std::vector<int> cells;
  for (int i = 1; i <= model.LayoutExtent; i += 2) {
    cells.push_back(model.PositionOf[model.RowOf[p]][i]);
    cells.push_back(model.PositionOf[i][model.ColOf[p]]);
  }
  return cells;
}

// After an entry: who owns the cell now, and the placed digit leaves the marks of its lines.
void Entered(CoachState& coach, const PuzzleModel& model, int p) {
  const std::string& text = model.PosText[p];
  coach.ClueCell[p] = false;
  coach.PlayerCell[p] = IsDigitText(model, text);
  if (!coach.PlayerCell[p]) return;
  const MarkBits bit = MarkBit(text[0] - '0');
  for (int k : LinesThrough(model, p)) {
    if (k != p) coach.Marks[k] = static_cast<MarkBits>(coach.Marks[k] & ~bit);
  }
}

bool EnterThroughMenu(CoachState& coach, PuzzleModel& model, int p, bool cell,
                      const std::function<void()>& choose) {
  CoachState::Flags before = Capture(coach);
  const std::size_t entries = model.UndoList.size();
  choose();
  if (model.UndoList.size() == entries) return false;
  if (cell) Entered(coach, model, p);
  Record(coach, std::move(before), 1);
  return true;
}

// Whether the digits of cell p and its neighbour `other` keep p the smaller (or larger).
bool SignHolds(const PuzzleModel& model, int p, int other, bool pSmaller) {
  const std::string& a = model.PosText[p];
  const std::string& b = model.PosText[other];
  if (a.size() != 1 || b.size() != 1) return true;
  return pSmaller ? a[0] < b[0] : a[0] > b[0];
}

}  // namespace

void PuzzleReplaced(CoachState& coach, const PuzzleModel& model) {
  coach.Marks.fill(0);
  coach.PlayerCell.fill(false);
  for (int k = 0; k < kPositionCount; ++k) {
    coach.ClueCell[k] = k <= model.LastPosition && IsCell(model, k) && model.GivenValue[k] > 0 &&
                        IsDigitText(model, model.PosText[k]);
  }
  coach.WrongCells.clear();
  coach.Done.clear();
  coach.Undone.clear();
}

DigitOrigin OriginOf(const CoachState& coach, const PuzzleModel& model, int k, const std::string& shown) {
  if (k < 0 || k > model.LastPosition || !IsDigitText(model, shown)) return DigitOrigin::None;
  if (coach.ClueCell[k] && shown == model.PosText[k]) return DigitOrigin::Clue;
  if (coach.PlayerCell[k] && shown == model.PosText[k]) return DigitOrigin::Player;
  return DigitOrigin::Solver;
}

bool PlayerCellChoice(CoachState& coach, PuzzleModel& model, WindowPort& port, int p, const std::string& choice) {
  return EnterThroughMenu(coach, model, p, true, [&] { CellMenuChoice(model, port, p, choice); });
}

bool PlayerSignChoice(CoachState& coach, PuzzleModel& model, WindowPort& port, int p, const std::string& choice) {
  return EnterThroughMenu(coach, model, p, false, [&] { SignMenuChoice(model, port, p, choice); });
}

bool PlayerKeyDigit(CoachState& coach, PuzzleModel& model, WindowPort& port, int p, int digit) {
  if (!coach.AllowAnyDigit) return PlayerCellChoice(coach, model, port, p, std::to_string(digit));
  if (p < 0 || p > model.LastPosition || !IsCell(model, p) || digit < 1 || digit > model.GridSize) return false;
  if (coach.ClueCell[p]) {
    port.SetProgressLine("Invalid entry");
    return false;
  }
  return EnterThroughMenu(coach, model, p, true, [&] { EnterAnyDigit(model, port, p, digit); });
}

bool ToggleMark(CoachState& coach, const PuzzleModel& model, int p, int digit) {
  if (p < 0 || p > model.LastPosition || !IsCell(model, p) || digit < 1 || digit > model.GridSize) return false;
  if (IsDigitText(model, model.PosText[p])) return false;
  Record(coach, Capture(coach), 0);
  coach.Marks[p] = static_cast<MarkBits>(coach.Marks[p] ^ MarkBit(digit));
  return true;
}

void FillAllCandidates(CoachState& coach, const PuzzleModel& model) {
  Record(coach, Capture(coach), 0);
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (!IsCell(model, k) || IsDigitText(model, model.PosText[k])) continue;
    MarkBits bits = 0;
    for (char c : CellCandidates(model, k)) {
      if (c >= '1' && c <= '9') bits = static_cast<MarkBits>(bits | MarkBit(c - '0'));
    }
    coach.Marks[k] = bits;
  }
}

void ClearMarks(CoachState& coach) {
  Record(coach, Capture(coach), 0);
  coach.Marks.fill(0);
}

void RemoveMarks(CoachState& coach, int p, const std::string& candidates, const std::string& digits) {
  if (p < 0 || p >= kPositionCount) return;
  MarkBits& marks = coach.Marks[p];
  if (marks == 0) {
    for (char c : candidates) {
      if (c >= '1' && c <= '9') marks = static_cast<MarkBits>(marks | MarkBit(c - '0'));
    }
  }
  for (char c : digits) {
    if (c >= '1' && c <= '9') marks = static_cast<MarkBits>(marks & ~MarkBit(c - '0'));
  }
}

bool ApplyStep(CoachState& coach, PuzzleModel& model, WindowPort& port,
               const std::vector<std::pair<int, int>>& placed,
               const std::vector<std::pair<int, std::string>>& removed) {
  CoachState::Flags before = Capture(coach);
  const std::size_t entries = model.UndoList.size();
  bool taken = true;
  for (const auto& [p, digit] : placed) {
    const std::size_t had = model.UndoList.size();
    CellMenuChoice(model, port, p, std::to_string(digit));
    if (model.UndoList.size() == had) {
      taken = false;
    } else {
      Entered(coach, model, p);
    }
  }
  for (const auto& [p, digits] : removed) RemoveMarks(coach, p, CellCandidates(model, p), digits);
  Record(coach, std::move(before), static_cast<int>(model.UndoList.size() - entries));
  return taken;
}

void CoachUndo(CoachState& coach, PuzzleModel& model, WindowPort& port) {
  // A history that claims more entries than the model holds is from before a load.
  if (!coach.Done.empty() && coach.Done.back().entries > static_cast<int>(model.UndoList.size())) {
    coach.Done.clear();
    coach.Undone.clear();
  }
  CoachState::Action action;
  if (coach.Done.empty()) {
    if (model.UndoList.empty()) return;
    action = {Capture(coach), 1};
  } else {
    action = std::move(coach.Done.back());
    coach.Done.pop_back();
  }
  CoachState::Reverted reverted{Capture(coach), {}};
  for (int i = 0; i < action.entries && !model.UndoList.empty(); ++i) {
    const std::string& entry = model.UndoList.front();
    const int p = IntegerValue(std::string_view(entry).substr(0, 3));
    if (p >= 0 && p <= model.LastPosition) reverted.texts.insert(reverted.texts.begin(), {p, model.PosText[p]});
    UndoEntry(model, port);
  }
  Restore(coach, action.before);
  coach.Undone.push_back(std::move(reverted));
}

void CoachRedo(CoachState& coach, PuzzleModel& model, WindowPort& port) {
  if (coach.Undone.empty()) return;
  CoachState::Reverted reverted = std::move(coach.Undone.back());
  coach.Undone.pop_back();
  CoachState::Action action{Capture(coach), static_cast<int>(reverted.texts.size())};
  // The entry is made again as the menus make it: its old text goes on the undo list.
  for (const auto& [p, text] : reverted.texts) {
    model.UndoList.insert(model.UndoList.begin(), ZeroPadded(p, 3) + model.PosText[p]);
    model.PosText[p] = text;
    if (IsCell(model, p)) model.GivenValue[p] = IntegerValue(text);
    model.Modified = -1;
    port.ShowPosition(p);
  }
  Restore(coach, reverted.after);
  coach.Done.push_back(std::move(action));
}

bool CanRedo(const CoachState& coach) { return !coach.Undone.empty(); }

std::vector<int> ConflictCells(const PuzzleModel& model) {
  std::vector<int> cells;
  for (int p = 0; p <= model.LastPosition; ++p) {
    if (!IsCell(model, p) || !IsDigitText(model, model.PosText[p])) continue;
    bool clash = false;
    for (int k : LinesThrough(model, p)) {
      if (k != p && model.PosText[k] == model.PosText[p]) clash = true;
    }
    // Sign slots beside p: left and up hold "<" or "^" when p is the larger.
    const std::array<std::pair<int, int>, 4> sides = {
        {{model.LeftOf[p], model.LeftOf[p] >= 0 ? model.LeftOf[model.LeftOf[p]] : -1},
         {model.RightOf[p], model.RightOf[p] >= 0 ? model.RightOf[model.RightOf[p]] : -1},
         {model.UpOf[p], model.UpOf[p] >= 0 ? model.UpOf[model.UpOf[p]] : -1},
         {model.DownOf[p], model.DownOf[p] >= 0 ? model.DownOf[model.DownOf[p]] : -1}}};
    for (std::size_t s = 0; s < sides.size(); ++s) {
      const auto [slot, other] = sides[s];
      if (slot < 0 || other < 0 || model.PosText[slot].size() != 1) continue;
      const char sign = model.PosText[slot][0];
      // Which sign says p is the smaller one, seen from this side.
      const char smaller = s == 0 ? '>' : s == 1 ? '<' : s == 2 ? 'v' : '^';
      const char larger = s == 0 ? '<' : s == 1 ? '>' : s == 2 ? '^' : 'v';
      if (sign == smaller && !SignHolds(model, p, other, true)) clash = true;
      if (sign == larger && !SignHolds(model, p, other, false)) clash = true;
    }
    if (clash) cells.push_back(p);
  }
  return cells;
}

DigitCheck CheckPlayerDigits(const CoachState& coach, const PuzzleModel& model) {
  DigitCheck check;
  std::vector<std::string> solution(kPositionCount);
  bool stored = false;
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (IsCell(model, k) && IsDigitText(model, model.SolutionText[k])) {
      solution[k] = model.SolutionText[k];
      stored = true;
    }
  }
  if (!stored) {
    // Search from the clues and signs only: a wrong digit of the player's would leave
    // nothing to compare with.
    PuzzleModel puzzle = model;
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (IsCell(model, k) && !coach.ClueCell[k]) puzzle.PosText[k].clear();
    }
    const SolutionCount found = CountSolutions(puzzle, 1);
    if (found.count == 0 || found.first.empty()) return check;
    for (int k = 0; k <= model.LastPosition; ++k) solution[k] = found.first[static_cast<std::size_t>(k)];
  }
  check.solutionFound = true;
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (!IsCell(model, k) || coach.ClueCell[k] || !IsDigitText(model, model.PosText[k])) continue;
    ++check.checked;
    if (model.PosText[k] != solution[k]) check.wrong.push_back(k);
  }
  return check;
}

std::string DigitCheckText(const DigitCheck& check) {
  if (!check.solutionFound) return "There is no solution to compare your digits with";
  if (check.checked == 0) return "There are no digits of yours to check";
  if (check.wrong.empty()) {
    return check.checked == 1 ? "Your digit agrees with the solution"
                              : "All " + std::to_string(check.checked) + " of your digits agree with the solution";
  }
  if (check.checked == 1) return "Your digit is wrong (marked)";
  return std::to_string(check.wrong.size()) + " of your " + std::to_string(check.checked) + " digits " +
         (check.wrong.size() == 1 ? "is" : "are") + " wrong (marked)";
}

}  // namespace qm
