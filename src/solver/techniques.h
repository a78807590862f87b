// The six deduction techniques. Each works on the whole grid, narrows candidate texts
// in place and adds one to ChangeCount for every text it replaces. In step mode every
// change is first shown to the user with its explanation line.
//
// Rows and columns are named by their layout index (1, 3, 5, ...) in the explanations.
#pragma once

#include <array>
#include <string_view>

#include "core/puzzle_model.h"
#include "core/run_hooks.h"

namespace qm {

// Naked singles: a fixed digit leaves the other cells of its row and column.
void RemoveSingles(PuzzleModel& model, RunHooks& run);
// Signs: the greater cell stays above the smaller cell's lowest candidate, the smaller
// below the greater's highest.
void OrderPropagate(PuzzleModel& model, RunHooks& run);
// The same, one explained change at a time.
void OrderPropagateExplained(PuzzleModel& model, RunHooks& run);
// A digit with a single place in a row or column goes there.
void HiddenSingle(PuzzleModel& model, RunHooks& run);
// Two, three or four cells of a line sharing the same two, three or four candidates.
void NakedPair(PuzzleModel& model, RunHooks& run);
void NakedTriple(PuzzleModel& model, RunHooks& run);
void NakedQuad(PuzzleModel& model, RunHooks& run);

// The status line of a step: line + ", new candidate: " + new text.
std::string StepStatusText(const SolveStep& step);

enum class Technique {
  RemoveSingles,
  OrderPropagate,
  OrderPropagateExplained,
  HiddenSingle,
  NakedPair,
  NakedTriple,
  NakedQuad,
};
inline constexpr int kTechniqueCount = 7;
inline constexpr std::array<std::string_view, kTechniqueCount> kTechniqueNames = {
    "RemoveSingles", "OrderPropagate", "OrderPropagateExplained", "HiddenSingle",
    "NakedPair",     "NakedTriple",    "NakedQuad"};

}  // namespace qm
