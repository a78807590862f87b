// Grids for tests, drawn as their layout rows.
#pragma once

#include <string>
#include <vector>

#include "core/puzzle_model.h"

namespace qm::test {

// One character per layout position, "." for an empty one; N follows from the rows.
PuzzleModel Grid(const std::vector<std::string>& rows);

// Cell texts in row-major order (candidate lists allowed), "" or "." for empty.
void SetCells(PuzzleModel& model, const std::vector<std::string>& texts);

}  // namespace qm::test
