// What an exact search says about a puzzle the six techniques could not finish.
#pragma once

#include <string>
#include <string_view>

#include "core/puzzle_model.h"

namespace qm {

// Follows the message box's "This puzzle has multiple solutions", which only says the
// six techniques stopped: the line tells the rest of that story.
inline constexpr std::string_view kVerdictUnique =
    "The six techniques stop here, yet the puzzle has exactly one solution: Next Step (F3) explains the "
    "rest";
inline constexpr std::string_view kVerdictSeveral = "A search finds at least two solutions";
inline constexpr std::string_view kVerdictNone = "A search finds no solution";

// The status line after Auto-solve reported "This puzzle has multiple solutions": the
// search runs on the texts as the command left them (put back as they were before it).
std::string StallVerdict(const PuzzleModel& model);

}  // namespace qm
