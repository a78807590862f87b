#include <gtest/gtest.h>

#include <set>

#include "commands/record_commands.h"
#include "core/collection_file.h"
#include "commands/headless_port.h"
#include "support/cli_run.h"
#include "support/created_puzzles.h"
#include "support/test_files.h"

namespace qm::cli {
namespace {

using nlohmann::json;

class CreateCommand : public ::testing::Test {
 protected:
  test::CliRun Create(std::vector<std::string> args, bool withOut = true) {
    args.insert(args.begin(), "create");
    if (withOut) args.insert(args.end(), {"--out", file});
    args.push_back("--json");
    return test::Cli(args);
  }
  test::TempDir dir;
  std::string file = dir.File("made.fut");
};

TEST_F(CreateCommand, ReportsWhatTheFileCarries) {
  const test::CliRun run = Create({"--size", "6", "--clues", "level:Hard", "--count", "2", "--stamp", "today"});
  ASSERT_EQ(run.code, 0) << run.err;
  const json j = run.Json();
  EXPECT_EQ(j["message"], " 2 Puzzles added to file: " + file);
  PuzzleModel model;
  HeadlessPort port;
  for (int n = 1; n <= 2; ++n) {
    const json& puzzle = j["puzzles"][static_cast<std::size_t>(n - 1)];
    ASSERT_FALSE(ReadPuzzle(model, port, file, n).notFound);
    EXPECT_EQ(puzzle, (json{{"number", n}, {"size", 6}, {"signs", model.ConstraintCount}, {"clues", 6},
                            {"level", "Hard"}, {"title", "Auto (Hard) today"}}));
    EXPECT_EQ(model.ClueCount, 6);
  }
  // The fixed clue is on the size line, but not counted for the level.
  const json fixed = Create({"--size", "4", "--clues", "fixed:2"}).Json()["puzzles"][0];
  EXPECT_EQ(fixed["clues"], 1);
  EXPECT_EQ(fixed["level"], "VeryHard");

  // One puzzle for display: printed as show prints a puzzle, nothing written.
  const json shown = test::Cli({"create", "--display", "--clues", "exactly:3", "--title", "Look", "--json"}).Json();
  EXPECT_EQ(shown["title"], "Look");
  EXPECT_EQ(shown["clues"], 3);
  EXPECT_EQ(shown["level"], "Hard");  // 3 clues reach the 5x5 Hard count, not the Easy one
  EXPECT_EQ(shown["message"], "Done");
  EXPECT_EQ(CountPuzzles(file), 3);
}

TEST_F(CreateCommand, ValidationMessagesFailAndUsageErrorsExitTwo) {
  for (const auto& [args, message] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"--count", "0"}, "Specify number of puzzles to create"},
           {{"--count", "-3", "--size", "6", "--clues", "none"}, "Specify number of puzzles to create"},
           {{"--size", "6", "--clues", "none"}, "Must have clues in grid size >5"},
           {{"--size", "7", "--clues", "fixed:1"}, "Must have >1 clues in grid size >5"},
           {{"--size", "4", "--clues", "fixed:5"}, "Clue number is > grid size"},
           {{"--size", "Random", "--clues", "fixed:12"}, "Clue number is > maximum grid size"},
           {{"--size", "random", "--clues", "upto:4"}, "Cannot fix number of clues in random puzzle size"},
           {{"--size", "6", "--clues", "exactly:13"}, "Must have <12 clues for grid size6"},
           {{"--size", "6", "--clues", "upto:2"}, "Must have >3 clues for grid size6"},
           {{"--size", "3", "--clues", "exactly:1"}, "Must have <0 clues for grid size3"},
           {{"--size", "Random", "--clues", "exactly:4"}, "Cannot fix number of clues in random puzzle size"},
       }) {
    const test::CliRun run = Create(args);
    EXPECT_EQ(run.code, 1) << message;
    EXPECT_EQ(run.Json(), (json{{"error", message}}));
  }
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"--size", "12"}, {"--clues", "lots"}, {"--clues", "level:Medium"}, {"--clues", "fixed:0"},
           {"--clues", "exactly:x"}, {"--count", "two"}, {"--jobs", "0"}, {"--seed", "-1"},
           {"--title", "one, two"}, {"--display", "--count", "2"}}) {
    const test::CliRun run = Create(args);
    EXPECT_EQ(run.code, 2) << ::testing::PrintToString(args);
    EXPECT_FALSE(run.err.empty());
  }
  EXPECT_EQ(Create({}, false).code, 2);  // no --out
  EXPECT_EQ(test::ReadBytes(file), "");
  // Accepted: the rule becomes its ClueSpec code (Random with fixed:7 is 107).
  EXPECT_EQ(Create({"--size", "Random", "--clues", "fixed:7"}).code, 0);
  EXPECT_EQ(Create({"--size", "5", "--clues", "none"}).Json()["puzzles"][0]["clues"], 0);
  EXPECT_EQ(Create({"--size", "6", "--clues", "upto:4"}).Json()["puzzles"][0]["level"], "VeryHard");
}

// The default collection is the generator's own work.
TEST(ShippedCollection, EveryPuzzleSolvesToItsStoredSolution) {
  const std::string collection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";
  const int count = CountPuzzles(collection);
  EXPECT_GE(count, 50);
  PuzzleModel model;
  HeadlessPort port;
  std::set<std::string> kinds;
  for (int n = 1; n <= count; ++n) {
    ASSERT_FALSE(ReadPuzzle(model, port, collection, n).notFound) << n;
    EXPECT_TRUE(test::IsSoundPuzzle(model)) << n;
    kinds.insert(model.Comment);
  }
  EXPECT_EQ(kinds.size(), 25u);  // sizes 4 to 9 at the four levels, and the sample
}

}  // namespace
}  // namespace qm::cli
