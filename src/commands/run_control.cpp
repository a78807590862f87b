#include "commands/run_control.h"

namespace qm {

void RunControl::WaitForGo() {
  // Each wait sleeps until an event comes: a paced solve waiting for the user costs no
  // processor time. With no user to wait for, every pause is answered at once.
  while (!StepGo && StepMode) {
    if (!port_.WaitForEvents()) StepGo = true;
  }
}

void RunControl::ShowStep(const SolveStep& step) {
  port_.ShowStep(step);
  // The pacing timer disables itself on every tick; each step starts it again.
  StepGo = false;
  port_.SetPacingTimer(true, model_.PacingInterval);
  WaitForGo();
  // After a Cancel the step is gone from the screen already, and its text with it.
  if (!StepCancelled) port_.EndStep(step);
}

void RunControl::BlankDisplay() {
  for (int k = 0; k <= model_.LastPosition; ++k) port_.ShowCellText(k, "");
}

}  // namespace qm
