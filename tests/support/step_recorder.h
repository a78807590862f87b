// A run that records the explained steps instead of showing them, for the techniques'
// own tests.
#pragma once

#include <vector>

#include "core/run_hooks.h"

namespace qm::test {

class StepRecorder : public RunHooks {
 public:
  bool Explaining() const override { return explaining; }
  void ShowStep(const SolveStep& step) override { steps.push_back(step); }
  void EndExplaining() override { explaining = false; }

  bool explaining = true;
  std::vector<SolveStep> steps;
};

}  // namespace qm::test
