#include <exception>

#include "cli/commands.h"

namespace qm::cli {

int RunCli(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  CLI::App app{"Quillmere: the headless face of the inequality puzzle workbench", "quillmere-cli"};
  app.require_subcommand(1, 1);
  app.set_version_flag("--version", "quillmere-cli 2.0");
  bool json = false;
  app.add_flag("--json", json, "Print one JSON object on stdout");
  CommandList commands;
  RegisterPuzzleCommands(app, commands, json);
  RegisterSolveCommands(app, commands, json);
  RegisterCollectionCommands(app, commands, json);
  RegisterExportCommands(app, commands, json);
  RegisterCreateCommands(app, commands, json);
  RegisterReasonCommands(app, commands, json);
  RegisterBookCommands(app, commands, json);
  RegisterShareCommands(app, commands, json);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int code = app.exit(e, out, err);
    return code == 0 ? kExitOk : kExitUsage;
  }

  Output output{out, err, json};
  for (auto& [command, run] : commands) {
    if (!command->parsed()) continue;
    try {
      return run(output);
    } catch (const UsageError& e) {
      err << e.message << '\n' << "Run with --help for more information.\n";
      return kExitUsage;
    } catch (const std::exception& e) {
      return Fail(output, std::string("Unexpected failure: ") + e.what());
    }
  }
  return kExitUsage;
}

}  // namespace qm::cli
