// The solve driver: the techniques in sweeps until a sweep changes nothing, then the
// rule check says solved (99), stalled (1) or broken (-1). No guess is ever made, so
// a puzzle is unique exactly when the techniques finish it.
#pragma once

#include <array>
#include <string>

#include "core/puzzle_model.h"
#include "core/rule_checks.h"
#include "core/run_hooks.h"
#include "solver/techniques.h"

namespace qm {

struct SolveOutcome {
  SolveStatus status{};  // 0 until a solve ran
  int sweeps = 0;  // sweeps that changed something
  std::string message;
  std::array<int, kTechniqueCount> changes{};  // changes made by each technique
};

// Runs on prepared candidates (PrepareCandidates first). While the run explains, every
// change is shown and paced. A cancel request is seen at the start of each sweep and
// returns "Canceled" with the grid as it stands.
SolveOutcome SolveByLogic(PuzzleModel& model, RunHooks& run = QuietRun());

// The same solve on the texts alone, as step mode runs it. SolveByLogic sweeps on digit
// masks when the texts allow it; this is the reference it must agree with.
SolveOutcome SolveByLogicOnTexts(PuzzleModel& model, RunHooks& run = QuietRun());

}  // namespace qm
