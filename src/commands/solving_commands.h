// The user's commands around the solver: auto and paced solving, entering a digit, a
// sign or a hint through the context menus, undo, the pace of a paced solve, cancel and
// the view of the stored solution. Each reports through the window port.
#pragma once

#include <string>
#include <string_view>

#include "core/puzzle_model.h"
#include "commands/run_control.h"
#include "core/window_port.h"
#include "solver/solve_driver.h"

namespace qm {

// The five navigation buttons, which set the pace while a paced solve runs.
enum class PaceButton { Previous = 0, First = 1, Next = 2, Last = 3, Random = 4 };

inline constexpr std::string_view kOutcomeDone = "Done";
inline constexpr std::string_view kOutcomeMultiple = "This puzzle has multiple solutions";
inline constexpr std::string_view kOutcomeInvalid = "This is not a valid puzzle";
inline constexpr std::string_view kOutcomeSolvedAlready = "Solved already?";

struct AutoSolveResult {
  SolveOutcome solve;
  std::string outcome;  // the message the command shows
};

// Solve -> "Auto (no pause)": prepares, solves and shows the outcome; keeps the solved
// texts, or puts back the texts from before the command when the solve fails. In step
// mode every change is explained and paced.
AutoSolveResult AutoSolve(PuzzleModel& model, RunControl& run);

inline constexpr std::string_view kPacedSolvePrompt =
    "Press SpaceBar to continue, Pause Interval: |<Max, >|Min, <larger, >smaller, ><4 secs";

// Solve -> "Auto (with pause)": waits for the first go-on, then solves with every
// change explained and paced.
AutoSolveResult PacedAutoSolve(PuzzleModel& model, RunControl& run);

// Draws `text` (trimmed of blanks) at position k.
void ShowCellText(WindowPort& port, int k, std::string_view text);
// Draws every position from the model.
void ShowAllPositions(const PuzzleModel& model, WindowPort& port);

// Placing `sign` at position p: returns p when accepted, or -1 after showing the error
// ("< error", "^ error", "v error") in the status line.
int CheckSignEntry(const PuzzleModel& model, WindowPort& port, int p, char sign);

// Changes the pacing interval ("<" slower by 200 ms, "|<" fastest, ">" faster by
// 200 ms, ">|" slowest, "><" 4 s), after "Discard all changes?" when there are entries
// to undo. False when the user said No.
bool ChangePace(PuzzleModel& model, WindowPort& port, PaceButton button);

// Cancel: ends a paced solve (clearing every cell that is not a clue), or asks a running
// solve or creation to stop.
void CancelCommand(PuzzleModel& model, RunControl& run);

// A choice from the cell menu of cell p: "Clear", a digit, "Hint", "-" or "Cancel".
void CellMenuChoice(PuzzleModel& model, WindowPort& port, int p, const std::string& choice);
// A choice from the sign menu of sign position p: "<", ">", "^", "v", "Clear", "-" or
// "Cancel".
void SignMenuChoice(PuzzleModel& model, WindowPort& port, int p, const std::string& choice);

// A digit key under Options -> "Allow Any Digit": digit goes into cell p as a menu entry
// does (undoable), whatever its row, column and signs say.
void EnterAnyDigit(PuzzleModel& model, WindowPort& port, int p, int digit);

// Puts back the text the newest entry replaced.
void UndoEntry(PuzzleModel& model, WindowPort& port);

// Shows the stored solution over the grid, or, when it is shown, puts the grid back.
void ToggleSolutionView(PuzzleModel& model, WindowPort& port);

}  // namespace qm
