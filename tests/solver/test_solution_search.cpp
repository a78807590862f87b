#include "solver/solution_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "solver/grid_masks.h"
#include "support/test_grids.h"

namespace qm {
namespace {

// Every Latin square of order n, by plain enumeration.
std::vector<std::vector<int>> LatinSquares(int n) {
  std::vector<std::vector<int>> squares;
  std::vector<int> grid(static_cast<std::size_t>(n * n), 0);
  auto fill = [&](auto&& self, int cell) -> void {
    if (cell == n * n) {
      squares.push_back(grid);
      return;
    }
    const int r = cell / n;
    const int c = cell % n;
    for (int v = 1; v <= n; ++v) {
      bool free = true;
      for (int i = 0; i < n && free; ++i) {
        free = grid[static_cast<std::size_t>(r * n + i)] != v && grid[static_cast<std::size_t>(i * n + c)] != v;
      }
      if (!free) continue;
      grid[static_cast<std::size_t>(cell)] = v;
      self(self, cell + 1);
      grid[static_cast<std::size_t>(cell)] = 0;
    }
  };
  fill(fill, 0);
  return squares;
}

bool Satisfies(const PuzzleModel& m, const std::vector<int>& square) {
  const int n = m.GridSize;
  auto value = [&](int k) { return square[static_cast<std::size_t>((m.RowOf[k] - 1) / 2 * n + (m.ColOf[k] - 1) / 2)]; };
  for (int k = 0; k <= m.LastPosition; ++k) {
    const std::string& t = m.PosText[k];
    if (t.empty()) continue;
    switch (KindOf(m, k)) {
      case PositionKind::Cell:
        if (t[0] - '0' != value(k)) return false;
        break;
      case PositionKind::HorizontalSign:
        if ((t == "<") != (value(m.LeftOf[k]) < value(m.RightOf[k]))) return false;
        break;
      case PositionKind::VerticalSign:
        if ((t == "^") != (value(m.UpOf[k]) < value(m.DownOf[k]))) return false;
        break;
      default:
        break;
    }
  }
  return true;
}

TEST(SolutionSearch, AgreesWithEnumerationOnSmallGrids) {
  std::mt19937 random(7);
  for (int n : {3, 4}) {
    const auto squares = LatinSquares(n);
    ASSERT_EQ(squares.size(), n == 3 ? 12u : 576u);
    for (int trial = 0; trial < (n == 3 ? 3000 : 600); ++trial) {
      PuzzleModel m;
      SetSize(m, n);
      for (int k = 0; k <= m.LastPosition; ++k) {
        const PositionKind kind = KindOf(m, k);
        const unsigned pick = random() % 6;
        if (kind == PositionKind::HorizontalSign && pick < 2) m.PosText[k] = pick == 0 ? "<" : ">";
        if (kind == PositionKind::VerticalSign && pick < 2) m.PosText[k] = pick == 0 ? "^" : "v";
        if (kind == PositionKind::Cell && random() % 8 == 0) m.PosText[k] = std::to_string(1 + random() % n);
      }
      const auto expected = std::count_if(squares.begin(), squares.end(), [&](const auto& s) { return Satisfies(m, s); });
      const SolutionCount counted = CountSolutions(m, 1000);
      ASSERT_EQ(counted.count, expected) << "size " << n << " trial " << trial;
      EXPECT_TRUE(counted.complete);
      if (expected > 0) {
        PuzzleModel first = m;
        for (int k = 0; k <= m.LastPosition; ++k) first.PosText[k] = counted.first[static_cast<std::size_t>(k)];
        std::vector<int> square;
        for (int k = 0; k <= m.LastPosition; ++k) {
          if (KindOf(m, k) == PositionKind::Cell) square.push_back(std::stoi(first.PosText[k]));
        }
        EXPECT_TRUE(Satisfies(m, square));
      } else {
        EXPECT_TRUE(counted.first.empty());
      }

      // The bare grid that hands its first solution back as cells: the same count, and
      // a grid that keeps every clue and sign; nothing written when there is none.
      std::vector<masks::DigitMask> cells(static_cast<std::size_t>(n * n));
      for (int k = 0; k <= m.LastPosition; ++k) {
        if (KindOf(m, k) == PositionKind::Cell) cells[static_cast<std::size_t>(CellIndex(m, k))] = CellMask(m.PosText[k], n);
      }
      std::vector<std::pair<int, int>> signs;
      ForEachSign(m, [&](int greater, int smaller) { signs.emplace_back(greater, smaller); });
      std::vector<masks::DigitMask> found(cells.size(), 0);
      SearchOptions options;
      options.limit = 1;
      ASSERT_EQ(CountSolutions(n, cells, signs, options, found).count, expected > 0 ? 1 : 0) << "trial " << trial;
      std::vector<int> square;
      for (const masks::DigitMask d : found) {
        EXPECT_TRUE(expected == 0 ? d == 0 : masks::Count(d) == 1) << "trial " << trial;
        square.push_back(masks::Lowest(d));
      }
      if (expected > 0) {
        EXPECT_TRUE(Satisfies(m, square)) << "trial " << trial;
      }
    }
  }
}

TEST(SolutionSearch, EveryFullySignedThreeByThree) {
  const auto squares = LatinSquares(3);
  PuzzleModel m;
  SetSize(m, 3);
  std::vector<int> slots;
  for (int k = 0; k <= m.LastPosition; ++k) {
    if (IsSignSlot(m, k)) slots.push_back(k);
  }
  ASSERT_EQ(slots.size(), 12u);
  int unique = 0;
  for (unsigned pattern = 0; pattern < (1u << slots.size()); ++pattern) {
    for (std::size_t i = 0; i < slots.size(); ++i) {
      const bool first = (pattern >> i & 1u) != 0;
      m.PosText[slots[i]] = KindOf(m, slots[i]) == PositionKind::HorizontalSign ? (first ? "<" : ">") : (first ? "^" : "v");
    }
    const auto expected = std::count_if(squares.begin(), squares.end(), [&](const auto& s) { return Satisfies(m, s); });
    ASSERT_EQ(CountSolutions(m, 20).count, expected) << pattern;
    unique += expected == 1 ? 1 : 0;
  }
  EXPECT_EQ(unique, 12 * 1);  // every square is the one solution of its own signs
}

TEST(SolutionSearch, StopsAtTheLimitAndSaysSo) {
  PuzzleModel m;
  SetSize(m, 9);
  const SolutionCount two = CountSolutions(m, 2);
  EXPECT_EQ(two.count, 2);
  EXPECT_FALSE(two.complete);
  ASSERT_EQ(two.first.size(), 289u);

  // A unique 4x4 stays complete at the limit it does not reach.
  PuzzleModel unique = test::Grid({"1.2.3.4", ".......", "2.1.4.3", ".......", "3.4.1.2", ".......", "4.3.2.1"});
  unique.PosText[0].clear();
  const SolutionCount one = CountSolutions(unique, 2);
  EXPECT_EQ(one.count, 1);
  EXPECT_TRUE(one.complete);
  EXPECT_EQ(one.first[0], "1");

  // Candidate lists restrict their cells; a digit beyond N leaves none.
  unique.PosText[0] = "23";
  EXPECT_EQ(CountSolutions(unique, 2).count, 0);
  unique.PosText[0] = "7";
  EXPECT_EQ(CountSolutions(unique, 2).count, 0);
}

}  // namespace
}  // namespace qm
