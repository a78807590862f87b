#include "commands/record_commands.h"

#include "core/text_rules.h"

namespace qm {

ReadResult ReadPuzzle(PuzzleModel& model, WindowPort& port, const std::string& path, int n, bool freshLines) {
  port.SetBusy(true);
  const ReadResult result = LoadPuzzle(model, path, n);
  if (result.notFound) {
    // The grid was emptied: its counts say so too.
    model.ConstraintCount = 0;
    model.ClueCount = 0;
  }
  port.RedrawGrid();
  if (n != -1) {
    if (freshLines) port.ClearPuzzleLines();
    port.RefreshPuzzleInfo();
  }
  port.SetBusy(false);
  return result;
}

bool WritePuzzle(const PuzzleModel& model, WindowPort& port, const std::string& comment, int number,
                 const std::string& path) {
  if (AppendPuzzle(model, comment, number, path)) return true;
  port.ShowMessage("Error writing puzzle#" + Str(number) + " to file: " + path);
  return false;
}

bool WritePuzzleWithSolutions(const PuzzleModel& model, WindowPort& port, const std::string& comment,
                              int firstNumber, const std::string& path) {
  if (AppendPuzzleWithSolutions(model, comment, firstNumber, path)) return true;
  port.ShowMessage("Error writing puzzle to file: " + path);
  return false;
}

}  // namespace qm
