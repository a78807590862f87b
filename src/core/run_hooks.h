// What a long engine call (a solve, a creation, a sort) may ask of whoever runs it: to
// present an explained change and wait, to let pending events through, whether the user
// asked to stop, and to show the grid as it changes. The engine never sees the window; the commands layer answers
// through the window, the command-line tool and the tests answer quietly.
#pragma once

#include <string>

namespace qm {

// One explained change of a paced solve: the explanation line, the cell it changes
// (target), a second cell involved or -1, the new text as the step shows it, and the
// layout row and column to highlight or -1.
struct SolveStep {
  std::string line;
  int target = -1;
  int second = -1;
  std::string text;
  int row = -1;
  int col = -1;
};

class RunHooks {
 public:
  virtual ~RunHooks() = default;

  // True while every change is to be explained and paced.
  virtual bool Explaining() const { return false; }
  // Presents one explained change and returns when it may be stored.
  virtual void ShowStep(const SolveStep& step) { (void)step; }
  // The logic phase is over: no more explaining for this solve.
  virtual void EndExplaining() {}
  // Lets pending user events through from inside a long loop.
  virtual void Yield() {}
  // True once the user asked to stop.
  virtual bool Cancelled() const { return false; }
  // A new creation starts with no stop request pending.
  virtual void ClearCancel() {}
  // The model's grid changed: draw it again.
  virtual void GridChanged() {}
  // Shows every position empty without touching the model (a creation that stopped).
  virtual void BlankDisplay() {}
};

// Runs nothing by the user: no explaining, no events, never cancelled.
inline RunHooks& QuietRun() {
  static RunHooks quiet;
  return quiet;
}

}  // namespace qm
