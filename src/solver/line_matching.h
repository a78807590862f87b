// Up to nine cells and the digits they may hold: which candidates some way of giving
// every cell its own digit uses. The exact search narrows lines with it; the ladder asks
// it whether a line, or one digit's places across the lines, leaves any subset or fish
// something to strike.
#pragma once

#include <array>

#include "core/puzzle_model.h"
#include "solver/digit_masks.h"

namespace qm {

using LineMasks = std::array<masks::DigitMask, kMaxGridSize>;

// Keeps exactly the candidates that some assignment of distinct digits to all the cells
// uses (a perfect matching through that pair), for up to nine cells whose candidates
// are digit bits 1..9. With one matching in hand, a cell may also take the digit matched
// to a cell it can displace in a cycle: cell i may take match(j) when i can take it and
// j can reach back to i. Returns the changed cells (bit i for cell i), or -1 when no
// assignment is left.
int KeepMatched(LineMasks& m, int n);

// Whether KeepMatched would keep every candidate.
bool AllMatched(const LineMasks& m, int n);

// True only when every candidate surely lies in some assignment, seen from how many
// candidates each cell has and in how many cells each digit may go: a quick answer for
// most settled lines, false (not known) for the rest.
bool MatchedByCounting(const LineMasks& m, int n);

}  // namespace qm
