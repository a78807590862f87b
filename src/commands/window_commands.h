// The window's commands that are not about one collection or the solver: start-up,
// the arrow buttons, reading a print range, and Exit.
#pragma once

#include <functional>
#include <string>

#include "commands/run_control.h"
#include "core/puzzle_model.h"
#include "core/window_port.h"
#include "settings/colour_schemes.h"

namespace qm {

// Reads the settings and the colour scheme, and loads puzzle 1 of the current
// collection (the shipped "puzzles.fut" when the remembered one is missing or empty).
void StartUp(PuzzleModel& model, ColourTable& colours, WindowPort& port);

// Moves to the puzzle numbered `number` (from the command line). A number that is not
// there is reported and puzzle 1 is shown again; false then.
bool StartOnPuzzle(PuzzleModel& model, WindowPort& port, const std::string& number);

// The five arrow buttons (0 previous, 1 first, 2 next, 3 last, 4 random): they move
// through the collection, or set the pace while a paced solve runs.
void PressArrow(PuzzleModel& model, RunControl& run, int index);

// Reads puzzles first..last of the current collection in one pass, each into a model of
// its own that `take` is handed with its ordinal; the shown puzzle and its edits stay as
// they are. `take` returns a message to stop on (a puzzle that cannot be printed), else
// nothing. Cancel stops the reading. False, after the message of a record that cannot
// be read or of `take`, or quietly after a cancel: then nothing is to be printed.
bool ReadPrintRange(const PuzzleModel& model, RunControl& run, int first, int last,
                    const std::function<std::string(PuzzleModel&, int)>& take);

// What the puzzle-number box shows: the current puzzle's number, or nothing while the
// grid is not a record of the file (a new grid, a puzzle just made).
std::string PuzzleNumberText(const PuzzleModel& model);

// Quillmere -> "Exit": after "Exit?", writes the settings, removes the delete command's
// scratch file and stops whatever runs. False when the user said No.
bool ExitCommand(PuzzleModel& model, RunControl& run);

}  // namespace qm
