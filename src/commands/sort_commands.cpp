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

namespace {

std::string ChooseCollection(const PuzzleModel& model, WindowPort& port, const char* title, ChooserMode mode) {
  return ChooseFileKeepingDirectory(
      port, FileChoice{title, kCollectionPatterns, kCollectionDescription, ApplicationDirectoryOf(model), mode});
}

}  // namespace

std::string ChooseSortInput(const PuzzleModel& model, WindowPort& port) {
  return ChooseCollection(model, port, "Select sort input file", ChooserMode::Open);
}

std::string ChooseSortOutput(const PuzzleModel& model, WindowPort& port) {
  return ChooseCollection(model, port, "Select sort output file", ChooserMode::Save);
}

}  // namespace qm
