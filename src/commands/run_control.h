// Run control: the state a running command shares with the user while it runs. A paced
// solve explains every change and waits for the space bar, a click or the pacing timer;
// Cancel ends it, or asks a solve, a creation or a print run to stop. The window and the
// command-line tool each own one and hand it to the commands that run long.
#pragma once

#include "core/puzzle_model.h"
#include "core/run_hooks.h"
#include "core/window_port.h"

namespace qm {

class RunControl : public RunHooks {
 public:
  RunControl(PuzzleModel& model, WindowPort& port) : model_(model), port_(port) {}

  WindowPort& Port() { return port_; }
  PuzzleModel& Model() { return model_; }

  bool StepMode = false;       // while every change is explained and paced
  bool StepGo = false;         // once the user (or the pacing timer) says go on
  bool CancelRequest = false;  // once the user asked to cancel; cleared by commands
  // Cancel ended a paced solve: what it drew no longer stands, the grid is drawn anew
  // from the model once the solve has ended.
  bool StepCancelled = false;

  // The user says go on (space bar, click, timer tick); nothing outside step mode.
  void Continue() {
    if (StepMode) StepGo = true;
  }
  // Sleeps on events until the user says go on or step mode ends.
  void WaitForGo();
  // Ends step mode and asks whatever runs to stop (the window is closing).
  void StopAll() {
    StepMode = false;
    CancelRequest = true;
  }

  bool Explaining() const override { return StepMode; }
  // Presents the step, then waits, with the pacing timer running, for the next go-on.
  void ShowStep(const SolveStep& step) override;
  void EndExplaining() override { StepMode = false; }
  void Yield() override { port_.ProcessEvents(); }
  bool Cancelled() const override { return CancelRequest; }
  void ClearCancel() override { CancelRequest = false; }
  void GridChanged() override { port_.RedrawGrid(); }
  void BlankDisplay() override;

 private:
  PuzzleModel& model_;
  WindowPort& port_;
};

}  // namespace qm
