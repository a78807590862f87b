// A new puzzle for the web page, of a size and within a range of grades, made by the
// generator's creation by grade.
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

// minGrade and maxGrade are rungs; minGrade 0 takes any grade from Gentle to Expert.
WebCreation CreateForWeb(int size, int minGrade, int maxGrade, std::uint64_t seed);

}  // namespace qm::web
