#include "core/puzzle_model.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace qm {
namespace {

TEST(Layout, SmallestAndLargestGrids) {
  PuzzleModel m;
  SetSize(m, 3);
  EXPECT_EQ(m.LastPosition, 24);
  EXPECT_EQ(m.AllDigits, "123");
  EXPECT_EQ(CellPosition(m, 2, 2), 12);
  EXPECT_EQ(KindOf(m, 12), PositionKind::Cell);
  EXPECT_EQ(KindOf(m, 1), PositionKind::HorizontalSign);  // between cells (1,1) and (1,2)
  EXPECT_EQ(KindOf(m, 5), PositionKind::VerticalSign);    // below cell (1,1)
  EXPECT_EQ(KindOf(m, 6), PositionKind::Corner);
  EXPECT_EQ(m.RightOf[m.RightOf[0]], 2);  // the cell beyond a sign
  EXPECT_EQ(m.DownOf[m.DownOf[0]], 10);
  SetSize(m, 9);
  EXPECT_EQ(m.LastPosition, 288);
  EXPECT_EQ(m.AllDigits, "123456789");
  EXPECT_EQ(m.RowOf[288], 17);
}

TEST(Layout, NeighbourTablesAreConsistentForEverySize) {
  PuzzleModel m;
  for (int n = kMinGridSize; n <= kMaxGridSize; ++n) {
    SetSize(m, n);
    const int l = m.LayoutExtent;
    for (int k = 0; k <= m.LastPosition; ++k) {
      const int row = m.RowOf[k];
      const int col = m.ColOf[k];
      ASSERT_EQ(m.PositionOf[row][col], k);
      EXPECT_EQ(m.LeftOf[k] == -1, col == 1);
      EXPECT_EQ(m.RightOf[k] == -1, col == l);
      EXPECT_EQ(m.UpOf[k] == -1, row == 1);
      EXPECT_EQ(m.DownOf[k] == -1, row == l);
      if (m.LeftOf[k] != -1) {
        EXPECT_EQ(m.RightOf[m.LeftOf[k]], k);
      }
      if (m.UpOf[k] != -1) {
        EXPECT_EQ(m.DownOf[m.UpOf[k]], k);
      }
      if (KindOf(m, k) == PositionKind::Corner) {
        for (int neighbour : {m.LeftOf[k], m.RightOf[k], m.UpOf[k], m.DownOf[k]}) {
          EXPECT_TRUE(IsSignSlot(m, neighbour));
        }
      }
    }
  }
}

TEST(Layout, SetSizeClearsEveryPositionAndRejectsOtherSizes) {
  PuzzleModel m;
  SetSize(m, 9);
  m.PosText[280] = "5";
  m.GivenValue[280] = 5;
  m.SmallerList[280] = "279";
  m.PosText[290] = "x";
  SetSize(m, 3);
  EXPECT_EQ(m.PosText[280], "");
  EXPECT_EQ(m.GivenValue[280], 0);
  EXPECT_EQ(m.SmallerList[280], "");
  EXPECT_EQ(m.PosText[290], "");
  EXPECT_THROW(SetSize(m, 2), std::out_of_range);
  EXPECT_THROW(SetSize(m, 10), std::out_of_range);
  EXPECT_EQ(m.GridSize, 3);
}

TEST(Layout, ModelsAreIndependent) {
  PuzzleModel a;
  PuzzleModel b;
  SetSize(b, 6);
  a.PosText[0] = "1";
  EXPECT_EQ(b.PosText[0], "");
  EXPECT_EQ(a.LastPosition, 48);

  SeedRandom(a, 42);
  SeedRandom(b, 42);
  for (int i = 0; i < 100; ++i) {
    const double r = RandomUniform(a);
    ASSERT_EQ(r, RandomUniform(b));
    ASSERT_GE(r, 0.0);
    ASSERT_LT(r, 1.0);
  }
}

}  // namespace
}  // namespace qm
