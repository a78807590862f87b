#include "solver/candidates.h"

#include <gtest/gtest.h>

#include "commands/headless_port.h"
#include "commands/solving_commands.h"
#include "support/test_grids.h"

namespace qm {
namespace {

using test::Grid;
using test::SetCells;

TEST(Bounds, KeepOrderAndTreatAnEmptyBoundAsNothing) {
  EXPECT_EQ(MaxBelow("2345", "3"), "2");
  EXPECT_EQ(MinAbove("1234", "2"), "34");
  EXPECT_EQ(MaxBelow("4321", "43"), "321");  // order kept, never sorted
  EXPECT_EQ(MinAbove("4321", "24"), "43");
  EXPECT_EQ(MaxBelow("123", ""), "");
  EXPECT_EQ(MinAbove("123", ""), "");
  EXPECT_EQ(StripDigits("42135", "31"), "425");
}

TEST(PrepareCandidates, FillsEmptyCellsAndListsTheSmallerNeighbours) {
  PuzzleModel m;
  SetSize(m, 3);
  PrepareCandidates(m);
  EXPECT_EQ(SaveCandidates(m), "123,123,123,123,123,123,123,123,123,");

  m = Grid({"2<...", "^...v", ".>..3", ".....", "....."});
  m.PosText[12] = "31";  // a candidate list stays as it is
  PrepareCandidates(m);
  EXPECT_EQ(m.PosText[2], "123");
  EXPECT_EQ(m.PosText[12], "31");
  EXPECT_EQ(m.SmallerList[0], "");
  EXPECT_EQ(m.SmallerList[2], "000");      // "<" on its left
  EXPECT_EQ(m.SmallerList[10], "012000");  // ">" on its right comes before "^" above it
  EXPECT_EQ(m.SmallerList[4], "014");      // "v" below it
}

TEST(Snapshot, RestoreGivesTheSameTexts) {
  PuzzleModel m = Grid({"1.2.3", ".....", ".....", ".....", "....."});
  SetCells(m, {"1", "2", "3", "23", "", "123", "2", "13", "1"});
  const std::string snapshot = SaveCandidates(m);
  EXPECT_EQ(snapshot, "1,2,3,23,,123,2,13,1,");
  SetCells(m, {"9", "9", "9", "9", "9", "9", "9", "9", "9"});
  RestoreCandidates(m, snapshot);
  EXPECT_EQ(SaveCandidates(m), snapshot);
  RestoreCandidates(m, "7,8,");  // a short snapshot restores what it has
  EXPECT_EQ(SaveCandidates(m), "7,8,3,23,,123,2,13,1,");
}

TEST(CellTextLook, DigitsBoldCandidatesSmallLongListsOnTwoLines) {
  EXPECT_EQ(CellTextLook("").pointSize, 0);
  const CellLook digit = CellTextLook(" 4 ");
  EXPECT_EQ(digit.text, "4");
  EXPECT_TRUE(digit.bold);
  EXPECT_EQ(digit.pointSize, 13);
  EXPECT_EQ(CellTextLook("12345").text, "12345");
  const CellLook nine = CellTextLook("123456789");
  EXPECT_EQ(nine.text, "12345\n6789");
  EXPECT_FALSE(nine.bold);
  EXPECT_EQ(nine.pointSize, 6);
  EXPECT_EQ(CellTextLook("1234567").text, "12345\n67");
}

TEST(CellCandidates, RowColumnAndSigns) {
  // 4x4: row 1 holds a 3 further on, column 1 a 1 below; a "<" to the right.
  PuzzleModel m = Grid({".<..3..", ".......", ".......", ".......", "1......", ".......", "......."});
  EXPECT_EQ(CellCandidates(m, 0), "2");   // not 3 (row) or 1 (column); the smaller side of "<": not 4
  EXPECT_EQ(CellCandidates(m, 2), "24");  // the greater side of "<", next to an open cell: not 1
  m.PosText[0] = "2";
  EXPECT_EQ(CellCandidates(m, 0), "");  // its own digit removes itself
  EXPECT_EQ(CellCandidates(m, 2), "4");
}

TEST(SignEntry, ExtremeDigitTestsAndTheSharedErrorText) {
  PuzzleModel m = Grid({"3...1", ".....", "2.3..", ".....", "....."});
  HeadlessPort port;
  EXPECT_EQ(CheckSignEntry(m, port, 1, '>'), -1);  // a left cell holding N
  EXPECT_EQ(port.statusLines.back(), "< error");
  m.PosText[0] = "2";
  EXPECT_EQ(CheckSignEntry(m, port, 1, '<'), -1);  // after a filled cell, before an empty one
  EXPECT_EQ(port.statusLines.back(), "< error");
  m.PosText[2] = "3";
  EXPECT_EQ(CheckSignEntry(m, port, 1, '<'), 1);
  m.PosText[2] = "2";
  EXPECT_EQ(CheckSignEntry(m, port, 3, '>'), -1);  // a right cell holding 1, though 2 > 1
  EXPECT_EQ(CheckSignEntry(m, port, 5, '^'), 5);   // 2 above 2 passes the tests
  EXPECT_EQ(CheckSignEntry(m, port, 15, 'v'), 15);  // 2 above an empty cell
  EXPECT_EQ(CheckSignEntry(m, port, 17, 'v'), -1);  // N above
  EXPECT_EQ(port.statusLines.back(), "v error");
  EXPECT_EQ(CheckSignEntry(m, port, 9, '^'), -1);  // 1 above an empty cell
  EXPECT_EQ(port.statusLines.back(), "^ error");
  EXPECT_EQ(port.statusLines.size(), 5u);
}

TEST(CellEntry, ReportsTheFirstBrokenRuleOrTheCandidates) {
  PuzzleModel m = Grid({"2<1.3", ".....", ".....", ".....", "....."});
  EXPECT_EQ(CheckCellEntry(m, 2), "< error");
  m = Grid({"1>...", ".....", ".....", ".....", "....."});
  EXPECT_EQ(CheckCellEntry(m, 0), "1 placement error");
  m = Grid({"3<...", ".....", ".....", ".....", "....."});
  EXPECT_EQ(CheckCellEntry(m, 0), "3 placement error");
  m = Grid({"2...2", ".....", ".....", ".....", "....."});
  EXPECT_EQ(CheckCellEntry(m, 0), "Duplicate in row");
  m = Grid({"2....", ".....", "2....", ".....", "....."});
  EXPECT_EQ(CheckCellEntry(m, 0), "Duplicate in col");
  EXPECT_EQ(CheckCellEntry(m, 12), "Valid candidates are: 13");
}

}  // namespace
}  // namespace qm
