// export: the text, HTML and XLS exports of a loaded puzzle.
#include <memory>

#include "cli/cli_support.h"
#include "cli/command_report.h"
#include "cli/commands.h"
#include "export/html_export.h"
#include "export/text_export.h"
#include "export/xls_export.h"

namespace qm::cli {

namespace {

struct ExportArgs {
  std::string format;
  PuzzleArgs puzzle;
  std::string out;
  bool noSolution = false;
  std::string templateDirectory;
};

// Answers the export's questions the way the command line asked: Yes to overwriting,
// and to "Save Solution also?" unless --no-solution.
class ExportPort : public HeadlessPort {
 public:
  explicit ExportPort(bool solution) : solution_(solution) {}
  bool AskYesNo(const std::string& question) override {
    HeadlessPort::AskYesNo(question);
    return question == "Save Solution also?" ? solution_ : true;
  }

 private:
  bool solution_;
};

int RunExport(Output& output, const ExportArgs& args) {
  if (args.out.empty()) throw UsageError{"-o: the output file name is empty"};
  PuzzleModel model;
  HeadlessPort loading;
  std::string error;
  if (!LoadFromArgs(model, loading, args.puzzle, error)) return Fail(output, error, {{"ordinal", args.puzzle.ordinal}});

  ExportPort port(!args.noSolution);
  port.fileAnswers.push_back(args.out);
  CommandResult result = CommandResult::Failed;
  if (args.format == "txt") {
    result = mnusavetxt(model, port);
  } else if (args.format == "xls") {
    result = mnusavexls(model, port);
  } else {
    std::vector<std::string> directories = DefaultTemplateDirectories(model);
    if (!args.templateDirectory.empty()) directories.front() = args.templateDirectory;
    result = SaveHtmlFile(model, port, directories);
    if (result != CommandResult::Done && (model.GridSize < 3 || model.GridSize > 5)) {
      const std::string size = std::to_string(model.GridSize) + "x" + std::to_string(model.GridSize);
      return ReportCommand(output, result, port,
                           {{"file", args.out},
                            {"note", "There is no HTML template for a " + size +
                                         " puzzle: templates exist for 3x3, 4x4 and 5x5 only (export txt or xls "
                                         "instead)"}});
    }
  }
  return ReportCommand(output, result, port, {{"file", args.out}});
}

}  // namespace

void RegisterExportCommands(CLI::App& app, CommandList& commands, bool& json) {
  auto args = std::make_shared<ExportArgs>();
  CLI::App* command = AddCommand(app, commands, "export",
                                 "Write a puzzle and its solution as a text drawing, an HTML page or an XLS sheet",
                                 json, [args](Output& output) { return RunExport(output, *args); });
  command->add_option("FORMAT", args->format, "txt, html or xls")
      ->required()
      ->check(CLI::IsMember({"txt", "html", "xls"}));
  AddPuzzleArgs(*command, args->puzzle, true);
  command->add_option("-o,--out", args->out, "Output file")->required();
  command->add_flag("--no-solution", args->noSolution, "Answer No to \"Save Solution also?\" (HTML only)");
  command->add_option("--template-dir", args->templateDirectory,
                      "Look for the HTML templates here instead of the current directory");
}

}  // namespace qm::cli
