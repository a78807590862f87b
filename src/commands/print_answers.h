// Every printed puzzle comes with its answer: the one its record stores, else the one
// the exact search finds. A puzzle that has no solution, or more than one, cannot be
// printed with an answer and is refused before anything is printed.
#pragma once

#include <string>

#include "core/puzzle_model.h"

namespace qm {

// Gives the model a whole solution when it holds none (or only part of one): the exact
// search's, for the clues and signs alone (digits the user entered do not count).
// Empty on success, else the message naming puzzle `number`.
std::string CompleteSolution(PuzzleModel& model, int number);

}  // namespace qm
