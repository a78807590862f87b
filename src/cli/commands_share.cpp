// code and open: a puzzle as a share code, and a share code back into a collection.
#include "cli/cli_support.h"
#include "cli/commands.h"
#include "core/collection_file.h"
#include "core/share_code.h"
#include "core/text_rules.h"

namespace qm::cli {

namespace {

struct OpenArgs {
  std::string code;
  std::string file;
};

int RunOpen(Output& output, const OpenArgs& args) {
  PuzzleModel model;
  std::string error;
  if (!LoadShareCode(model, args.code, &error)) throw UsageError{"Not a share code: " + error};
  const int number = CountPuzzles(args.file) + 1;
  // The code itself is the comment: it says where the puzzle came from and reads back
  // as a plain comment (it never begins with "#" and holds no comma).
  const std::string comment = EncodeShareCode(model);
  if (!AppendPuzzle(model, comment, number, args.file)) {
    return Fail(output, "Error writing puzzle#" + Str(number) + " to file: " + args.file);
  }
  if (output.json) {
    PrintJson(output, Json{{"file", args.file}, {"number", number}});
  } else {
    output.out << "Puzzle#" << number << " appended to file " << args.file << '\n';
  }
  return kExitOk;
}

}  // namespace

void RegisterShareCommands(CLI::App& app, CommandList& commands, bool& json) {
  AddPuzzleCommand(app, commands, "code", "Print the puzzle's share code and the link that opens it", json, false,
                   [](Output& output, const PuzzleArgs&, PuzzleModel& model, HeadlessPort&) {
                     const std::string code = EncodeShareCode(model);
                     if (output.json) {
                       PrintJson(output, Json{{"code", code}, {"link", ShareLink(code)}});
                     } else {
                       output.out << code << '\n';
                     }
                     return kExitOk;
                   });

  auto open = AddArgsCommand<OpenArgs>(app, commands, "open", "Append the puzzle of a share code to a collection",
                                       json, RunOpen);
  open.command->add_option("CODE", open.args->code, "Share code (or a #p= link)")->required();
  open.command->add_option("-o,--out", open.args->file, "Collection file to append to")->required();
}

}  // namespace qm::cli
