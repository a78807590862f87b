// The solve driver: the techniques in sweeps until a sweep changes nothing, then the
// rule check says solved (99), stalled (1) or broken (-1). No guess is ever made, so
// a puzzle is unique exactly when the techniques finish it.
#pragma once

#include <array>
#include <string>

#include "core/puzzle_model.h"
#include "core/window_port.h"
#include "solver/techniques.h"

namespace qm {

struct SolveOutcome {
  int status = 0;
  int sweeps = 0;  // sweeps that changed something
  std::string message;
  std::array<int, kTechniqueCount> changes{};  // changes made by each technique
};

// Runs on prepared candidates (PrepareCandidates first). A cancel request is seen at
// the start of each sweep and returns "Canceled" with the grid as it stands.
SolveOutcome SolveByLogic(PuzzleModel& model, WindowPort& port);

// The same solve on the texts alone, as step mode runs it. SolveByLogic sweeps on digit
// masks when the texts allow it; this is the reference it must agree with.
SolveOutcome SolveByLogicOnTexts(PuzzleModel& model, WindowPort& port);

inline constexpr std::string_view kOutcomeDone = "Done";
inline constexpr std::string_view kOutcomeMultiple = "This puzzle has multiple solutions";
inline constexpr std::string_view kOutcomeInvalid = "This is not a valid puzzle";
inline constexpr std::string_view kOutcomeSolvedAlready = "Solved already?";

struct AutoSolveResult {
  SolveOutcome solve;
  std::string outcome;  // the message the command shows
};

// Solve -> "Auto (no pause)": prepares, solves and shows the outcome; keeps the solved
// texts, or puts back the texts from before the command when the solve fails.
AutoSolveResult AutoSolve(PuzzleModel& model, WindowPort& port);

inline constexpr std::string_view kPacedSolvePrompt =
    "Press SpaceBar to continue, Pause Interval: |<Max, >|Min, <larger, >smaller, ><4 secs";

// Solve -> "Auto (with pause)": waits for the first go-on, then solves with every
// change explained and paced.
AutoSolveResult PacedAutoSolve(PuzzleModel& model, WindowPort& port);

}  // namespace qm
