#include "commands/solving_commands.h"

#include <gtest/gtest.h>

#include "core/rule_checks.h"
#include "solver/candidates.h"
#include "support/sample_solve.h"

namespace qm {
namespace {

using test::Grid;

class AutoSolveCommand : public test::SampleSolve {};

TEST_F(AutoSolveCommand, AutoSolveKeepsASolutionAndReportsDone) {
  LoadSample();
  const AutoSolveResult result = AutoSolve(model, run);
  EXPECT_EQ(result.solve.status, 99);
  EXPECT_EQ(result.outcome, "Done");
  EXPECT_EQ(port.messages, std::vector<std::string>{"Done"});
  EXPECT_EQ(port.progressLines, (std::vector<std::string>{"Solving...", "Solved"}));
  EXPECT_EQ(SaveCandidates(model), "1,2,3,4,3,4,1,2,4,1,2,3,2,3,4,1,");
  EXPECT_FALSE(port.Busy());
  EXPECT_FALSE(model.SolverBusy);

  const AutoSolveResult again = AutoSolve(model, run);
  EXPECT_EQ(again.outcome, "Solved already?");
  EXPECT_EQ(again.solve.status, 99);
  EXPECT_EQ(again.solve.sweeps, 0);
  EXPECT_EQ(again.solve.message, "");
}

TEST_F(AutoSolveCommand, AutoSolvePutsBackTheTextsWhenItFails) {
  SetSize(model, 4);
  model.PosText[0] = "1";
  const std::string before = SaveCandidates(model);
  AutoSolveResult result = AutoSolve(model, run);
  EXPECT_EQ(result.outcome, "This puzzle has multiple solutions");
  EXPECT_EQ(SaveCandidates(model), before);

  model = Grid({"1.1..", ".....", ".....", ".....", "....."});
  result = AutoSolve(model, run);
  EXPECT_EQ(result.outcome, "This is not a valid puzzle");
  EXPECT_EQ(model.PosText[2], "1");
  EXPECT_EQ(model.PosText[4], "");

  model = Grid({"1.2.3", ".....", "2.3.1", ".....", "3.1.2"});
  model.PosText[0] = "";
  run.CancelRequest = true;
  EXPECT_EQ(AutoSolve(model, run).outcome, "This is not a valid puzzle");  // a cancel reads as invalid
}

TEST_F(AutoSolveCommand, PacedSolveWaitsExplainsAndEndsStepMode) {
  LoadSample();
  model.PacingInterval = 10;
  int waits = 0;
  port.onProcessEvents = [&] {
    if (++waits == 3) run.StepGo = true;  // the first go-on comes after a while
  };
  std::vector<int> targets;
  port.onStep = [&](const SolveStep& step) { targets.push_back(step.target); };
  const AutoSolveResult result = PacedAutoSolve(model, run);
  EXPECT_EQ(result.outcome, "Done");
  EXPECT_EQ(model.PacingInterval, 4000);
  EXPECT_EQ(port.statusLines.front(),
            "Press SpaceBar to continue, Pause Interval: |<Max, >|Min, <larger, >smaller, ><4 secs");
  EXPECT_FALSE(run.StepMode);
  EXPECT_TRUE(port.timerEnabled);
  ASSERT_FALSE(port.steps.empty());
  EXPECT_EQ(port.steps.front().line, "Remove single values 3 from row 1");
  // Candidate cells were first drawn with every digit, without touching their texts.
  EXPECT_EQ(port.shownTexts.front(), (std::pair<int, std::string>{0, "1234"}));
  int changes = 0;
  for (int c : result.solve.changes) changes += c;
  EXPECT_EQ(changes, static_cast<int>(port.steps.size()));
  EXPECT_EQ(result.solve.changes[static_cast<std::size_t>(Technique::OrderPropagate)], 0);
}

}  // namespace
}  // namespace qm
