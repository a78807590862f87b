#include "web_create.h"

#include "core/run_hooks.h"
#include "generator/create_puzzle.h"

namespace qm::web {

namespace {

// Each try is one creation and one grading; the page asks again when a range is rare.
constexpr int kMaxTries = 80;

}  // namespace

WebCreation CreateForWeb(int size, int minGrade, int maxGrade, std::uint64_t seed) {
  WebCreation made;
  if (size < kMinGridSize || size > kMaxGridSize) {
    made.error = "The size must be 3 to 9";
    return made;
  }
  const bool any = minGrade <= 0;
  if (!any && maxGrade < minGrade) maxGrade = minGrade;
  PuzzleModel& model = made.puzzle;
  SeedRandom(model, seed);
  Generator generator;
  generator.ClueSpec = kCluesByLevel;
  for (made.tries = 1; made.tries <= kMaxTries; ++made.tries) {
    // Fewer clues leave more to reason out: harder grades start from the fewest.
    const bool hard = !any && minGrade >= reasoning::kSubsets;
    generator.RequestedLevel = hard ? kVeryHard : kVeryHard + made.tries % kVeryEasy;
    SetSize(model, size);
    if (CreatePuzzle(model, QuietRun(), generator) != 99) continue;
    const reasoning::Explanation graded = reasoning::ExplainModel(model);
    made.grade = graded.grade;
    if (any || (graded.grade.level >= minGrade && graded.grade.level <= maxGrade)) {
      made.ok = true;
      return made;
    }
  }
  made.tries = kMaxTries;
  made.error = "No puzzle of grade " + reasoning::RungName(minGrade) +
               (maxGrade != minGrade ? " to " + reasoning::RungName(maxGrade) : std::string()) + " came in " +
               std::to_string(kMaxTries) + " tries: try again or choose another grade";
  return made;
}

}  // namespace qm::web
