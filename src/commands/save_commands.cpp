#include "commands/save_commands.h"

#include <filesystem>

#include "core/text_file.h"
#include "core/text_rules.h"
#include "export/html_export.h"
#include "export/text_export.h"
#include "export/xls_export.h"

namespace qm {

std::string ChooseCollectionFile(const PuzzleModel& model, WindowPort& port, const std::string& title,
                                 const std::string& patterns, ChooserMode mode) {
  return ChooseFileKeepingDirectory(
      port, FileChoice{title, patterns, kCollectionDescription, ApplicationDirectoryOf(model), mode});
}

std::string ChooseFileKeepingDirectory(WindowPort& port, const FileChoice& choice) {
  std::error_code ec;
  const std::filesystem::path before = std::filesystem::current_path(ec);
  std::string chosen = port.ChooseFile(choice);
  if (!before.empty()) std::filesystem::current_path(before, ec);
  return chosen;
}

std::string ChooseSaveFile(const PuzzleModel& model, WindowPort& port, const std::string& patterns,
                           const std::string& description) {
  return ChooseFileKeepingDirectory(
      port, FileChoice{"Quillmere", patterns, description, ApplicationDirectoryOf(model), ChooserMode::Save});
}

bool ConfirmOverwrite(WindowPort& port, const std::string& path) {
  if (!FileLength(path)) return true;
  return port.AskYesNo("OverWrite file: " + path + " ?");
}

std::string WriteErrorMessage(const std::string& path) { return "Error writing to file: " + path; }

CommandResult RunSaveCommand(const PuzzleModel& model, WindowPort& port, const SaveCommand& command,
                             const FileWriter& write) {
  const std::string path = ChooseSaveFile(model, port, command.patterns, command.description);
  if (path.empty() || !ConfirmOverwrite(port, path)) return CommandResult::Cancelled;
  port.SetBusy(true);
  const bool ok = ReplaceFile(path, write);
  port.SetBusy(false);
  if (!ok) {
    port.ShowMessage(WriteErrorMessage(path));
    return CommandResult::Failed;
  }
  port.ShowMessage(command.successMessage + std::string(kLineBreak) + path);
  return CommandResult::Done;
}

CommandResult mnusavetxt(const PuzzleModel& model, WindowPort& port) {
  const std::string drawing = TextDrawing(model, model.Comment, model.CurrentPuzzle);
  return RunSaveCommand(model, port, {"*.txt", "Text Files", "Puzzle saved as text file:"},
                        [&drawing](const std::string& path) { return WriteWholeFile(path, drawing); });
}

CommandResult mnusavexls(const PuzzleModel& model, WindowPort& port) {
  return RunSaveCommand(model, port, {"*.xls", "Excel Files", "Puzzle saved as XLS File:"},
                        [&model](const std::string& path) {
                          return WriteXlsFile(model, model.Comment, model.CurrentPuzzle, path);
                        });
}

CommandResult SaveHtmlFile(const PuzzleModel& model, WindowPort& port,
                           const std::vector<std::string>& templateDirectories) {
  return RunSaveCommand(model, port, {"*.htm", "Html Files", "Puzzle saved as Html File:"},
                        [&](const std::string& path) {
                          std::string page;
                          const auto withSolution = [&port] { return port.AskYesNo("Save Solution also?"); };
                          return BuildHtmlPage(model, withSolution, model.Comment, templateDirectories, page) &&
                                 WriteWholeFile(path, page);
                        });
}

}  // namespace qm
