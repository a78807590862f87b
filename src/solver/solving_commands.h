// The user's commands around the solver: entering a digit, a sign or a hint through the
// context menus, undo, the pace of a paced solve, cancel and the view of the stored
// solution. Each reports through the window port.
#pragma once

#include <string>

#include "core/puzzle_model.h"
#include "core/window_port.h"

namespace qm {

// The five navigation buttons, which set the pace while a paced solve runs.
enum class PaceButton { Previous = 0, First = 1, Next = 2, Last = 3, Random = 4 };

// Changes the pacing interval ("<" slower by 200 ms, "|<" fastest, ">" faster by
// 200 ms, ">|" slowest, "><" 4 s), after "Discard all changes?" when there are entries
// to undo. False when the user said No.
bool ChangePace(PuzzleModel& model, WindowPort& port, PaceButton button);

// Cancel: ends a paced solve (clearing every cell that is not a clue), or asks a running
// solve or creation to stop.
void CancelCommand(PuzzleModel& model, WindowPort& port);

// A choice from the cell menu of cell p: "Clear", a digit, "Hint", "-" or "Cancel".
void CellMenuChoice(PuzzleModel& model, WindowPort& port, int p, const std::string& choice);
// A choice from the sign menu of sign position p: "<", ">", "^", "v", "Clear", "-" or
// "Cancel".
void SignMenuChoice(PuzzleModel& model, WindowPort& port, int p, const std::string& choice);

// Puts back the text the newest entry replaced.
void UndoEntry(PuzzleModel& model, WindowPort& port);

// Shows the stored solution over the grid, or, when it is shown, puts the grid back.
void ToggleSolutionView(PuzzleModel& model, WindowPort& port);

}  // namespace qm
