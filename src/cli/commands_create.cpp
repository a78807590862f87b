// create: batch creation as the "Multiple Puzzles" command runs it, after the creation
// dialog's own validation.
#include <algorithm>
#include <atomic>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>

#include "cli/cli_support.h"
#include "cli/commands.h"
#include "core/collection_file.h"
#include "core/text_rules.h"
#include "commands/batch_creation.h"
#include "generator/create_puzzle.h"
#include "generator/creation_options.h"
#include "reasoning/ladder.h"

namespace qm::cli {

namespace {

struct CreateArgs {
  std::string size = "5";
  std::string clues = "level:Easy";
  int count = 1;
  bool display = false;
  std::string title;
  std::string out;
  std::optional<std::uint64_t> seed;
  int jobs = 1;
  std::string stamp;
  std::string shard;  // "I/N"
  int minGrade = 0;
  int maxGrade = reasoning::kTopRung;
};

// Keeps to the grade range, but never forever: a range the size and clue rule cannot
// reach would make puzzles without end, so past this many refusals in a row every
// puzzle is kept and the command says the range was not met.
constexpr long kMaxGradeRefusals = 2000;

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower;
}

bool WholeNumber(std::string_view text, int& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

// "I/N" with 1 <= I <= N, both whole numbers that fit an int.
bool ParseShard(std::string_view text, int& index, int& count) {
  const auto slash = text.find('/');
  return slash != std::string_view::npos && WholeNumber(text.substr(0, slash), index) &&
         WholeNumber(text.substr(slash + 1), count) && index >= 1 && index <= count;
}

// Fills the clue choice and its field from RULE; returns what is wrong with it, if anything.
std::string ReadClueRule(const std::string& rule, CreationOptions& options) {
  const auto colon = rule.find(':');
  const std::string kind = Lower(rule.substr(0, colon));
  const std::string value = colon == std::string::npos ? "" : rule.substr(colon + 1);
  const bool hasValue = colon != std::string::npos;
  int number = 0;
  if ((kind == "none" || kind == "random") && !hasValue) {
    options.clueChoice = kind == "none" ? kChoiceNoClues : kChoiceRandom;
    return {};
  }
  if (kind == "level" && hasValue) {
    for (int level = kVeryHard; level <= kVeryEasy; ++level) {
      const std::string_view name = LevelNames[static_cast<std::size_t>(level)];
      if (Lower(value) == Lower(name)) {
        options.clueChoice = kChoiceByLevel;
        options.level = name;
        return {};
      }
    }
    return "level must be VeryHard, Hard, Easy or VeryEasy, got \"" + value + "\"";
  }
  if ((kind == "fixed" || kind == "exactly" || kind == "upto") && hasValue) {
    if (!WholeNumber(value, number) || (kind == "fixed" && number < 1)) {
      return kind + (kind == "fixed" ? " needs a digit of 1 or more" : " needs a whole number") + ", got \"" +
             value + "\"";
    }
    options.clueChoice = kind == "fixed" ? kChoiceFixedClue : kind == "exactly" ? kChoiceExactly : kChoiceUpto;
    (kind == "fixed" ? options.fixedDigit : kind == "exactly" ? options.exactCount : options.uptoCount) = value;
    return {};
  }
  return "expected none, fixed:D, exactly:N, upto:N, level:NAME or random, got \"" + rule + "\"";
}

std::string CheckClueRule(const std::string& rule) {
  CreationOptions options;
  return ReadClueRule(rule, options);
}

std::string CheckSize(const std::string& size) {
  const bool listed = std::find(kGridSizeChoices.begin(), kGridSizeChoices.end(), size) != kGridSizeChoices.end();
  return listed || Lower(size) == Lower(kRandomSize) ? "" : "size must be 3..9 or Random, got \"" + size + "\"";
}

// A comma or a line break in a comment spoils the record when it is read back.
std::string CheckCommentText(const std::string& text) {
  if (text.find_first_of(",\r\n") != std::string::npos) return "a comma or a line break would cut the record's comment short";
  if (CommentLooksLikeRecord(text)) return std::string(kCommentRecordMessage);
  return "";
}

Json PuzzleListJson(const BatchResult& result) {
  Json list = Json::array();
  for (const CreatedPuzzle& puzzle : result.puzzles) {
    list.push_back({{"number", puzzle.number},
                    {"size", puzzle.size},
                    {"signs", puzzle.signs},
                    {"clues", puzzle.clues},
                    {"level", LevelNames[static_cast<std::size_t>(puzzle.level)]},
                    {"title", Cp1252ToUtf8(puzzle.title)}});
  }
  return list;
}

int PrintDisplayed(Output& output, PuzzleModel& model, const CreatedPuzzle& puzzle, const BatchResult& result) {
  model.ClueCount = puzzle.clues;  // as a record's size line would carry it
  if (output.json) {
    Json shown = ShownPuzzleJson(model, 0, model.Comment);
    shown["level"] = LevelNames[static_cast<std::size_t>(puzzle.level)];
    shown["message"] = result.message;
    PrintJson(output, shown);
  } else {
    PrintShownPuzzle(output.out, model, "New puzzle, not written to a file", model.Comment);
    output.out << '\n' << result.message << '\n';
  }
  return kExitOk;
}

// A grade level by number or by name ("tough"), as the option's value.
std::string GradeLevelOption(std::string& value) {
  for (int level = 1; level <= reasoning::kTopRung; ++level) {
    if (value == std::to_string(level) || Lower(value) == Lower(reasoning::RungName(level))) {
      value = std::to_string(level);
      return "";
    }
  }
  return "grade level must be 1.." + std::to_string(reasoning::kTopRung) + " or a grade name";
}

int RunCreate(Output& output, const CreateArgs& args) {
  if (args.minGrade > args.maxGrade) throw UsageError{"--min-grade is above --max-grade"};
  if (args.display && args.count != 1) throw UsageError{"--display makes one puzzle: --count must be 1"};
  if (!args.display && args.out.empty()) throw UsageError{"--out FILE is required unless --display is given"};

  CreationOptions options;
  options.count = std::to_string(args.count);
  options.displayOne = args.display;
  options.size = CheckSize(args.size).empty() && Lower(args.size) == Lower(kRandomSize) ? kRandomSize : args.size;
  ReadClueRule(args.clues, options);
  options.title = Utf8ToCp1252(args.title);
  options.outputFile = args.out;
  const CreationValidation validation = ValidateCreationOptions(options);
  if (!validation.Accepted()) return Fail(output, validation.message);

  PuzzleModel model;
  HeadlessPort port;
  if (args.seed) SeedRandom(model, *args.seed);
  Generator generator;
  BatchOptions batch;
  batch.stamp = Utf8ToCp1252(args.stamp);
  batch.jobs = args.jobs;
  if (!args.shard.empty()) {
    if (args.display) throw UsageError{"--shard makes part of a batch for a file: it cannot go with --display"};
    ParseShard(args.shard, batch.shardIndex, batch.shardCount);
  }
  // Every record number must fit: a sharded run numbers its puzzles 1..count as one
  // run would, an unsharded one goes on from the file's count.
  const long long lastNumber =
      args.shard.empty() && !args.display ? static_cast<long long>(CountPuzzles(args.out)) + args.count : args.count;
  if (lastNumber > std::numeric_limits<int>::max()) {
    throw UsageError{"--count: record numbers up to " + std::to_string(lastNumber) + " would not fit (largest " +
                     std::to_string(std::numeric_limits<int>::max()) + ")"};
  }
  const bool graded = args.minGrade > 0 || args.maxGrade < reasoning::kTopRung;
  auto refusals = std::make_shared<std::atomic<long>>(0);
  auto outside = std::make_shared<std::atomic<int>>(0);
  if (graded) {
    batch.accept = [&args, refusals, outside](const PuzzleModel& puzzle) {
      const int level = reasoning::ExplainModel(puzzle).grade.level;
      if (level >= args.minGrade && level <= args.maxGrade) {
        refusals->store(0);
        return true;
      }
      if (refusals->fetch_add(1) < kMaxGradeRefusals) return false;
      ++*outside;
      return true;
    };
    batch.titleNote = [](const PuzzleModel& puzzle) { return reasoning::ExplainModel(puzzle).grade.name; };
  }
  RunControl run(model, port);
  const BatchResult result = CreatePuzzles(model, run, generator, validation.settings, batch);
  if (args.display && !result.puzzles.empty()) return PrintDisplayed(output, model, result.puzzles.front(), result);

  const Json known = {{"added", result.added},
                      {"file", args.out},
                      {"message", result.message},
                      {"puzzles", PuzzleListJson(result)}};
  if (result.writeFailed) {
    // The puzzles appended before the failure stay in the file: say how many.
    Json failed = known;
    failed["note"] = std::to_string(result.added) + (result.added == 1 ? " puzzle" : " puzzles") +
                     " made before the failure " + (result.added == 1 ? "was" : "were") + " kept in " + args.out;
    return Fail(output, port.messages.front(), failed);
  }
  if (*outside > 0) {
    return Fail(output, "The grade range was not met: " + std::to_string(outside->load()) +
                            " puzzles lie outside it (no puzzle within it came in " +
                            std::to_string(kMaxGradeRefusals) + " tries)", known);
  }
  if (output.json) {
    PrintJson(output, known);
    return kExitOk;
  }
  for (const CreatedPuzzle& puzzle : result.puzzles) {
    output.out << "#" << puzzle.number << "  " << puzzle.size << "x" << puzzle.size << ", " << puzzle.signs
               << " signs, " << puzzle.clues << " clues, " << LevelNames[static_cast<std::size_t>(puzzle.level)]
               << ": " << Cp1252ToUtf8(puzzle.title) << '\n';
  }
  output.out << result.message << '\n';
  return kExitOk;
}

}  // namespace

void RegisterCreateCommands(CLI::App& app, CommandList& commands, bool& json) {
  const auto [create, args] = AddArgsCommand<CreateArgs>(
      app, commands, "create", "Create puzzles and append them to a collection file, as Multiple Puzzles does", json,
      RunCreate);
  create->add_option("--size", args->size, "Grid size 3..9, or Random for a size drawn per puzzle (default 5)")
      ->check(CheckSize);
  create->add_option("--clues", args->clues,
                     "Clue rule: none, fixed:D, exactly:N, upto:N, level:VeryHard|Hard|Easy|VeryEasy or random "
                     "(default level:Easy)")
      ->type_name("RULE")
      ->check(CheckClueRule);
  create->add_option("--count", args->count, "Number of puzzles (default 1)");
  create->add_flag("--display", args->display, "Make one puzzle and print it; nothing is written");
  create->add_option("--title", args->title, "Title of every puzzle (default: Auto (level) date time)")
      ->check(CheckCommentText);
  create->add_option("--out", args->out, "Collection file to append to (required without --display)");
  create->add_option("--seed", args->seed, "Seed of the random generator: the same request writes the same puzzles")
      ->check(SeedCheck());
  const std::string levels = "1.." + std::to_string(reasoning::kTopRung) + " or a grade name";
  create->add_option("--min-grade", args->minGrade, "Keep only puzzles graded at least this (" + levels + ")")
      ->transform(CLI::Validator(GradeLevelOption, "LEVEL"));
  create->add_option("--max-grade", args->maxGrade, "Keep only puzzles graded at most this (" + levels + ")")
      ->transform(CLI::Validator(GradeLevelOption, "LEVEL"));
  create->add_option("--shard", args->shard,
                     "Make only shard I of N: puzzles I, I+N, I+2N, ... of the request, numbered as in one run")
      ->type_name("I/N")
      ->check(CLI::Validator(
          [](std::string& value) -> std::string {
            int index = 0;
            int count = 0;
            return ParseShard(value, index, count) ? "" : "must be I/N with 1 <= I <= N, got " + value;
          },
          "I/N"));
  create->add_option("--jobs", args->jobs, "Worker threads (default 1); the file is the same for any number")
      ->check(CLI::Range(1, 64));
  create->add_option("--stamp", args->stamp,
                     "Date and time in automatic titles (default: the clock when the run starts)")
      ->check(CheckCommentText);
}

}  // namespace qm::cli
