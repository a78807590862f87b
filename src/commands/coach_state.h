// What the window keeps for a player beside the puzzle model: the player's own pencil
// marks, where each shown digit came from (a clue, the player, a solve), and an undo
// history that reverts and redoes whole player actions, pencil marks included.
//
// Pencil marks belong to the player alone: they are not the solver's candidate strings
// (which live in PosText) and are never written to a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/puzzle_model.h"
#include "core/window_port.h"

namespace qm {

// Bit d (1..9) set when the player marked digit d.
using MarkBits = std::uint16_t;
constexpr MarkBits MarkBit(int digit) { return static_cast<MarkBits>(1u << digit); }

enum class DigitOrigin { None, Clue, Player, Solver };

struct CoachState {
  PerPosition<MarkBits> Marks{};
  // The clues of the puzzle as it was read or made, and the cells the player filled:
  // entered digits become clue values in the model, so the model cannot tell them apart.
  PerPosition<bool> ClueCell{};
  PerPosition<bool> PlayerCell{};

  bool PencilMode = false;
  int HighlightDigit = 0;       // every cell holding or marking it is lit; 0 for none
  bool LiveConflicts = false;   // mark clashing digits as they are entered
  bool AllowAnyDigit = false;   // digit keys place any digit; clashes are ringed, not refused
  std::vector<int> WrongCells;  // the player's digits "Check my digits" found wrong

  // One player action: what it changed besides the model's own undo list.
  struct Flags {
    PerPosition<MarkBits> marks{};
    PerPosition<bool> clue{};
    PerPosition<bool> player{};
  };
  struct Action {
    Flags before;
    int entries = 0;  // entries the action put on the model's UndoList
  };
  struct Reverted {
    Flags after;
    std::vector<std::pair<int, std::string>> texts;  // position and text, in entry order
  };
  std::vector<Action> Done;
  std::vector<Reverted> Undone;
};

// A new puzzle is shown: marks and history go, the shown digits are its clues.
void PuzzleReplaced(CoachState& coach, const PuzzleModel& model);

// Where the digit shown at cell k comes from; `shown` is what the grid draws there.
DigitOrigin OriginOf(const CoachState& coach, const PuzzleModel& model, int k, const std::string& shown);

// The player's entries through the cell and sign menus (and the keys that stand for
// them), recorded as actions. A digit placed in a cell is taken out of the pencil marks
// of its row and column. True when the model took the entry.
bool PlayerCellChoice(CoachState& coach, PuzzleModel& model, WindowPort& port, int p, const std::string& choice);
bool PlayerSignChoice(CoachState& coach, PuzzleModel& model, WindowPort& port, int p, const std::string& choice);
// A digit key on cell p: as the cell menu's digit, or, under AllowAnyDigit, any digit of
// the grid's size in any cell that is not a clue.
bool PlayerKeyDigit(CoachState& coach, PuzzleModel& model, WindowPort& port, int p, int digit);

// Pencil marks. Cells that show a digit take no marks.
bool ToggleMark(CoachState& coach, const PuzzleModel& model, int p, int digit);
// Marks every empty cell with the digits its row, column and signs still allow.
void FillAllCandidates(CoachState& coach, const PuzzleModel& model);
void ClearMarks(CoachState& coach);
// Removes digits from the marks of cell p (used when a step rules them out). When the
// cell had no marks it first gets `candidates`, so the removal shows.
void RemoveMarks(CoachState& coach, int p, const std::string& candidates, const std::string& digits);

// Makes one deduction step for the player, as one action for Undo: the digits it places
// are entered through the cell menu, the digits it rules out leave the pencil marks.
// False when the model refused a digit (the player's grid contradicts the step).
bool ApplyStep(CoachState& coach, PuzzleModel& model, WindowPort& port,
               const std::vector<std::pair<int, int>>& placed,
               const std::vector<std::pair<int, std::string>>& removed);

// Undo and Redo of whole actions. Entries the history does not know (made elsewhere)
// are undone one by one as the model's own Undo does.
void CoachUndo(CoachState& coach, PuzzleModel& model, WindowPort& port);
void CoachRedo(CoachState& coach, PuzzleModel& model, WindowPort& port);
bool CanRedo(const CoachState& coach);

// Cells whose digit clashes with another digit of its row or column or breaks a sign
// to a neighbour that shows a digit.
std::vector<int> ConflictCells(const PuzzleModel& model);

// Compares the player's digits with the stored solution, or, when none is stored, with
// the first solution a search finds from the clues and signs. `solutionFound` is false
// when neither exists.
struct DigitCheck {
  bool solutionFound = false;
  int checked = 0;
  std::vector<int> wrong;
};
DigitCheck CheckPlayerDigits(const CoachState& coach, const PuzzleModel& model);
// The status line after a check.
std::string DigitCheckText(const DigitCheck& check);

}  // namespace qm
