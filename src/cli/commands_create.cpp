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
  int maxGrade = 0;
  int grade = 0;
  std::string grades;  // "NAME:K,NAME:K"
  std::string symmetry = "none";
  bool noMinimal = false;
  int minSigns = 20;
  int tries = 0;
  // Which options the command line gave.
  CLI::Option* countGiven = nullptr;
  CLI::Option* cluesGiven = nullptr;
};

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
    if (puzzle.grade > 0) {
      list.back()["grade"] = {{"level", puzzle.grade}, {"name", reasoning::RungName(puzzle.grade)}, {"score", puzzle.score}};
    }
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
int GradeLevel(const std::string& value) {
  for (int level = reasoning::kSingles; level <= reasoning::kTopRung; ++level) {
    if (value == std::to_string(level) || Lower(value) == Lower(reasoning::RungName(level))) return level;
  }
  return 0;
}

std::string GradeLevelOption(std::string& value) {
  const int level = GradeLevel(value);
  if (level == 0) return "grade level must be 1.." + std::to_string(reasoning::kTopRung) + " or a grade name";
  value = std::to_string(level);
  return "";
}

// "Gentle:10,Tough:10": the bands of a graded mix, in order; throws UsageError.
std::vector<GradeBand> ReadGradeMix(const std::string& mix) {
  std::vector<GradeBand> bands;
  std::size_t start = 0;
  while (start <= mix.size()) {
    const std::size_t comma = std::min(mix.find(',', start), mix.size());
    const std::string part = mix.substr(start, comma - start);
    const std::size_t colon = part.rfind(':');
    int count = 0;
    const int level = colon == std::string::npos ? 0 : GradeLevel(part.substr(0, colon));
    if (level == 0 || !WholeNumber(std::string_view(part).substr(colon + 1), count) || count < 0) {
      throw UsageError{"--grades must be NAME:K,NAME:K,... with grade names and counts, got \"" + part + "\""};
    }
    bands.push_back({level, level, count});
    start = comma + 1;
  }
  return bands;
}

bool GradedRequest(const CreateArgs& args) {
  return args.minGrade > 0 || args.maxGrade > 0 || args.grade > 0 || !args.grades.empty();
}

