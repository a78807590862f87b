#include "commands/grid_commands.h"
#include "core/rule_checks.h"

#include <gtest/gtest.h>

#include "commands/headless_port.h"
#include "support/test_grids.h"

namespace qm {
namespace {

using test::Grid;

const std::vector<std::string> kSolved3 = {"1.2.3", ".....", "2.3.1", ".....", "3.1.2"};

TEST(CheckExtremes, OneAndNAgainstTheirSigns) {
  const struct {
    std::vector<std::string> rows;
    int position;
    const char* message;
  } cases[] = {
      {{"2<1.3", ".....", ".....", ".....", "....."}, 2, "<1 error"},
      {{"1>2.3", ".....", ".....", ".....", "....."}, 0, "1> error"},
      {{"2....", "^....", "1....", ".....", "....."}, 10, "^1 error"},
      {{"1....", "v....", "2....", ".....", "....."}, 0, "1v error"},
      {{"2<1>3", ".....", ".....", ".....", "....."}, 2, "<1 error"},  // left is tested first
      {{"1>2.3", ".....", ".....", ".....", "2<1.3"}, 0, "1> error"},   // lowest position first
      {{".......", ".......", ".......", ".......", "2>4....", ".......", "......."}, 30, ">4 error"},
      {{"4<3....", ".......", ".......", ".......", ".......", ".......", "......."}, 0, "4< error"},
      {{"4......", "^......", "3......", ".......", ".......", ".......", "......."}, 0, "4^ error"},
      {{".........", ".........", "4........", "v........", "5........", ".........", ".........",
        ".........", "........."},
       36, "v5 error"},
  };
  for (const auto& c : cases) {
    const CheckResult r = CheckExtremes(Grid(c.rows));
    EXPECT_EQ(r.result, c.position) << c.message;
    EXPECT_EQ(r.message, c.message);
  }
  const CheckResult fine = CheckExtremes(Grid({"1<2.3", ".....", ".....", ".....", "....."}));
  EXPECT_EQ(fine.result, kSolved);
  EXPECT_EQ(fine.message, "");
}

TEST(CheckGrid, EmptyAndUnfinishedGrids) {
  PuzzleModel empty;
  EXPECT_EQ(CheckExtremes(empty).result, kSolved);
  const CheckResult r = CheckGrid(empty);
  EXPECT_EQ(r.result, kBroken);
  EXPECT_EQ(r.message, "Cell 000 is empty");
  EXPECT_EQ(VerifyGrid(empty).text, kVerifiedUnfinished);

  PuzzleModel partly = Grid(kSolved3);
  partly.PosText[12].clear();
  EXPECT_EQ(CheckGrid(partly).message, "Cell 012 is empty");

  PuzzleModel candidates;
  SetSize(candidates, 3);
  for (int k = 0; k <= candidates.LastPosition; ++k) {
    if (IsCell(candidates, k)) candidates.PosText[k] = "123";
  }
  EXPECT_EQ(CheckGrid(candidates).result, kStalled);
  EXPECT_EQ(CheckGrid(candidates).message, "");
  EXPECT_EQ(VerifyGrid(candidates).text, kVerifiedUnfinished);
}

TEST(CheckGrid, RepeatedDigits) {
  // Rows before columns, lower digits before higher ones; the spacing is the system's own.
  EXPECT_EQ(CheckGrid(Grid({"1.2.3", ".....", "1.3.2", ".....", "2.3.3"})).message, "Row  005 has digit3 2 times");
  EXPECT_EQ(CheckGrid(Grid({"1.2.3", ".....", "1.3.2", ".....", "2.1.3"})).message, "Col  001 has digit1 2 times");
  EXPECT_EQ(CheckGrid(Grid({"3.3.3", ".....", "1.2.1", ".....", "2.1.2"})).message, "Row  001 has digit3 3 times");
  const PuzzleModel lowFirst =
      Grid({"4.4.1.1", ".......", "1.2.3.4", ".......", "2.3.4.1", ".......", "3.1.2.3"});
  EXPECT_EQ(CheckGrid(lowFirst).message, "Row  001 has digit1 2 times");
  EXPECT_EQ(CheckGrid(lowFirst).result, kBroken);
  // A candidate list is left out of the count.
  PuzzleModel withList = Grid(kSolved3);
  withList.PosText[2] = "11";
  EXPECT_EQ(CheckGrid(withList).result, kStalled);
}

TEST(CheckGrid, SolvedGridAndVerify) {
  const PuzzleModel solved = Grid(kSolved3);
  EXPECT_EQ(CheckGrid(solved).result, kSolved);
  EXPECT_EQ(VerifyGrid(solved).text, "Puzzle appears to been solved");
  EXPECT_EQ(VerifyGrid(solved).errorPosition, -1);
}

TEST(CheckGrid, GreaterThanPassReadsOnlyTheSmallerLists) {
  // A wrong sign is not seen while the lists are empty, as after a load.
  PuzzleModel m = Grid({"2>3.1", ".....", "3.1.2", ".....", "1.2.3"});
  EXPECT_EQ(CheckGrid(m).result, kSolved);

  m.SmallerList[0] = "002";  // cell 0 (2) must be greater than cell 2 (3)
  EXPECT_EQ(CheckGrid(m).result, kBroken);
  EXPECT_EQ(CheckGrid(m).message, "Cell 000 does not meet > rule");

  m.PosText[2] = "23";  // a candidate list reads as 23, above N: no fault
  EXPECT_EQ(CheckGrid(m).result, kStalled);

  // Only the first 77 characters count: a 27th entry is never read.
  m.PosText[2] = "3";
  m.SmallerList[0].clear();
  for (int i = 0; i < 26; ++i) m.SmallerList[0] += "004";  // cell 4 holds 1: fine
  m.SmallerList[0] += "002";
  EXPECT_EQ(CheckGrid(m).result, kSolved);
  m.SmallerList[0].clear();
  for (int i = 0; i < 25; ++i) m.SmallerList[0] += "004";
  m.SmallerList[0] += "002";  // the 26th entry, ending at character 78, is read
  EXPECT_EQ(CheckGrid(m).message, "Cell 000 does not meet > rule");
}

TEST(Verify, PaintsTheFaultyPositionOnlyWhileTheMessageShows) {
  PuzzleModel m = Grid({"2<1.3", ".....", ".....", ".....", "....."});
  HeadlessPort port;
  port.ColourPosition(2, CellColour::Highlight);
  CellColour during = CellColour::Normal;
  port.onMessage = [&](const std::string&) { during = port.ColourOf(2); };
  Verify(m, port);
  ASSERT_EQ(port.messages, std::vector<std::string>{"<1 error"});
  EXPECT_EQ(during, CellColour::Error);
  EXPECT_EQ(port.ColourOf(2), CellColour::Highlight);

  Verify(Grid(kSolved3), port);
  EXPECT_EQ(port.messages.back(), kVerifiedSolved);
}

}  // namespace
}  // namespace qm
