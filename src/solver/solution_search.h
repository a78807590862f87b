// An exact count of a puzzle's solutions by search. It answers what the deduction
// techniques cannot ("is this stalled puzzle really ambiguous?"); it never decides
// whether a puzzle is unique: that stays "solved by the techniques".
#pragma once

#include <atomic>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "core/puzzle_model.h"
#include "solver/digit_masks.h"

namespace qm {

struct SearchOptions {
  int limit = 2;                              // stop once this many are found (at least 1)
  double timeLimitSeconds = 0;                // 0: no limit
  const std::atomic<bool>* cancel = nullptr;  // polled between nodes
};

struct SolutionCount {
  int count = 0;
  // False when the search stopped early: at the limit, out of time or cancelled.
  bool complete = true;
  bool timedOut = false;
  bool cancelled = false;
  long long nodes = 0;             // search nodes visited
  std::vector<std::string> first;  // every position's text in the first solution, or empty
};

// How the search spends its effort. Most grids are settled within a few dozen nodes by
// cheap reasoning; past `strongAfterNodes` every node reasons about whole lines and
// digits, and until a first solution turns up the search starts over now and then
// (after `restartNodes` nodes times 1, 1, 2, 1, 1, 2, 4, ...), keeping what it learnt.
// The defaults are tuned on the benchmark; tests change them to reach the later stages
// on small grids.
struct SearchTuning {
  long long strongAfterNodes = 64;
  long long restartNodes = 50;
};

// Counts the grids that complete the shown puzzle. A cell showing one digit is fixed,
// a candidate list restricts its cell, and the signs in the sign slots must hold.
// Deterministic: the same grid gives the same count, first solution and node count.
SolutionCount CountSolutions(const PuzzleModel& model, const SearchOptions& options,
                             const SearchTuning& tuning = SearchTuning{});
// The same count on a bare grid, for callers that ask thousands of times (creation):
// the candidates of cell row * n + column, and each sign as (greater cell, smaller cell).
// `first` is left empty.
SolutionCount CountSolutions(int n, std::span<const masks::DigitMask> cells,
                             std::span<const std::pair<int, int>> signs, const SearchOptions& options,
                             const SearchTuning& tuning = SearchTuning{});
// The same, and the first solution's cells (one digit each) written to `first` (n * n
// entries) when one is found: creation keeps them to refute later removals without a search.
SolutionCount CountSolutions(int n, std::span<const masks::DigitMask> cells,
                             std::span<const std::pair<int, int>> signs, const SearchOptions& options,
                             std::span<masks::DigitMask> first);
inline SolutionCount CountSolutions(const PuzzleModel& model, int limit) {
  SearchOptions options;
  options.limit = limit;
  return CountSolutions(model, options);
}

}  // namespace qm
