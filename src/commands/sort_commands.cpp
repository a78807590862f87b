#include "commands/sort_commands.h"

#include "commands/run_control.h"
#include "commands/save_commands.h"

namespace qm {

SortOutcome SortPuzzleFile(PuzzleModel& model, WindowPort& port, const SortRequest& request) {
  RunControl run(model, port);
  port.SetBusy(true);
  SortOutcome outcome = SortCollection(model, run, request);
  port.SetBusy(false);
  port.ShowMessage(outcome.message);
  return outcome;
}

std::string ChooseSortInput(const PuzzleModel& model, WindowPort& port) {
  return ChooseCollectionFile(model, port, "Select sort input file", kCollectionPatterns, ChooserMode::Open);
}

std::string ChooseSortOutput(const PuzzleModel& model, WindowPort& port) {
  return ChooseCollectionFile(model, port, "Select sort output file", kCollectionPatterns, ChooserMode::Save);
}

}  // namespace qm