int RunCreate(Output& output, const CreateArgs& args) {
  const bool graded = GradedRequest(args);
  int minGrade = args.grade > 0 ? args.grade : args.minGrade > 0 ? args.minGrade : reasoning::kSingles;
  int maxGrade = args.grade > 0 ? args.grade : args.maxGrade > 0 ? args.maxGrade : reasoning::kTopRung;
  if (args.grade > 0 && (args.minGrade > 0 || args.maxGrade > 0)) {
    throw UsageError{"--grade sets both bounds: it cannot go with --min-grade or --max-grade"};
  }
  if (minGrade > maxGrade) throw UsageError{"--min-grade is above --max-grade"};
  GradedBatch gradedBatch;
  int count = args.count;
  if (!args.grades.empty()) {
    if (args.grade > 0 || args.minGrade > 0 || args.maxGrade > 0) {
      throw UsageError{"--grades names the grade of every puzzle: it cannot go with --grade, --min-grade or --max-grade"};
    }
    gradedBatch.bands = ReadGradeMix(args.grades);
    count = 0;
    for (const GradeBand& band : gradedBatch.bands) count += band.count;
    if (args.countGiven != nullptr && args.countGiven->count() > 0 && count != args.count) {
      throw UsageError{"--grades makes " + std::to_string(count) + " puzzles, but --count asks for " +
                       std::to_string(args.count)};
    }
  } else if (graded) {
    gradedBatch.bands.push_back({minGrade, maxGrade, count});
  }
  if (!graded && (args.symmetry != "none" || args.noMinimal || args.minSigns != 20 || args.tries != 0)) {
    throw UsageError{"--symmetry, --no-minimal, --min-signs and --tries go with a grade option"};
  }
  gradedBatch.minimal = !args.noMinimal;
  gradedBatch.minSignsPercent = args.minSigns;
  gradedBatch.maxTries = args.tries;
  if (args.display && count != 1) throw UsageError{"--display makes one puzzle: --count must be 1"};
  if (!args.display && args.out.empty()) throw UsageError{"--out FILE is required unless --display is given"};

  CreationOptions options;
  options.count = std::to_string(count);
  options.displayOne = args.display;
  options.size = CheckSize(args.size).empty() && Lower(args.size) == Lower(kRandomSize) ? kRandomSize : args.size;
  // Graded creation without a clue rule lets the reduction choose the clues.
  const bool cluesGiven = args.cluesGiven != nullptr && args.cluesGiven->count() > 0;
  ReadClueRule(cluesGiven ? args.clues : graded ? "random" : "level:Easy", options);
  options.title = Utf8ToCp1252(args.title);
  options.outputFile = args.out;
  const CreationValidation validation = ValidateCreationOptions(options);
  if (!validation.Accepted()) return Fail(output, validation.message);
  CreationSettings settings = validation.settings;
  settings.symmetry = args.symmetry == "rotate" ? GradedSymmetry::Rotate
                      : args.symmetry == "mirror" ? GradedSymmetry::Mirror
                                                  : GradedSymmetry::None;
  if (graded) {
    // A rule and a grade that cannot go together are named before anything is made.
    for (const GradeBand& band : gradedBatch.bands) {
      const std::string conflict = GradedConflictFor(settings, band.minGrade, band.maxGrade, args.minSigns);
      if (!conflict.empty()) return Fail(output, conflict);
    }
  }

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
  batch.graded = gradedBatch;
  RunControl run(model, port);
  const BatchResult result = CreatePuzzles(model, run, generator, settings, batch);
  if (args.display && result.puzzles.empty()) return Fail(output, result.message);
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
  if (!result.shortfall.empty()) return Fail(output, result.message, known);
  if (output.json) {
    PrintJson(output, known);
    return kExitOk;
  }
  for (const CreatedPuzzle& puzzle : result.puzzles) {
    output.out << "#" << puzzle.number << "  " << puzzle.size << "x" << puzzle.size << ", " << puzzle.signs
               << " signs, " << puzzle.clues << " clues, " << LevelNames[static_cast<std::size_t>(puzzle.level)];
    if (puzzle.grade > 0) output.out << ", graded " << reasoning::RungName(puzzle.grade) << " (score " << puzzle.score << ")";
    output.out << ": " << Cp1252ToUtf8(puzzle.title) << '\n';
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
  args->cluesGiven = create->add_option("--clues", args->clues,
                     "Clue rule: none, fixed:D, exactly:N, upto:N, level:VeryHard|Hard|Easy|VeryEasy or random "
                     "(default level:Easy; graded: the reduction chooses)")
      ->type_name("RULE")
      ->check(CheckClueRule);
  args->countGiven = create->add_option("--count", args->count, "Number of puzzles (default 1)");
  create->add_flag("--display", args->display, "Make one puzzle and print it; nothing is written");
  create->add_option("--title", args->title, "Title of every puzzle (default: Auto (level) date time)")
      ->check(CheckCommentText);
  create->add_option("--out", args->out, "Collection file to append to (required without --display)");
  create->add_option("--seed", args->seed, "Seed of the random generator: the same request writes the same puzzles")
      ->check(SeedCheck());
  const std::string levels = "(1.." + std::to_string(reasoning::kTopRung) + " or a grade name)";
  create->add_option("--min-grade", args->minGrade,
                     "Creation by grade: every puzzle unique by the exact search and graded at least this " + levels)
      ->transform(CLI::Validator(GradeLevelOption, "LEVEL"));
  create->add_option("--max-grade", args->maxGrade, "Creation by grade: graded at most this " + levels)
      ->transform(CLI::Validator(GradeLevelOption, "LEVEL"));
  create->add_option("--grade", args->grade, "Creation by grade: graded exactly this " + levels)
      ->transform(CLI::Validator(GradeLevelOption, "LEVEL"));
  create->add_option("--grades", args->grades,
                     "Creation by grade, a mix made in order, such as \"Gentle:10,Tough:10,Expert:10\" (sets the count)")
      ->type_name("MIX");
  create->add_option("--symmetry", args->symmetry,
                     "Graded: clue cells and sign pattern symmetric under a half-turn (rotate) or a left-right "
                     "mirror (default none)")
      ->check(CLI::IsMember({"none", "rotate", "mirror"}));
  create->add_flag("--no-minimal", args->noMinimal,
                   "Graded: from Tough up, keep givens that could go (default: no single clue or sign can go)");
  create->add_option("--min-signs", args->minSigns,
                     "Graded, below Tough: at least P % of the sign slots keep a sign (default 20)")
      ->type_name("P")
      ->check(CLI::Range(0, 100));
  create->add_option("--tries", args->tries,
                     "Graded: tries per puzzle before the command gives up (default 4000 up to 5x5, else 1000)")
      ->check(CLI::Range(1, 10000000));
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
