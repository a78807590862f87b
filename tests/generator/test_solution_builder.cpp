#include "generator/solution_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "core/text_rules.h"

namespace qm {
namespace {

// The cells as N strings of N digits, row by row.
std::vector<std::string> CellRows(const PuzzleModel& model) {
  std::vector<std::string> rows;
  for (int row = 1; row <= model.LayoutExtent; row += 2) {
    std::string digits;
    for (int col = 1; col <= model.LayoutExtent; col += 2) digits += model.PosText[model.PositionOf[row][col]];
    rows.push_back(digits);
  }
  return rows;
}

std::vector<std::string> SeedRows(int n) {
  std::vector<std::string> rows;
  const std::string_view seed = SeedSquares[static_cast<std::size_t>(n - 3)];
  for (int i = 0; i < n; ++i) rows.emplace_back(seed.substr(static_cast<std::size_t>(i * n), static_cast<std::size_t>(n)));
  return rows;
}

bool IsLatin(const std::vector<std::string>& rows) {
  const std::size_t n = rows.size();
  for (std::size_t i = 0; i < n; ++i) {
    std::set<char> row(rows[i].begin(), rows[i].end());
    std::set<char> col;
    for (std::size_t j = 0; j < n; ++j) col.insert(rows[j][i]);
    if (rows[i].size() != n || row.size() != n || col.size() != n || *row.begin() != '1' ||
        *row.rbegin() != static_cast<char>('0' + n) || *col.begin() != '1') {
      return false;
    }
  }
  return true;
}

// True when `rows` is the seed square with its rows and columns permuted (digits never
// relabelled): the first row fixes the column order, then every row must be a seed row.
bool IsSeedPermuted(const std::vector<std::string>& rows, int n) {
  const auto seed = SeedRows(n);
  for (const std::string& first : seed) {
    std::vector<std::size_t> columns;
    for (char d : rows[0]) columns.push_back(first.find(d));
    bool all = true;
    for (const std::string& row : rows) {
      all = all && std::any_of(seed.begin(), seed.end(), [&](const std::string& s) {
              for (std::size_t j = 0; j < columns.size(); ++j) {
                if (s[columns[j]] != row[j]) return false;
              }
              return true;
            });
    }
    if (all) return true;
  }
  return false;
}

TEST(SeedSquares, EveryOneIsALatinSquareOfItsSize) {
  for (int n = 3; n <= 9; ++n) {
    EXPECT_EQ(SeedSquares[static_cast<std::size_t>(n - 3)].size(), static_cast<std::size_t>(n * n)) << n;
    EXPECT_TRUE(IsLatin(SeedRows(n))) << n;
  }
}

TEST(RandomDraw, StaysWithinOneToMAndReachesBothEnds) {
  PuzzleModel model;
  SeedRandom(model, 3);
  for (int m : {1, 2, 7, 98}) {
    std::set<int> seen;
    for (int i = 0; i < 3000; ++i) seen.insert(RandomDraw(model, m));
    EXPECT_EQ(*seen.begin(), 1) << m;
    EXPECT_EQ(*seen.rbegin(), m) << m;
    EXPECT_EQ(static_cast<int>(seen.size()), m) << m;
  }
}

// Only row 1 (or column 1) ever changes places, with one other line or none.
TEST(SwapRandomLines, ExchangeOnlyTheFirstLineWithAnother) {
  PuzzleModel model;
  SeedRandom(model, 11);
  SetSize(model, 6);
  SignQueue queue;
  BuildSolution(model, queue);
  for (int round = 0; round < 40; ++round) {
    const bool rows = round % 2 == 0;
    const auto before = CellRows(model);
    rows ? SwapRandomRow(model) : SwapRandomColumn(model);
    auto after = CellRows(model);
    auto line = [&](const std::vector<std::string>& grid, int i) {
      std::string text;
      for (int j = 0; j < 6; ++j) text += rows ? grid[i][j] : grid[j][i];
      return text;
    };
    int moved = -1;
    for (int i = 1; i < 6; ++i) {
      if (line(after, i) != line(before, i)) {
        EXPECT_EQ(moved, -1) << "two lines besides the first moved";
        moved = i;
      }
    }
    if (moved < 0) {
      EXPECT_EQ(after, before);
    } else {
      EXPECT_EQ(line(after, 0), line(before, moved));
      EXPECT_EQ(line(after, moved), line(before, 0));
    }
  }
}

TEST(BuildSolution, ScrambledSeedWithEverySignQueued) {
  PuzzleModel model;
  SeedRandom(model, 5);
  for (int n = 3; n <= 9; ++n) {
    SCOPED_TRACE(n);
    SetSize(model, n);
    model.GivenValue[0] = 7;
    SignQueue queue;
    queue.push_back("stale");
    BuildSolution(model, queue);
    const auto rows = CellRows(model);
    EXPECT_TRUE(IsLatin(rows));
    EXPECT_TRUE(IsSeedPermuted(rows, n));
    EXPECT_EQ(model.GivenValue[0], 0);

    ASSERT_EQ(queue.size(), static_cast<std::size_t>(2 * n * (n - 1)));
    EXPECT_TRUE(std::is_sorted(queue.begin(), queue.end()));
    std::set<int> slots;
    for (const std::string& entry : queue) {
      ASSERT_EQ(entry.size(), 6u) << entry;
      const int key = IntegerValue(entry.substr(0, 2));
      const int slot = QueuedPosition(entry);
      EXPECT_TRUE(key >= 0 && key <= 97 && IsSignSlot(model, slot)) << entry;
      EXPECT_EQ(entry.substr(5), model.PosText[slot]) << entry;
      slots.insert(slot);
    }
    EXPECT_EQ(slots.size(), queue.size());

    // Every slot holds the sign its two digits imply; corners stay empty.
    for (int k = 0; k <= model.LastPosition; ++k) {
      const std::string& t = model.PosText[k];
      switch (KindOf(model, k)) {
        case PositionKind::HorizontalSign:
          EXPECT_EQ(t, model.PosText[model.LeftOf[k]] < model.PosText[model.RightOf[k]] ? "<" : ">") << k;
          break;
        case PositionKind::VerticalSign:
          EXPECT_EQ(t, model.PosText[model.UpOf[k]] < model.PosText[model.DownOf[k]] ? "^" : "v") << k;
          break;
        case PositionKind::Corner:
          EXPECT_EQ(t, "") << k;
          break;
        case PositionKind::Cell:
          break;
      }
    }
  }
}

TEST(BuildSolution, TheSameSeedBuildsTheSameSolutionAndQueue) {
  PuzzleModel a;
  PuzzleModel b;
  SignQueue qa;
  SignQueue qb;
  for (PuzzleModel* m : {&a, &b}) {
    SeedRandom(*m, 99);
    SetSize(*m, 7);
  }
  BuildSolution(a, qa);
  BuildSolution(b, qb);
  EXPECT_EQ(a.PosText, b.PosText);
  EXPECT_EQ(qa, qb);
  BuildSolution(b, qb);  // the next attempt starts again from the seed, with new draws
  EXPECT_NE(qa, qb);
}

}  // namespace
}  // namespace qm
