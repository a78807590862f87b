// sort, append, delete, backup and copy: the collection commands, answering Yes to
// their questions.
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>
#include <memory>
#include <optional>

#include "cli/cli_support.h"
#include "cli/command_report.h"
#include "cli/commands.h"
#include "commands/collection_commands.h"
#include "collections/merge_shards.h"
#include "commands/sort_commands.h"
#include "core/collection_file.h"
#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm::cli {

namespace {

struct SortArgs {
  std::string input;
  std::string output;
  int by = kSortByHeader;
  int order = kSortAscending;
  std::optional<std::string> start;
  std::optional<std::uint64_t> seed;
};

// The commands' own failure messages name the file written; when the real trouble is the
// source, a note says so.
Json SourceNote(const std::string& source) {
  if (IsRegularFile(source) && ::access(source.c_str(), R_OK) == 0) return Json::object();
  return {{"note", "The source file cannot be read: " + source}};
}

Json WithNote(Json fields, const std::string& source) {
  fields.update(SourceNote(source));
  return fields;
}

// A numeric START must leave room for every record's number in an int.
void CheckResequenceStart(const SortArgs& args) {
  if (!args.start) return;
  const std::string& text = *args.start;
  long long start = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), start);
  if (error == std::errc::invalid_argument || end != text.data() + text.size()) return;  // the dialog's own check
  const long long last = start + std::max(0, CountPuzzles(args.input)) - 1;
  if (error == std::errc::result_out_of_range || last > std::numeric_limits<int>::max()) {
    throw UsageError{"--resequence: record numbers from " + text + " would not fit (largest " +
                     std::to_string(std::numeric_limits<int>::max()) + ")"};
  }
}

int RunSort(Output& output, const SortArgs& args) {
  CheckResequenceStart(args);
  PuzzleModel model;
  if (args.seed) SeedRandom(model, *args.seed);
  HeadlessPort port;
  SortRequest request{args.input, args.output, args.by, args.order, args.start.has_value(), args.start.value_or(""), {}};
  const SortOutcome outcome = SortPuzzleFile(model, port, request);
  return ReportCommand(output, outcome.result, port, WithNote({{"count", outcome.count}}, args.input));
}

// The file a command names, refused when empty (the window would have ended silently).
const std::string& Named(const std::string& path, const char* what) {
  if (path.empty()) throw UsageError{std::string(what) + ": the file name is empty"};
  return path;
}

void AddSort(CLI::App& app, CommandList& commands, bool& json) {
  auto args = std::make_shared<SortArgs>();
  CLI::App* command = AddCommand(app, commands, "sort", "Copy a collection file into another in a new order", json,
                                 [args](Output& output) { return RunSort(output, *args); });
  command->add_option("IN", args->input, "Source collection file")->required();
  command->add_option("OUT", args->output, "Output collection file (replaced)")->required();
  const std::map<std::string, int> criteria = {
      {"header", kSortByHeader}, {"signs", kSortBySigns}, {"number", kSortByNumber}, {"size", kSortBySize}};
  const std::map<std::string, int> orders = {
      {"ascending", kSortAscending}, {"descending", kSortDescending}, {"random", kSortRandom}};
  command->add_option("--by", args->by, "header, signs, number or size")
      ->required()
      ->transform(CLI::CheckedTransformer(criteria));
  command->add_option("--order", args->order, "ascending, descending or random")
      ->required()
      ->transform(CLI::CheckedTransformer(orders));
  command->add_option("--resequence", args->start, "Renumber the records from START")->type_name("START");
  command->add_option("--seed", args->seed, "Seed of the random order, for a reproducible run")
      ->check(SeedCheck());
}

void AddAppend(CLI::App& app, CommandList& commands, bool& json) {
  auto destination = std::make_shared<std::string>();
  CLI::App* command = AddPuzzleCommand(
      app, commands, "append", "Append a puzzle of one collection file to another", json, false,
      [destination](Output& output, const PuzzleArgs&, PuzzleModel& model, HeadlessPort& port) {
        port.fileAnswers.push_back(Named(*destination, "DEST"));
        return ReportCommand(output, mnuappend(model, port), port, {{"file", *destination}});
      });
  command->add_option("DEST", *destination, "Collection file to append to")->required();
}

void AddDelete(CLI::App& app, CommandList& commands, bool& json) {
  CLI::App* command = AddPuzzleCommand(
      app, commands, "delete", "Delete a puzzle from its collection file", json, false,
      [](Output& output, const PuzzleArgs&, PuzzleModel& model, HeadlessPort& port) {
        return ReportCommand(output, mnudelete(model, port, std::to_string(model.CurrentPuzzle)), port);
      });
  command->get_option("--puzzle")->required();
}

// backup and copy work on the file alone: it becomes the current file unread.
struct FileArgs {
  std::string file;
  std::string destination;
};

void AddBackupAndCopy(CLI::App& app, CommandList& commands, bool& json) {
  auto backup = std::make_shared<FileArgs>();
  AddCommand(app, commands, "backup", "Copy a collection file to its next backup name", json,
             [backup](Output& output) {
               PuzzleModel model;
               HeadlessPort port;
               model.CurrentFile = backup->file;
               const std::string name = BackupName(backup->file);
               return ReportCommand(output, mnubackup(model, port), port, WithNote({{"file", name}}, backup->file));
             })
      ->add_option("FILE", backup->file, "Collection file")
      ->required();

  auto copy = std::make_shared<FileArgs>();
  CLI::App* command = AddCommand(app, commands, "copy", "Copy a collection file under a new name", json,
                                 [copy](Output& output) {
                                   PuzzleModel model;
                                   HeadlessPort port;
                                   model.CurrentFile = copy->file;
                                   port.fileAnswers.push_back(Named(copy->destination, "DEST"));
                                   return ReportCommand(output, mnusaveas(model, port), port,
                                                        WithNote({{"file", copy->destination}}, copy->file));
                                 });
  command->add_option("FILE", copy->file, "Collection file")->required();
  command->add_option("DEST", copy->destination, "The copy")->required();
}

void AddMerge(CLI::App& app, CommandList& commands, bool& json) {
  auto output = std::make_shared<std::string>();
  auto shards = std::make_shared<std::vector<std::string>>();
  CLI::App* command = AddCommand(
      app, commands, "merge", "Interleave the shard files of a sharded create into the file one run would write",
      json, [output, shards](Output& out) {
        const MergeResult merged = MergeShards(*shards, Named(*output, "OUT"));
        if (!merged.ok) return Fail(out, merged.message, {{"file", *output}});
        const std::string message = Str(merged.records) + " Puzzles merged into file: " + *output;
        if (out.json) {
          PrintJson(out, Json{{"file", *output}, {"records", merged.records}, {"message", message}});
        } else {
          out.out << message << '\n';
        }
        return kExitOk;
      });
  command->add_option("OUT", *output, "The merged collection file (replaced)")->required();
  command->add_option("SHARD", *shards, "Shard files, shard 1 first")->required();
}

}  // namespace

void RegisterCollectionCommands(CLI::App& app, CommandList& commands, bool& json) {
  AddMerge(app, commands, json);
  AddSort(app, commands, json);
  AddAppend(app, commands, json);
  AddDelete(app, commands, json);
  AddBackupAndCopy(app, commands, json);
}

}  // namespace qm::cli
