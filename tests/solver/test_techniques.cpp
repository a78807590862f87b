#include "solver/techniques.h"

#include <gtest/gtest.h>

#include "solver/candidates.h"
#include "support/step_recorder.h"
#include "support/test_grids.h"

namespace qm {
namespace {

using test::Grid;
using test::SetCells;

std::vector<std::string> Cells(const PuzzleModel& m) {
  std::vector<std::string> texts;
  for (int row = 1; row <= m.LayoutExtent; row += 2) {
    for (int col = 1; col <= m.LayoutExtent; col += 2) texts.push_back(m.PosText[m.PositionOf[row][col]]);
  }
  return texts;
}

class Techniques : public ::testing::Test {
 protected:
  PuzzleModel Model(int n, const std::vector<std::string>& cells, bool stepMode = true) {
    PuzzleModel m;
    SetSize(m, n);
    SetCells(m, cells);
    run.explaining = stepMode;
    return m;
  }
  test::StepRecorder run;
};

TEST_F(Techniques, RemoveSinglesGathersEachLineBeforeNarrowingIt) {
  PuzzleModel m = Model(3, {"1", "12", "123", "123", "123", "123", "123", "123", "123"});
  RemoveSingles(m, run);
  EXPECT_EQ(Cells(m), (std::vector<std::string>{"1", "2", "3", "23", "13", "12", "23", "13", "12"}));
  ASSERT_GE(run.steps.size(), 3u);
  const SolveStep& first = run.steps[0];
  EXPECT_EQ(first.line, "Remove single values 1 from row 1");
  EXPECT_EQ(first.text, "2");
  EXPECT_EQ(first.target, 2);
  EXPECT_EQ(first.row, 1);
  EXPECT_EQ(first.col, -1);
  // The 2 fixed in row 1 is only used by the next pass over the row: the columns come first.
  EXPECT_EQ(run.steps[1].line, "Remove single values 1 from row 1");
  EXPECT_EQ(run.steps[1].text, "23");
  EXPECT_EQ(run.steps[2].line, "Remove single values 1 from col 1");
  EXPECT_EQ(run.steps[2].col, 1);
  EXPECT_EQ(m.ChangeCount, static_cast<int>(run.steps.size()));
  EXPECT_EQ(StepStatusText(first), "Remove single values 1 from row 1, new candidate: 2");
}

TEST_F(Techniques, OrderPropagateNarrowsBothSidesOfASign) {
  PuzzleModel m = Grid({"1<...", ".....", ".....", ".....", "....."});
  m.PosText[2] = "123";
  PrepareCandidates(m);
  m.ChangeCount = 0;
  OrderPropagate(m, run);
  EXPECT_EQ(m.PosText[2], "23");
  EXPECT_EQ(m.PosText[0], "1");
  EXPECT_EQ(m.ChangeCount, 1);
  EXPECT_TRUE(run.steps.empty());
}

TEST_F(Techniques, OrderPropagateExplainedShowsEachStepInOrder) {
  PuzzleModel m = Grid({".>...", ".....", ".....", ".....", "....."});
  PrepareCandidates(m);
  m.PosText[2] = "23";  // the smaller cell
  run.explaining = true;
  OrderPropagateExplained(m, run);
  ASSERT_EQ(run.steps.size(), 3u);  // N2 >= max(N1) changes nothing here
  EXPECT_EQ(run.steps[0].line, "N1>N2, discard 3 from N2");
  EXPECT_EQ(run.steps[0].text, "2");
  EXPECT_EQ(run.steps[0].target, 2);
  EXPECT_EQ(run.steps[0].second, 0);
  EXPECT_EQ(run.steps[1].line, "N1>N2, discard 1 from N1");
  EXPECT_EQ(run.steps[1].text, "23");
  EXPECT_EQ(run.steps[1].target, 0);
  EXPECT_EQ(run.steps[1].second, 2);
  EXPECT_EQ(run.steps[2].line, "N1>N2, discard all digits in N1 <= min(N2)");
  EXPECT_EQ(run.steps[2].text, "3");
  EXPECT_EQ(run.steps[2].row, -1);
  EXPECT_EQ(m.PosText[0], "3");
  EXPECT_EQ(m.PosText[2], "2");
  EXPECT_EQ(m.ChangeCount, 3);
  // N2 >= max(N1) comes third when it applies.
  PuzzleModel chain = Grid({".>...", ".....", ".....", ".....", "....."});
  PrepareCandidates(chain);
  chain.PosText[0] = "12";
  run.explaining = true;
  run.steps.clear();
  OrderPropagateExplained(chain, run);
  ASSERT_EQ(run.steps.size(), 3u);
  EXPECT_EQ(run.steps[2].line, "N1>N2, discard all digits in N2 >= max(N1)");
}

TEST_F(Techniques, HiddenSingleNamesLayoutRowsAndShowsTheDigitWithABlank) {
  PuzzleModel m = Model(3, {"123", "123", "123", "12", "12", "123", "123", "123", "123"});
  HiddenSingle(m, run);
  ASSERT_FALSE(run.steps.empty());
  EXPECT_EQ(run.steps[0].line, "Cell has unique candidate 3 in row 3");  // the second row
  EXPECT_EQ(run.steps[0].text, " 3");
  EXPECT_EQ(StepStatusText(run.steps[0]), "Cell has unique candidate 3 in row 3, new candidate:  3");
  EXPECT_EQ(run.steps[0].row, 3);
  EXPECT_EQ(m.PosText[14], "3");  // the stored text is the bare digit
  // A digit whose only place is already fixed changes nothing.
  PuzzleModel fixed = Model(3, {"3", "12", "12", "12", "3", "12", "12", "12", "3"}, false);
  HiddenSingle(fixed, run);
  EXPECT_EQ(fixed.ChangeCount, 0);
}

TEST_F(Techniques, NakedPairLooksOnlyAtThePairThatSortsFirst) {
  PuzzleModel three = Model(4, {"12", "12", "12", "1234"});
  NakedPair(three, run);
  EXPECT_EQ(three.ChangeCount, 0);  // three equal pairs: nothing

  // "12" sorts first: the other cells lose 1 and 2, and the pair "34" waits its turn.
  PuzzleModel two = Model(6, {"34", "12", "34", "12", "1235", "3456"});
  NakedPair(two, run);
  EXPECT_EQ(Cells(two)[4], "35");
  EXPECT_EQ(Cells(two)[5], "3456");
  EXPECT_EQ(two.ChangeCount, 1);
  run.steps.clear();

  PuzzleModel row = Model(4, {"123", "12", "1234", "12"});
  NakedPair(row, run);
  EXPECT_EQ(Cells(row)[0], "3");
  EXPECT_EQ(Cells(row)[2], "34");
  ASSERT_EQ(run.steps.size(), 2u);
  EXPECT_EQ(run.steps[0].line, "Row 1 has exactly 2 incidents of candidate 12, remove from cell");

  PuzzleModel column = Model(4, {"12", "", "", "", "1234", "", "", "", "12", "", "", "", "4", "", "", ""});
  run.steps.clear();
  NakedPair(column, run);
  EXPECT_EQ(Cells(column)[4], "34");
  ASSERT_EQ(run.steps.size(), 1u);
  EXPECT_EQ(run.steps[0].line, "Col 1 has exactly 2 incidents of candidate 12, remove from cell");
  EXPECT_EQ(run.steps[0].col, 1);
}

TEST_F(Techniques, NakedTriplesAndQuadsSayRowEvenForColumns) {
  PuzzleModel column = Model(5, {"123", "", "", "", "", "123", "", "", "", "", "12345", "", "", "", "",
                                 "123", "", "", "", "", "45", "", "", "", ""});
  NakedTriple(column, run);
  EXPECT_EQ(Cells(column)[10], "45");
  ASSERT_EQ(run.steps.size(), 1u);
  EXPECT_EQ(run.steps[0].line, "Row 1 has exactly 3 incidents of candidate 123, remove from cell");
  EXPECT_EQ(run.steps[0].col, 1);
  EXPECT_EQ(run.steps[0].row, -1);

  PuzzleModel quad = Model(5, {"1234", "1234", "12345", "1234", "1234"});
  run.steps.clear();
  NakedQuad(quad, run);
  EXPECT_EQ(Cells(quad)[2], "5");
  EXPECT_EQ(run.steps.at(0).line, "Row 1 has exactly 4 incidents of candidate 1234, remove from cell");
  PuzzleModel fiveQuads = Model(5, {"1234", "1234", "1234", "1234", "1234"});
  NakedQuad(fiveQuads, run);
  EXPECT_EQ(fiveQuads.ChangeCount, 0);
}

}  // namespace
}  // namespace qm
