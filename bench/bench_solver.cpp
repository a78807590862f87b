// Solve speed is creation speed: a 9x9 puzzle costs about 145 logic solves to make.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <numeric>
#include <random>

#include "core/puzzle_model.h"
#include "core/rule_checks.h"
#include "solver/candidates.h"
#include "solver/solution_search.h"
#include "solver/solve_driver.h"

// Counts heap allocations, to show that a solve makes none. (g++ cannot see that the
// replaced new and delete below belong together.)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
namespace {
std::atomic<long> allocations{0};
}
void* operator new(std::size_t size) {
  ++allocations;
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using Texts = qm::PerPosition<std::string>;

// A random 9x9 solution (rows, columns and digits of a cyclic square permuted) with
// every sign it implies.
void MakeSolution(qm::PuzzleModel& m, std::mt19937& random) {
  const int n = m.GridSize;
  std::vector<int> rows(static_cast<std::size_t>(n));
  std::vector<int> cols(rows.size());
  std::vector<int> digits(rows.size());
  std::iota(rows.begin(), rows.end(), 0);
  std::iota(cols.begin(), cols.end(), 0);
  std::iota(digits.begin(), digits.end(), 1);
  std::shuffle(rows.begin(), rows.end(), random);
  std::shuffle(cols.begin(), cols.end(), random);
  std::shuffle(digits.begin(), digits.end(), random);
  qm::ClearPositions(m);
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      const int d = digits[static_cast<std::size_t>((rows[static_cast<std::size_t>(i - 1)] + cols[static_cast<std::size_t>(j - 1)]) % n)];
      m.PosText[qm::CellPosition(m, i, j)] = std::to_string(d);
    }
  }
  for (int k = 0; k <= m.LastPosition; ++k) {
    const auto kind = qm::KindOf(m, k);
    if (kind == qm::PositionKind::HorizontalSign) {
      m.PosText[k] = m.PosText[m.LeftOf[k]] < m.PosText[m.RightOf[k]] ? "<" : ">";
    } else if (kind == qm::PositionKind::VerticalSign) {
      m.PosText[k] = m.PosText[m.UpOf[k]] < m.PosText[m.DownOf[k]] ? "^" : "v";
    }
  }
}

bool Solves(qm::PuzzleModel& m) {
  qm::PrepareCandidates(m);
  return qm::SolveByLogic(m).status == qm::kSolved;
}

// 9x9 puzzles as creation tries them: 12 clues and every sign (the first trial), and the
// same with the signs removed one by one in random order for as long as the logic still
// finishes the puzzle (the hardest, last trials).
std::vector<Texts> MakePuzzles(bool reduce) {
  {
    std::vector<Texts> set;
    std::mt19937 random(reduce ? 2026 : 2027);
    qm::PuzzleModel m;
    qm::SetSize(m, 9);
    while (set.size() < 16) {
      MakeSolution(m, random);
      std::vector<int> cells;
      std::vector<int> signs;
      for (int k = 0; k <= m.LastPosition; ++k) {
        if (qm::IsCell(m, k)) cells.push_back(k);
        if (qm::IsSignSlot(m, k)) signs.push_back(k);
      }
      std::shuffle(cells.begin(), cells.end(), random);
      for (std::size_t i = 12; i < cells.size(); ++i) m.PosText[static_cast<std::size_t>(cells[i])].clear();
      Texts puzzle = m.PosText;
      if (!Solves(m)) continue;
      if (!reduce) {
        set.push_back(puzzle);
        continue;
      }
      std::shuffle(signs.begin(), signs.end(), random);
      for (int slot : signs) {
        m.PosText = puzzle;
        m.PosText[static_cast<std::size_t>(slot)].clear();
        if (Solves(m)) puzzle[static_cast<std::size_t>(slot)].clear();
      }
      set.push_back(puzzle);
    }
    return set;
  }
}

void BM_LogicSolve9x9(benchmark::State& state) {
  static const std::vector<Texts> allSigns = MakePuzzles(false);
  static const std::vector<Texts> reduced = MakePuzzles(true);
  const auto& puzzles = state.range(0) == 0 ? allSigns : reduced;
  state.SetLabel(state.range(0) == 0 ? "12 clues, every sign" : "12 clues, signs reduced");
  qm::PuzzleModel m;
  qm::SetSize(m, 9);
  std::size_t i = 0;
  long solveAllocations = 0;
  long sweeps = 0;
  for (auto _ : state) {
    m.PosText = puzzles[i++ % puzzles.size()];
    qm::PrepareCandidates(m);
    const long before = allocations.load();
    const qm::SolveOutcome outcome = qm::SolveByLogic(m);
    solveAllocations += allocations.load() - before;
    sweeps += outcome.sweeps;
    if (outcome.status != qm::kSolved) state.SkipWithError("a reduced puzzle did not solve");
  }
  state.counters["allocs/solve"] = benchmark::Counter(static_cast<double>(solveAllocations),
                                                      benchmark::Counter::kAvgIterations);
  state.counters["sweeps/solve"] = benchmark::Counter(static_cast<double>(sweeps), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_LogicSolve9x9)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

void BM_Solutions9x9FewSigns(benchmark::State& state) {
  std::mt19937 random(99);
  qm::PuzzleModel m;
  qm::SetSize(m, 9);
  MakeSolution(m, random);
  std::vector<int> signs;
  for (int k = 0; k <= m.LastPosition; ++k) {
    if (qm::IsCell(m, k)) m.PosText[k].clear();
    if (qm::IsSignSlot(m, k)) signs.push_back(k);
  }
  std::shuffle(signs.begin(), signs.end(), random);
  for (std::size_t i = 12; i < signs.size(); ++i) m.PosText[static_cast<std::size_t>(signs[i])].clear();
  for (auto _ : state) benchmark::DoNotOptimize(qm::CountSolutions(m, 2));
}
BENCHMARK(BM_Solutions9x9FewSigns)->Unit(benchmark::kMillisecond);

}  // namespace
