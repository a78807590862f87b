// The fast search against the plain one it replaced, on random grids of every size
// and kind, and the search's own promises: the limit, time limit, cancel, the same
// answer every time.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "solver/solution_search.h"
#include "support/random_square.h"
#include "support/reference_search.h"
#include "support/test_grids.h"

namespace qm {
namespace {


int CellValue(const PuzzleModel& m, const std::vector<int>& square, int k) {
  return square[static_cast<std::size_t>((m.RowOf[k] - 1) / 2 * m.GridSize + (m.ColOf[k] - 1) / 2)];
}

enum class Kind { SignsOnly, Clues, Contradictory, Solved, Candidates };

// A random grid: signs from a random square (consistent) or of random direction
// (mostly inconsistent when dense), at a random density, plus the kind's cell texts.
PuzzleModel RandomGrid(std::mt19937& random, int n, Kind kind) {
  PuzzleModel m;
  SetSize(m, n);
  const std::vector<int> square = test::RandomSquare(n, random);
  const double density = std::uniform_real_distribution<double>(0.0, 1.0)(random);
  const bool consistent = random() % 3 != 0;
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  // Big clue-less grids with sparse random signs are where the plain search drowns;
  // some clues keep the reference within reach there.
  const double clueShare = kind == Kind::SignsOnly ? 0.0 : kind == Kind::Solved ? 1.0 : unit(random) * 0.5;
  for (int k = 0; k <= m.LastPosition; ++k) {
    const PositionKind pk = KindOf(m, k);
    if (pk == PositionKind::HorizontalSign || pk == PositionKind::VerticalSign) {
      if (unit(random) >= density) continue;
      const bool horizontal = pk == PositionKind::HorizontalSign;
      const int a = CellValue(m, square, horizontal ? m.LeftOf[k] : m.UpOf[k]);
      const int b = CellValue(m, square, horizontal ? m.RightOf[k] : m.DownOf[k]);
      const bool increasing = consistent ? a < b : random() % 2 == 0;
      m.PosText[k] = horizontal ? (increasing ? "<" : ">") : (increasing ? "^" : "v");
    } else if (pk == PositionKind::Cell && unit(random) < clueShare) {
      const int digit = kind == Kind::Contradictory && random() % 4 == 0 ? static_cast<int>(1 + random() % n)
                                                                         : CellValue(m, square, k);
      m.PosText[k] = std::to_string(digit);
    } else if (pk == PositionKind::Cell && kind == Kind::Candidates && random() % 3 == 0) {
      std::string list;
      for (int d = 1; d <= n; ++d) {
        if (d == CellValue(m, square, k) || random() % 2 == 0) list += static_cast<char>('0' + d);
      }
      m.PosText[k] = list;
    }
  }
  return m;
}

// The first solution completes the grid: a Latin square within every cell's text that
// obeys every sign.
bool Completes(const PuzzleModel& m, const std::vector<std::string>& first) {
  const int n = m.GridSize;
  for (int i = 1; i <= n; ++i) {
    std::string row;
    std::string col;
    for (int j = 1; j <= n; ++j) {
      const int rk = CellPosition(m, i, j);
      const int ck = CellPosition(m, j, i);
      row += first[static_cast<std::size_t>(rk)];
      col += first[static_cast<std::size_t>(ck)];
      const std::string& given = m.PosText[rk];
      if (!given.empty() && given.find(first[static_cast<std::size_t>(rk)]) == std::string::npos) return false;
    }
    std::sort(row.begin(), row.end());
    std::sort(col.begin(), col.end());
    if (row != m.AllDigits || col != m.AllDigits) return false;
  }
  for (int k = 0; k <= m.LastPosition; ++k) {
    const std::string& t = m.PosText[k];
    if (!IsSignSlot(m, k) || t.empty()) continue;
    const bool horizontal = KindOf(m, k) == PositionKind::HorizontalSign;
    const std::string& a = first[static_cast<std::size_t>(horizontal ? m.LeftOf[k] : m.UpOf[k])];
    const std::string& b = first[static_cast<std::size_t>(horizontal ? m.RightOf[k] : m.DownOf[k])];
    if ((t == "<" || t == "^") != (a < b)) return false;
  }
  return true;
}

TEST(ExactSearch, AgreesWithThePlainSearchOnRandomGridsOfEverySize) {
  std::mt19937 random(20261122);
  constexpr long kReferenceBudget = 1500;
  int compared = 0;
  int beyondReference = 0;
  int withSolutions = 0;
  for (int trial = 0; trial < 21000; ++trial) {
    const int n = 3 + trial % 7;
    const Kind kind = static_cast<Kind>(random() % 5);
    const PuzzleModel m = RandomGrid(random, n, kind);
    const int limit = 1 + static_cast<int>(random() % 3);
    const SolutionCount reference = ReferenceCountSolutions(m, limit, kReferenceBudget);
    const SolutionCount fast = CountSolutions(m, limit);
    if (fast.count > 0) {
      ASSERT_TRUE(Completes(m, fast.first)) << "trial " << trial;
      ++withSolutions;
    }
    if (reference.nodes > kReferenceBudget) {
      ++beyondReference;
      continue;
    }
    ++compared;
    ASSERT_EQ(fast.count, reference.count) << "trial " << trial << " size " << n;
    ASSERT_EQ(fast.complete, reference.complete) << "trial " << trial;
  }
  EXPECT_GE(compared, 20000);
  EXPECT_GE(withSolutions, 5000);
  RecordProperty("beyond_reference", beyondReference);
}

// The same comparison with the full reasoning from the first node and a restart every
// few nodes, so that small grids go through every stage: ordered lines, digit places,
// restarts and what they learn.
TEST(ExactSearch, AgreesWithThePlainSearchWhenEveryStageStartsAtOnce) {
  std::mt19937 random(20261123);
  SearchTuning eager;
  eager.strongAfterNodes = 0;
  eager.restartNodes = 2;
  int compared = 0;
  int restarted = 0;
  for (int trial = 0; trial < 2500; ++trial) {
    const int n = 3 + trial % 7;
    const Kind kind = static_cast<Kind>(random() % 5);
    const PuzzleModel m = RandomGrid(random, n, kind);
    SearchOptions options;
    options.limit = 1 + static_cast<int>(random() % 3);
    const SolutionCount reference = ReferenceCountSolutions(m, options.limit, 1500);
    const SolutionCount fast = CountSolutions(m, options, eager);
    if (fast.count > 0) {
      ASSERT_TRUE(Completes(m, fast.first)) << "trial " << trial;
    }
    if (fast.nodes > eager.restartNodes) ++restarted;
    if (reference.nodes > 1500) continue;
    ++compared;
    ASSERT_EQ(fast.count, reference.count) << "trial " << trial << " size " << n;
    ASSERT_EQ(fast.complete, reference.complete) << "trial " << trial;
  }
  RecordProperty("compared", compared);
  RecordProperty("restarted", restarted);
  EXPECT_GE(compared, 2300);
  EXPECT_GE(restarted, 400);
}

// Clue-less 9x9 sign patterns that once took the plain search from seconds to minutes:
// the slowest inputs found by the benchmark's sweeps, kept so they stay fast. Where the
// plain search settles one within a small budget, the two must agree.
TEST(ExactSearch, HardSignPatternsFinishWithFewNodes) {
  struct Case {
    std::vector<std::string> rows;
    int solutions;
  };
  const std::vector<Case> cases = {
#include "solver/hard_sign_patterns.inc"
  };
  for (const Case& c : cases) {
    const PuzzleModel m = test::Grid(c.rows);
    const SolutionCount result = CountSolutions(m, 2);
    EXPECT_EQ(result.count, c.solutions) << c.rows[0];
    EXPECT_LT(result.nodes, 5000) << c.rows[0];
    constexpr long kReferenceBudget = 10000;
    const SolutionCount reference = ReferenceCountSolutions(m, 2, kReferenceBudget);
    if (reference.nodes <= kReferenceBudget) {
      EXPECT_EQ(result.count, reference.count) << c.rows[0];
    }
  }
}

TEST(ExactSearch, SameAnswerEveryTimeAndStopsWhenAsked) {
  PuzzleModel m;
  SetSize(m, 9);
  const SolutionCount a = CountSolutions(m, 2);
  const SolutionCount b = CountSolutions(m, 2);
  EXPECT_EQ(a.first, b.first);
  EXPECT_EQ(a.nodes, b.nodes);
  EXPECT_FALSE(a.timedOut);

  // An empty 9x9 has far more solutions than any search can count.
  SearchOptions timed;
  timed.limit = 1000000000;
  timed.timeLimitSeconds = 0.05;
  const SolutionCount out = CountSolutions(m, timed);
  EXPECT_TRUE(out.timedOut);
  EXPECT_FALSE(out.complete);
  EXPECT_GT(out.count, 0);

  std::atomic<bool> cancel{true};
  SearchOptions cancelled;
  cancelled.cancel = &cancel;
  const SolutionCount none = CountSolutions(m, cancelled);
  EXPECT_TRUE(none.cancelled);
  EXPECT_FALSE(none.complete);
  EXPECT_EQ(none.count, 0);
}

}  // namespace
}  // namespace qm
