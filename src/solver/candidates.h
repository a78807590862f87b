// Candidates: what the solver knows about every cell, kept as the cell's text: a string
// of the digits still possible, in the order they were produced (never sorted). A text
// of one character is a fixed cell; an empty text after preparation is a contradiction.
#pragma once

#include <string>
#include <string_view>

#include "core/puzzle_model.h"

namespace qm {

// Empty cells get every digit; the smaller-neighbour lists are rebuilt from the signs
// (one entry per sign, on the list of the cell that must be greater).
void PrepareCandidates(PuzzleModel& model);

// The digits of `a`, in order, below the largest digit of `b` (none when `b` is empty).
std::string MaxBelow(std::string_view a, std::string_view b);
// The digits of `a`, in order, above the smallest digit of `b` (none when `b` is empty).
std::string MinAbove(std::string_view a, std::string_view b);
// `a` without any character that occurs in `s`.
std::string StripDigits(std::string_view a, std::string_view s);

// Every cell's text in row-major order, each followed by ",".
std::string SaveCandidates(const PuzzleModel& model);
void RestoreCandidates(PuzzleModel& model, std::string_view snapshot);

// How a position's text is drawn: one character bold and large, candidates small on one
// line, or, past five of them, the first five over the rest.
struct CellLook {
  std::string text;  // may hold one "\n"
  bool bold = false;
  int pointSize = 0;  // 0 when nothing is shown
};
CellLook CellTextLook(std::string_view text);

// The digits a cell can take, given the fixed digits of its row and column and its
// four signs. A cell that shows a digit gets "" (its own digit removes itself).
std::string CellCandidates(const PuzzleModel& model, int cell);

// Placing `sign` at position p: "" when accepted, else the error ("< error", "^ error",
// "v error") the status line shows.
std::string SignEntryError(const PuzzleModel& model, int p, char sign);

// The candidates of a cell, or the first rule its own digit breaks. No command calls it:
// it is kept as part of the solver's interface.
std::string CheckCellEntry(const PuzzleModel& model, int cell);

}  // namespace qm
