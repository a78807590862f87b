// The two checks of the shown grid, and what Verify makes of them.
#pragma once

#include <string>

#include "core/puzzle_model.h"

namespace qm {

// What the full check and the solver find: solved, valid but not finished, or broken.
enum SolveStatus : int { kBroken = -1, kStalled = 1, kSolved = 99 };

struct CheckResult {
  std::string message;  // empty when nothing is wrong
  int result = kSolved;
};

// A 1 or an N next to a sign it cannot satisfy. result is 99, or the position of the
// first faulty cell with a message such as "<1 error" or ">4 error".
CheckResult CheckExtremes(const PuzzleModel& model);

// The full check: empty cells, the greater-than relations of SmallerList, repeated
// digits in rows and columns, completeness. result is -1 with a message, 1 (valid but
// not finished) or 99 (solved).
CheckResult CheckGrid(const PuzzleModel& model);

inline constexpr std::string_view kVerifiedSolved = "Puzzle appears to been solved";
inline constexpr std::string_view kVerifiedUnfinished =
    "Puzzle appears valid but solution not completed yet";

struct VerifyOutcome {
  std::string text;        // what the Verify command shows
  int errorPosition = -1;  // the position painted in the error colour, or -1
};

VerifyOutcome VerifyGrid(const PuzzleModel& model);

}  // namespace qm
