#include "commands/window_commands.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <string_view>

#include "commands/collection_commands.h"
#include "commands/record_commands.h"
#include "commands/settings_commands.h"
#include "commands/solving_commands.h"
#include "core/collection_file.h"
#include "core/text_file.h"

namespace qm {

void StartUp(PuzzleModel& model, ColourTable& colours, WindowPort& port) {
  ReadSettings(model, port);
  LoadScheme(model, colours, port, model.SchemeFile);
  SetSize(model, kStartGridSize);
  const auto length = FileLength(model.CurrentFile);
  if (!length || *length == 0) model.CurrentFile = model.AppDir + "puzzles.fut";
  if (ReadPuzzle(model, port, model.CurrentFile, 1).notFound) {
    port.ShowMessage(ReadErrorMessage(1, model.CurrentFile));
  }
}

bool StartOnPuzzle(PuzzleModel& model, WindowPort& port, const std::string& number) {
  std::string_view text = number;
  constexpr std::string_view kSpace = " \t\r\n\v\f";
  text.remove_prefix(std::min(text.size(), text.find_first_not_of(kSpace)));
  text.remove_suffix(text.size() - std::min(text.size(), text.find_last_not_of(kSpace) + 1));
  if (text.starts_with('+')) text.remove_prefix(1);
  int n = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), n);
  if (text.empty() || error != std::errc() || end != text.data() + text.size() || n < 1) {
    port.ShowMessage("Not a puzzle number: " + number);
    return false;
  }
  if (!ReadPuzzle(model, port, model.CurrentFile, n).notFound) return true;
  port.ShowMessage(ReadErrorMessage(n, model.CurrentFile));
  ReadPuzzle(model, port, model.CurrentFile, 1);
  return false;
}

void PressArrow(PuzzleModel& model, RunControl& run, int index) {
  if (run.StepMode) {
    ChangePace(model, run.Port(), static_cast<PaceButton>(index));
    return;
  }
  MoveByArrow(model, run.Port(), static_cast<Arrow>(index));
}

bool ReadPrintRange(const PuzzleModel& model, RunControl& run, int first, int last,
                    const std::function<std::string(PuzzleModel&, int)>& take) {
  WindowPort& port = run.Port();
  run.CancelRequest = false;
  port.SetBusy(true);
  std::string failure;
  const int unread = ReadPuzzleRange(model.CurrentFile, first, last, [&](PuzzleModel& scratch, int n) {
    port.ProcessEvents();
    if (run.CancelRequest) return false;
    failure = take(scratch, n);
    return failure.empty();
  });
  if (unread != 0 && !run.CancelRequest) failure = ReadErrorMessage(unread, model.CurrentFile);
  port.SetBusy(false);
  const bool cancelled = run.CancelRequest;
  run.CancelRequest = false;
  if (!failure.empty() && !cancelled) port.ShowMessage(failure);
  return failure.empty() && !cancelled;
}

std::string PuzzleNumberText(const PuzzleModel& model) {
  // A file whose last puzzle was deleted still shows 0.
  if (model.RecordNumber == 0 && model.PuzzleCount > 0) return {};
  return std::to_string(model.CurrentPuzzle);
}

bool ExitCommand(PuzzleModel& model, RunControl& run) {
  if (!run.Port().AskYesNo("Exit?")) return false;
  WriteSettings(model, run.Port());
  std::error_code ec;
  std::filesystem::remove(kDeleteTempFile, ec);
  run.StopAll();
  return true;
}

}  // namespace qm
