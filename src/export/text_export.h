// The text drawing of a puzzle and its stored solution: every cell a box of "+", "-"
// and "|", the signs in the gaps between the boxes. Meant for people; never read back.
#pragma once

#include <string>

#include "core/puzzle_model.h"

namespace qm {

// N boxes "+---+" three blanks apart; empty for a size outside 3..9.
std::string BorderLine(int n);

// Layout row r (1..L) drawn as a line of boxes, without the margin and with its
// trailing blanks stripped. The puzzle shows clues and signs only; the solution shows
// the stored characters, "." as a blank.
std::string GridRowLine(const PuzzleModel& model, int r, bool solution);

// The whole file: the puzzle section, two empty lines, the solution section, an empty
// line and the footer, every line ended by CR LF. `description` is written as it stands
// (Windows-1252 bytes).
std::string TextDrawing(const PuzzleModel& model, const std::string& description, int number);

}  // namespace qm
