// What every created puzzle must be, whatever asked for it.
#pragma once

#include <gtest/gtest.h>

#include "core/puzzle_model.h"

namespace qm::test {

// The stored solution is a Latin square that satisfies every sign of the puzzle, the
// clues are its digits, every other cell is blank, and the logic solve finishes the
// puzzle from its clues and signs alone, to exactly that solution.
::testing::AssertionResult IsSoundPuzzle(const PuzzleModel& model);

}  // namespace qm::test
