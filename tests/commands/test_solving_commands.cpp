#include "commands/solving_commands.h"

#include <gtest/gtest.h>

#include "commands/grid_commands.h"
#include "commands/headless_port.h"
#include "support/test_grids.h"

namespace qm {
namespace {

using test::Grid;

TEST(Pace, ButtonsAndTheClamp) {
  PuzzleModel m;
  HeadlessPort port;
  for (int i = 0; i < 3; ++i) ChangePace(m, port, PaceButton::First);
  EXPECT_EQ(m.PacingInterval, 10);
  ChangePace(m, port, PaceButton::Last);
  ChangePace(m, port, PaceButton::Previous);
  EXPECT_EQ(m.PacingInterval, 20000);
  ChangePace(m, port, PaceButton::Next);
  EXPECT_EQ(m.PacingInterval, 19800);
  ChangePace(m, port, PaceButton::Random);
  EXPECT_EQ(m.PacingInterval, 4000);
  EXPECT_TRUE(port.questions.empty());

  m.UndoList.push_back("0001");
  port.yesNoAnswers = {false};
  EXPECT_FALSE(ChangePace(m, port, PaceButton::First));
  EXPECT_EQ(m.PacingInterval, 4000);
  EXPECT_EQ(port.questions, std::vector<std::string>{"Discard all changes?"});
}

TEST(Entry, DigitsHintsSignsAndUndo) {
  PuzzleModel m = Grid({"1....", ".....", ".....", ".....", "....."});
  HeadlessPort port;
  CellMenuChoice(m, port, 2, "1");  // fixed in the row already
  EXPECT_EQ(port.progressLines.back(), "Invalid entry");
  EXPECT_TRUE(m.UndoList.empty());
  CellMenuChoice(m, port, 0, "1");  // its own digit is not among its candidates
  EXPECT_EQ(port.progressLines.back(), "Invalid entry");

  CellMenuChoice(m, port, 2, "Hint");
  EXPECT_EQ(m.PosText[2], "23");
  EXPECT_EQ(m.GivenValue[2], 23);  // a hint reads as its number, as it always has
  CellMenuChoice(m, port, 0, "Hint");
  EXPECT_EQ(port.progressLines.back(), "No need for a hint here");

  CellMenuChoice(m, port, 2, "3");
  EXPECT_EQ(m.PosText[2], "3");
  EXPECT_EQ(m.GivenValue[2], 3);
  EXPECT_EQ(m.UndoList, (std::vector<std::string>{"00223", "002"}));
  EXPECT_EQ(m.Modified, -1);
  CellMenuChoice(m, port, 2, "-");
  CellMenuChoice(m, port, 2, "Cancel");
  EXPECT_EQ(m.UndoList.size(), 2u);

  SignMenuChoice(m, port, 1, ">");  // 1 > 3: the extreme-digit test refuses it
  EXPECT_EQ(port.statusLines.back(), "< error");
  SignMenuChoice(m, port, 1, "<");
  EXPECT_EQ(m.PosText[1], "<");
  EXPECT_EQ(m.GivenValue[1], 0);
  EXPECT_EQ(m.UndoList.front(), "001");

  UndoEntry(m, port);
  EXPECT_EQ(m.PosText[1], "");
  UndoEntry(m, port);
  EXPECT_EQ(m.PosText[2], "23");
  EXPECT_EQ(m.GivenValue[2], 3);  // undo leaves the clue value alone
  UndoEntry(m, port);
  EXPECT_EQ(m.PosText[2], "");
  UndoEntry(m, port);  // nothing left: nothing happens
  EXPECT_TRUE(m.UndoList.empty());
}

TEST(Entry, UndoOfADigitEnteredAtPosition7) {
  PuzzleModel m;
  SetSize(m, 5);
  HeadlessPort port;
  m.PosText[7] = "";
  CellMenuChoice(m, port, 8, "5");
  EXPECT_EQ(m.UndoList.front(), "008");
  UndoEntry(m, port);
  EXPECT_EQ(m.PosText[8], "");
}

TEST(SolutionView, ShowsTheStoredSolutionAndTogglesBack) {
  PuzzleModel m = Grid({"1<...", ".....", ".....", ".....", "....."});
  m.PosText[2] = "23";
  m.SolutionText[0] = "1";
  m.SolutionText[1] = "<";
  m.SolutionText[2] = "2";
  m.SolutionText[3] = ".";
  m.SolutionText[4] = "?";
  HeadlessPort port;
  ToggleSolutionView(m, port);
  EXPECT_TRUE(m.SolutionShown);
  EXPECT_EQ(port.statusLines.back(), "Solution");
  EXPECT_EQ(port.shownTexts[2], (std::pair<int, std::string>{2, "2"}));
  EXPECT_EQ(port.shownTexts[3].second, "");
  EXPECT_EQ(port.shownTexts[4].second, "");
  EXPECT_EQ(m.PosText[2], "23");  // the texts are not touched
  m.PosText[2] = "x";
  ToggleSolutionView(m, port);
  EXPECT_FALSE(m.SolutionShown);
  EXPECT_EQ(m.PosText[2], "23");
}

TEST(Cancel, EndsAPacedSolveOrRequestsAStop) {
  PuzzleModel m = Grid({"1.2..", ".....", ".....", ".....", "....."});
  m.GivenValue[0] = 1;
  HeadlessPort port;
  RunControl run(m, port);
  run.StepMode = true;
  run.StepGo = true;
  CancelCommand(m, run);
  EXPECT_FALSE(run.StepMode);
  EXPECT_FALSE(run.StepGo);
  EXPECT_EQ(m.PosText[0], "1");
  EXPECT_EQ(m.PosText[2], "");  // not a clue
  EXPECT_EQ(port.statusLines.back(), "Interactive solve Cancelled");
  EXPECT_FALSE(run.CancelRequest);

  CancelCommand(m, run);
  EXPECT_TRUE(run.CancelRequest);
  run.CancelRequest = false;
  port.SetProgressLine("Canceling...");
  CancelCommand(m, run);
  EXPECT_FALSE(run.CancelRequest);
  EXPECT_EQ(port.ProgressLine(), "");
}

TEST(GridCommands, NewGridClearsAndStatusText) {
  PuzzleModel m = Grid({"1<2..", ".....", "2....", ".....", "....."});
  m.GivenValue[0] = 1;
  HeadlessPort port;
  RunControl run(m, port);
  port.yesNoAnswers = {false, true, true};
  ClearNumbers(m, port);
  EXPECT_EQ(m.PosText[2], "2");  // answered No
  ClearNumbers(m, port);
  EXPECT_EQ(m.PosText[0], "1");
  EXPECT_EQ(m.PosText[2], "");
  EXPECT_EQ(m.PosText[1], "<");
  ClearConstraints(m, port);
  EXPECT_EQ(m.PosText[1], "");
  EXPECT_EQ(port.questions, (std::vector<std::string>{"Clear All Numbers?", "Clear All Numbers?", "Clear All Constraints?"}));

  EXPECT_EQ(MouseStatusText(m, run, 0), "Row=1, Col=1, Candidates= 1");
  EXPECT_EQ(MouseStatusText(m, run, 2), "");
  run.StepMode = true;
  EXPECT_EQ(MouseStatusText(m, run, 0), "");

  NewGrid(m, port, 6);
  EXPECT_EQ(m.GridSize, 9);
  EXPECT_EQ(m.LastPosition, 288);
  EXPECT_EQ(m.PosText[0], "");
  NewGrid(m, port, 7);  // the separator: nothing
  EXPECT_EQ(m.GridSize, 9);
}

}  // namespace
}  // namespace qm
