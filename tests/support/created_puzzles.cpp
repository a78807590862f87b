#include "support/created_puzzles.h"

#include <set>
#include <string>

#include "core/headless_port.h"
#include "core/rule_checks.h"
#include "core/text_rules.h"
#include "solver/candidates.h"
#include "solver/solve_driver.h"

namespace qm::test {

namespace {

bool Satisfied(char sign, int before, int after) {
  return sign == '<' || sign == '^' ? before < after : before > after;
}

}  // namespace

::testing::AssertionResult IsSoundPuzzle(const PuzzleModel& model) {
  const int n = model.GridSize;
  const int l = model.LayoutExtent;
  auto digit = [&](int k) { return IntegerValue(model.SolutionText[k]); };
  for (int line = 1; line <= l; line += 2) {
    std::set<int> rowDigits;
    std::set<int> colDigits;
    for (int other = 1; other <= l; other += 2) {
      rowDigits.insert(digit(model.PositionOf[line][other]));
      colDigits.insert(digit(model.PositionOf[other][line]));
    }
    if (static_cast<int>(rowDigits.size()) != n || *rowDigits.begin() != 1 || *rowDigits.rbegin() != n ||
        static_cast<int>(colDigits.size()) != n || *colDigits.begin() != 1 || *colDigits.rbegin() != n) {
      return ::testing::AssertionFailure() << "the solution is not a Latin square at layout line " << line;
    }
  }
  for (int k = 0; k <= model.LastPosition; ++k) {
    const std::string& text = model.PosText[k];
    const PositionKind kind = KindOf(model, k);
    if (kind == PositionKind::Cell) {
      const bool clue = model.GivenValue[k] != 0;
      if (clue ? text != model.SolutionText[k] || model.GivenValue[k] != digit(k) : !text.empty()) {
        return ::testing::AssertionFailure() << "cell " << k << " holds \"" << text << "\", clue value "
                                             << model.GivenValue[k] << ", solution " << model.SolutionText[k];
      }
    } else if (kind == PositionKind::Corner || text.empty()) {
      if (!text.empty()) return ::testing::AssertionFailure() << "corner " << k << " holds \"" << text << "\"";
    } else {
      const bool vertical = kind == PositionKind::VerticalSign;
      const int before = digit(vertical ? model.UpOf[k] : model.LeftOf[k]);
      const int after = digit(vertical ? model.DownOf[k] : model.RightOf[k]);
      const std::string_view signs = vertical ? "^v" : "<>";
      if (text.size() != 1 || signs.find(text[0]) == std::string_view::npos || text != model.SolutionText[k] ||
          !Satisfied(text[0], before, after)) {
        return ::testing::AssertionFailure() << "sign slot " << k << " holds \"" << text << "\" between "
                                             << before << " and " << after;
      }
    }
  }
  PuzzleModel solving = model;
  HeadlessPort port;
  PrepareCandidates(solving);
  const SolveOutcome outcome = SolveByLogic(solving, port);
  if (outcome.status != kSolved) {
    return ::testing::AssertionFailure() << "the logic solve ends with " << outcome.status << ": " << outcome.message;
  }
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (IsCell(model, k) && solving.PosText[k] != model.SolutionText[k]) {
      return ::testing::AssertionFailure() << "the logic solve puts " << solving.PosText[k] << " at " << k
                                           << ", the solution " << model.SolutionText[k];
    }
  }
  return ::testing::AssertionSuccess();
}

int CountedClues(const PuzzleModel& model) {
  int clues = 0;
  for (int k = 0; k <= model.LastPosition; ++k) clues += NumericValue(model.PosText[k]) > 0 ? 1 : 0;
  return clues;
}

}  // namespace qm::test
