// The window's own commands on the grid: Verify, a new empty grid, the three clear
// commands and the status text shown while the mouse moves over a cell.
#pragma once

#include <string>

#include "core/puzzle_model.h"
#include "commands/run_control.h"
#include "core/window_port.h"

namespace qm {

// Verify: shows the outcome of the rule checks; a faulty position is painted in the
// error colour while its message is on screen.
void Verify(const PuzzleModel& model, WindowPort& port);

// "New Grid" entry i ("3x3" is 0 ... "9x9" is 6; the separator and "Cancel" do nothing).
void NewGrid(PuzzleModel& model, WindowPort& port, int entry);

// Each asks its question first; any answer but Yes leaves the grid as it is.
void ClearNumbers(PuzzleModel& model, WindowPort& port);      // "Clear All Numbers?": clues stay
void ClearConstraints(PuzzleModel& model, WindowPort& port);  // "Clear All Constraints?"
void ClearGrid(PuzzleModel& model, WindowPort& port);         // "Clear Entire Grid?"

// "Row=3, Col=5, Candidates= 124" for a cell that shows something, while no paced solve
// runs; empty otherwise.
std::string MouseStatusText(const PuzzleModel& model, const RunControl& run, int k);

}  // namespace qm
