#include "solver/solve_driver.h"

#include <gtest/gtest.h>

#include "core/collection_file.h"
#include "core/rule_checks.h"
#include "solver/candidates.h"
#include "support/sample_solve.h"

namespace qm {
namespace {

using test::Grid;

class Driver : public test::SampleSolve {};

TEST_F(Driver, SolvedStalledAndBrokenGrids) {
  model = Grid({"1.2.3", ".....", "2.3.1", ".....", "3.1.2"});
  PrepareCandidates(model);
  SolveOutcome outcome = SolveByLogic(model, run);
  EXPECT_EQ(outcome.status, 99);
  EXPECT_EQ(outcome.sweeps, 0);
  EXPECT_EQ(outcome.message, "Are we done?");

  SetSize(model, 4);
  PrepareCandidates(model);
  outcome = SolveByLogic(model, run);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.sweeps, 0);
  EXPECT_EQ(outcome.message, "No error but not done yet");

  model = Grid({"1.1..", ".....", ".....", ".....", "....."});
  PrepareCandidates(model);
  outcome = SolveByLogic(model, run);
  EXPECT_EQ(outcome.status, -1);
  EXPECT_EQ(outcome.message.rfind("ERROR:", 0), 0u) << outcome.message;
  EXPECT_FALSE(run.StepMode);
}

TEST_F(Driver, CancelRequestReturnsAtOnceAndTouchesNothing) {
  LoadSample();
  PrepareCandidates(model);
  const std::string before = SaveCandidates(model);
  run.CancelRequest = true;
  const SolveOutcome outcome = SolveByLogic(model, run);
  EXPECT_EQ(outcome.status, -1);
  EXPECT_EQ(outcome.message, "Canceled");
  EXPECT_EQ(SaveCandidates(model), before);
  EXPECT_EQ(port.processEventsCalls, 0);
  EXPECT_TRUE(run.CancelRequest);  // the solver never clears it
}

TEST_F(Driver, CancelDuringASweepStopsAtTheNextOne) {
  LoadSample();
  PrepareCandidates(model);
  port.onProcessEvents = [&] { run.CancelRequest = true; };
  const SolveOutcome outcome = SolveByLogic(model, run);
  EXPECT_EQ(outcome.message, "Canceled");
  EXPECT_EQ(outcome.sweeps, 1);  // the sweep in progress finished
}

TEST_F(Driver, QuietAndExplainedSolvesReachTheSameGrid) {
  for (bool explained : {false, true}) {
    LoadSample();
    PrepareCandidates(model);
    run.StepMode = explained;
    const SolveOutcome outcome = SolveByLogic(model, run);
    EXPECT_EQ(outcome.status, 99);
    EXPECT_EQ(SaveCandidates(model), "1,2,3,4,3,4,1,2,4,1,2,3,2,3,4,1,");
  }
}

}  // namespace
}  // namespace qm
