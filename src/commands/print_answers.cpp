#include "commands/print_answers.h"

#include "solver/solution_search.h"

namespace qm {

namespace {

bool HoldsWholeSolution(const PuzzleModel& model) {
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (!IsCell(model, k)) continue;
    const std::string& s = model.SolutionText[static_cast<std::size_t>(k)];
    if (s.size() != 1 || s[0] < '1' || s[0] > static_cast<char>('0' + model.GridSize)) return false;
  }
  return true;
}

}  // namespace

std::string CompleteSolution(PuzzleModel& model, int number) {
  if (HoldsWholeSolution(model)) return {};
  // The puzzle as printed: its clues and signs, none of the player's digits or marks.
  PuzzleModel clues = model;
  for (int k = 0; k <= clues.LastPosition; ++k) {
    if (!IsCell(clues, k)) continue;
    const int given = clues.GivenValue[static_cast<std::size_t>(k)];
    clues.PosText[static_cast<std::size_t>(k)] = given > 0 ? std::to_string(given) : std::string();
  }
  const SolutionCount found = CountSolutions(clues, 2);
  const std::string name = "Puzzle " + std::to_string(number);
  if (found.count == 0) return name + " cannot be printed: it has no solution";
  if (found.count > 1) return name + " cannot be printed: it has more than one solution";
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (IsCell(model, k)) model.SolutionText[static_cast<std::size_t>(k)] = found.first[static_cast<std::size_t>(k)];
  }
  return {};
}

}  // namespace qm
