#include "web_create.h"

#include <atomic>

#include "generator/graded_creation.h"

namespace qm::web {

namespace {

// "Any" aims at one grade drawn from the seed, so that a run of new puzzles varies; a
// grade the size cannot reach soon falls back to the whole range.
constexpr int kAnyTries = 200;

WebCreation Finish(const GradedResult& result) {
  WebCreation made;
  made.tries = result.tries;
  if (!result.made) {
    made.error = result.reason;
    return made;
  }
  made.ok = true;
  LoadGraded(made.puzzle, result.puzzle);
  made.grade.level = result.grade;
  made.grade.name = result.gradeName;
  made.grade.score = result.score;
  return made;
}

}  // namespace

WebCreation CreateForWeb(int size, int minGrade, int maxGrade, std::uint64_t seed) {
  GradedOptions options;
  options.size = size;
  if (minGrade > 0) {
    options.minGrade = minGrade;
    options.maxGrade = maxGrade < minGrade ? minGrade : maxGrade;
    if (const std::string conflict = GradedConflict(options); !conflict.empty()) {
      WebCreation refused;
      refused.error = conflict;
      return refused;
    }
    return Finish(CreateGraded(options, seed));
  }
  const int span = reasoning::kContradiction - reasoning::kSingles + 1;
  options.minGrade = options.maxGrade = reasoning::kSingles + static_cast<int>(seed % static_cast<std::uint64_t>(span));
  options.maxTries = kAnyTries;
  if (GradedConflict(options).empty()) {
    const GradedResult aimed = CreateGraded(options, seed);
    if (aimed.made) return Finish(aimed);
  }
  options.minGrade = reasoning::kSingles;
  options.maxGrade = reasoning::kContradiction;
  options.maxTries = 0;
  return Finish(CreateGraded(options, seed));
}

}  // namespace qm::web
