// The ladder's driver: the rung table, one step at a time (always the easiest the rungs
// find), and the grid's way in and out. The techniques live one family to a file.
#include "reasoning/ladder.h"

#include <algorithm>
#include <string_view>

#include "reasoning/ladder_internal.h"
#include "solver/grid_masks.h"
#include "solver/solution_search.h"

namespace qm::reasoning {

using namespace internal;

namespace {

constexpr const char* kRungNames[] = {"Solved", "Gentle",   "Easy",   "Moderate", "Tough",
                                      "Hard",   "Fiendish", "Expert", "Master",   "Needs search"};
constexpr double kRungWeights[] = {0, 1, 2, 3, 5, 8, 13, 21, 34, 55};
static_assert(std::size(kRungNames) == kTopRung + 1 && std::size(kRungWeights) == kTopRung + 1);

using Technique = bool (*)(const Grid&, Step&, Memo&, const Scope&);

// Most of rungs 1 to 5 need nothing remembered.
template <bool (*Find)(const Grid&, Step&, const Scope&)>
bool Easy(const Grid& g, Step& step, Memo&, const Scope& scope) {
  return Find(g, step, scope);
}

// Rungs 6 to 8 look at the whole grid.
template <bool (*Find)(const Grid&, Step&, Memo&)>
bool Whole(const Grid& g, Step& step, Memo& memo, const Scope&) {
  return Find(g, step, memo);
}

struct NamedTechnique {
  std::string_view name;
  Technique find;
};

// The ladder, easiest first; NextStep takes the first that finds something.
constexpr NamedTechnique kLadder[] = {{"Naked single", Easy<NakedSingle>},
                                      {"Hidden single", Easy<HiddenSingle>},
                                      {"Sign beside a digit", SignBesideDigit},
                                      {"Sign chain", SignChain},
                                      {"Sign bounds", SignBounds},
                                      {"Naked pair", NakedPair},
                                      {"Hidden pair", HiddenPair},
                                      {"Naked triple", NakedTriple},
                                      {"Hidden triple", HiddenTriple},
                                      {"Naked quad", NakedQuad},
                                      {"Hidden quad", HiddenQuad},
                                      {"X-wing", XWing},
                                      {"Swordfish", Swordfish},
                                      {"Forcing chain", Whole<ForcingChain>},
                                      {"Contradiction", Whole<ContradictionQuick>},
                                      {"Deep contradiction", Whole<ContradictionDeep>},
                                      {"Nested contradiction", Whole<NestedContradiction>}};
static_assert(kLadder[kBelowChains].name == "Forcing chain");
// Inside an assumption of rung 8 the ladder climbs no higher than rung 7.
constexpr std::size_t kBelowMaster = std::size(kLadder) - 1;

}  // namespace

bool internal::EasyStep(const Grid& g, Step& step, Memo& memo, const Scope& scope) {
  for (std::size_t t = 0; t < kBelowChains; ++t) {
    if (kLadder[t].find(g, step, memo, scope)) return true;
  }
  return false;
}

bool internal::EasyStepSince(const Grid& g, Step& step, Memo& memo, std::array<Scope, kBelowChains>& since) {
  for (std::size_t t = 0; t < kBelowChains; ++t) {
    if (!since[t].Empty() && kLadder[t].find(g, step, memo, since[t])) return true;
    since[t] = kNothing;
  }
  return false;
}

void internal::SkipSettledRungs(std::array<Scope, kBelowChains>& since) {
  static_assert(kLadder[0].name == "Naked single" && kLadder[1].name == "Hidden single" &&
                kLadder[2].name == "Sign beside a digit" && kLadder[4].name == "Sign bounds");
  for (const std::size_t t : {0u, 1u, 2u, 4u}) since[t] = kNothing;
}

namespace {

bool NextStep(const Grid& grid, Step& step, Memo& memo, std::size_t techniques = std::size(kLadder)) {
  for (std::size_t t = 0; t < techniques; ++t) {
    if (t >= kBelowChains) {
      if (kLadder[t].find(grid, step, memo, kWholeGrid)) return true;
      continue;
    }
    const Scope& scope = memo.Since(grid, t);
    if (!scope.Empty() && kLadder[t].find(grid, step, memo, scope)) return true;
    memo.FoundNothing(t);
  }
  return false;
}

}  // namespace

bool internal::StepBelowMaster(const Grid& g, Step& step, Memo& memo, bool deep) {
  if (deep) return NextStep(g, step, memo, kBelowMaster);
  static_assert(kLadder[kBelowChains + 1].name == "Contradiction");
  return NextStep(g, step, memo, kBelowChains) || kLadder[kBelowChains + 1].find(g, step, memo, kWholeGrid);
}

std::string RungName(int rung) { return kRungNames[std::clamp(rung, 0, kTopRung)]; }
double RungWeight(int rung) { return kRungWeights[std::clamp(rung, 0, kTopRung)]; }

std::string CellName(int n, int cell) {
  // Rows and columns count to 9 at most: one digit each, and no allocation.
  std::string name = "row 0, column 0";
  name[4] = static_cast<char>('1' + cell / n);
  name[14] = static_cast<char>('1' + cell % n);
  return name;
}

Grid GridFromModel(const PuzzleModel& model) {
  Grid g;
  g.n = model.GridSize;
  const int n = g.n;
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      const std::string& text = model.PosText[CellPosition(model, i, j)];
      const auto c = static_cast<std::size_t>((i - 1) * n + (j - 1));
      g.cand[c] = CellMask(text, n);
      g.placed[c] = text.size() == 1 && text[0] >= '1' && text[0] - '0' <= n;
    }
  }
  // Placed digits leave their lines at once: nobody counts that as a step.
  for (int c = 0; c < n * n; ++c) {
    if (!g.placed[static_cast<std::size_t>(c)]) continue;
    for (int i = 0; i < n; ++i) {
      for (const int peer : {c / n * n + i, i * n + c % n}) {
        if (peer != c && !g.placed[static_cast<std::size_t>(peer)]) {
          g.cand[static_cast<std::size_t>(peer)] &= static_cast<DigitMask>(~g.cand[static_cast<std::size_t>(c)]);
        }
      }
    }
  }
  ForEachSign(model, [&](int greater, int smaller) { g.AddSign(greater, smaller); });
  return g;
}

