// The "Sort Puzzle File" dialog's commands: the sort itself under the busy pointer with
// its closing message, and the dialog's two choosers.
#pragma once

#include <string>

#include "collections/sort_file.h"
#include "core/puzzle_model.h"
#include "core/window_port.h"

namespace qm {

// "Sort": sorts as SortCollection does and shows its message.
SortOutcome SortPuzzleFile(PuzzleModel& model, WindowPort& port, const SortRequest& request);

// The dialog's two choosers ("Select sort input file", "Select sort output file").
std::string ChooseSortInput(const PuzzleModel& model, WindowPort& port);
std::string ChooseSortOutput(const PuzzleModel& model, WindowPort& port);

}  // namespace qm
