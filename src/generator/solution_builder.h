// A random complete solution with every sign it implies: a fixed Latin square per size,
// its rows and columns exchanged at random, then a sign between every pair of
// neighbouring cells, each queued under a random key that fixes the order in which
// reduction later tries to remove it.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "core/puzzle_model.h"

namespace qm {

// One Latin square per grid size 3..9, indexed N-3, listed row by row.
inline constexpr std::array<std::string_view, 7> SeedSquares = {
    "321132213",
    "2431431231241243",
    "2145352314452313412513542",
    "514632326541245316631425163254452163",
    "6354721741263547213563146572523716415632472675413",
    "7281345621438765532618741765438264375218461825378572614338547621",
    "752391468569127834813254679985612743476835921341968257127483596634579182298746315",
};

// A draw uniform 1..m from the model's generator: Int(r * m) + 1, at most m.
int RandomDraw(PuzzleModel& model, int m);

// Exchanges cell row 1 with a cell row drawn uniform 1..N (a draw of 1 changes nothing).
void SwapRandomRow(PuzzleModel& model);
// The same for cell column 1.
void SwapRandomColumn(PuzzleModel& model);

// Sign candidates in ascending text order. Each entry is a two-digit random key
// "00".."97", the sign's position as "000", and the sign character; the key first
// makes the order random, and equal keys fall back to the position.
using SignQueue = std::vector<std::string>;

// The sign position of a queue entry (its characters 3..5).
int QueuedPosition(std::string_view entry);

// Blanks the layout, lays the seed square for N into the cells, scrambles it in 2N
// passes of SwapRandomRow and SwapRandomColumn, and writes the sign between every pair
// of neighbouring cells, queueing each one. Every clue value becomes 0.
void BuildSolution(PuzzleModel& model, SignQueue& queue);

}  // namespace qm
