// A new puzzle for the web page, of a size and within a range of grades. Kept apart so
// that it can hand over to the graded creation of the generator as one call.
#pragma once

#include <cstdint>
#include <string>

#include "core/puzzle_model.h"
#include "reasoning/ladder.h"

namespace qm::web {

struct WebCreation {
  bool ok = false;
  std::string error;
  PuzzleModel puzzle;  // clues, signs and the solution
  reasoning::Grade grade;
  int tries = 0;
};

// minGrade and maxGrade are rungs; 0 and 0 (or minGrade 0) take any grade.
WebCreation CreateForWeb(int size, int minGrade, int maxGrade, std::uint64_t seed);

}  // namespace qm::web
