// The puzzle and its stored solution as a one-sheet BIFF2 worksheet: every layout
// position a bordered, centred text cell, so that the sheet shows the grid as boxes.
#pragma once

#include <string>

#include "core/puzzle_model.h"

namespace qm {

// Writes the worksheet to `path` (an existing file of that name is deleted first).
// Records that fail are skipped as the writer reports them; false only when the file
// could not be created or completed.
bool WriteXlsFile(const PuzzleModel& model, const std::string& description, int number, const std::string& path);

}  // namespace qm