void StoreGrid(const Grid& grid, PuzzleModel& model) {
  const int n = grid.n;
  for (int c = 0; c < n * n; ++c) {
    std::string text;
    masks::ForEachDigit(grid.cand[static_cast<std::size_t>(c)], [&](int d) { text += static_cast<char>('0' + d); });
    model.PosText[CellPosition(model, c / n + 1, c % n + 1)] = text;
  }
}

bool IsSolved(const Grid& grid) { return AllPlaced(grid) && !IsBroken(grid); }

bool IsBroken(const Grid& grid) {
  const int n = grid.n;
  // Rows and columns in one pass over the cells: the ladder asks after every step.
  std::array<DigitMask, 2 * kMaxGridSize> seen{};
  std::array<DigitMask, 2 * kMaxGridSize> placed{};
  for (int row = 0, c = 0; row < n; ++row) {
    for (int column = n; column < 2 * n; ++column, ++c) {
      const DigitMask m = grid.cand[static_cast<std::size_t>(c)];
      if (m == 0) return true;
      const auto r = static_cast<std::size_t>(row);
      const auto k = static_cast<std::size_t>(column);
      seen[r] |= m;
      seen[k] |= m;
      if (grid.placed[static_cast<std::size_t>(c)]) {
        if (((placed[r] | placed[k]) & m) != 0) return true;
        placed[r] |= m;
        placed[k] |= m;
      }
    }
  }
  for (int l = 0; l < 2 * n; ++l) {
    if (seen[static_cast<std::size_t>(l)] != masks::Full(n)) return true;
  }
  for (const Sign& s : grid.SignList()) {
    const auto gi = static_cast<std::size_t>(s.greater);
    const auto si = static_cast<std::size_t>(s.smaller);
    if (masks::Highest(grid.cand[gi]) <= masks::Lowest(grid.cand[si])) return true;
  }
  return false;
}

bool NextStep(const Grid& grid, Step& step) {
  Memo memo;
  return NextStep(grid, step, memo);
}

bool TryTechnique(const Grid& grid, std::string_view name, Step& step) {
  Memo memo;
  for (const NamedTechnique& technique : kLadder) {
    if (technique.name == name) return technique.find(grid, step, memo, kWholeGrid);
  }
  return false;
}

void Apply(Grid& grid, const Step& step) {
  for (const auto& [cell, digits] : step.removed) {
    grid.cand[static_cast<std::size_t>(cell)] &= static_cast<DigitMask>(~digits);
  }
  for (const auto& [cell, digit] : step.placed) {
    grid.cand[static_cast<std::size_t>(cell)] = masks::Bit(digit);
    grid.placed[static_cast<std::size_t>(cell)] = true;
  }
}

Explanation Explain(const Grid& start, const ExplainOptions& options) {
  Explanation out;
  Grid grid = start;
  Memo memo;
  out.steps.reserve(static_cast<std::size_t>(std::min(options.maxSteps, 2 * Cells(grid))));
  bool broken = IsBroken(grid);
  while (!broken && !AllPlaced(grid) && static_cast<int>(out.steps.size()) < options.maxSteps) {
    if (options.cancel != nullptr && options.cancel->load(std::memory_order_relaxed)) {
      out.cancelled = true;
      break;
    }
    Step step;
    if (!NextStep(grid, step, memo)) break;
    if (step.level > options.stopAbove) {
      out.stopped = true;
      break;
    }
    Apply(grid, step);
    // A grid that held breaks only where the step changed it.
    broken = BrokenWithin(grid, memo.Applied(step, grid), memo);
    out.grade.level = std::max(out.grade.level, step.level);
    out.grade.score += RungWeight(step.level);
    out.steps.push_back(std::move(step));
    if (options.keepGrids) out.after.push_back(grid);
  }
  out.broken = IsBroken(grid);
  out.solved = !out.broken && IsSolved(grid);
  out.needsSearch = !out.solved && !out.broken && !out.cancelled && !out.stopped;
  if (out.needsSearch || out.broken) out.grade.level = kNeedsSearch;
  out.grade.needsSearch = out.needsSearch || out.broken;
  out.grade.name = RungName(out.grade.level);
  out.final = grid;
  return out;
}

Explanation ExplainModel(const PuzzleModel& model, const ExplainOptions& options) {
  Explanation out = Explain(GridFromModel(model), options);
  if (!out.needsSearch) return out;
  // The search takes over from where the ladder stopped.
  PuzzleModel rest = model;
  StoreGrid(out.final, rest);
  SearchOptions search;
  search.limit = 1;
  search.cancel = options.cancel;
  const SolutionCount found = CountSolutions(rest, search);
  if (found.count > 0) {
    for (int c = 0; c < out.final.n * out.final.n; ++c) {
      const int k = CellPosition(model, c / out.final.n + 1, c % out.final.n + 1);
      out.final.cand[static_cast<std::size_t>(c)] = masks::Bit(found.first[static_cast<std::size_t>(k)][0] - '0');
      out.final.placed[static_cast<std::size_t>(c)] = true;
    }
  }
  return out;
}

}  // namespace qm::reasoning
