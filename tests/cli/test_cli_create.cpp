#include <gtest/gtest.h>

#include "core/collection_file.h"
#include "core/headless_port.h"
#include "support/cli_run.h"
#include "support/created_puzzles.h"
#include "support/test_files.h"

namespace qm::cli {
namespace {

using nlohmann::json;
using test::Cli;
using test::CliRun;

class CreateCommand : public ::testing::Test {
 protected:
  CliRun Create(std::vector<std::string> args, bool asJson = true) {
    args.insert(args.begin(), "create");
    if (asJson) args.push_back("--json");
    return Cli(args);
  }
  test::TempDir dir;
  std::string file = dir.File("made.fut");
};

TEST_F(CreateCommand, AppendsThePuzzlesAndReportsWhatTheFileCarries) {
  const CliRun run = Create({"--size", "6", "--clues", "level:Hard", "--count", "3", "--out", file, "--seed", "5",
                             "--stamp", "2026-05-06 07:08:09"});
  ASSERT_EQ(run.code, 0) << run.err;
  const json j = run.Json();
  EXPECT_EQ(j["added"], 3);
  EXPECT_EQ(j["file"], file);
  EXPECT_EQ(j["message"], " 3 Puzzles added to file: " + file);
  ASSERT_EQ(j["puzzles"].size(), 3u);
  PuzzleModel model;
  HeadlessPort port;
  for (int n = 1; n <= 3; ++n) {
    const json& puzzle = j["puzzles"][static_cast<std::size_t>(n - 1)];
    EXPECT_EQ(puzzle["number"], n);
    EXPECT_EQ(puzzle["level"], "Hard");
    EXPECT_EQ(puzzle["title"], "Auto (Hard) 2026-05-06 07:08:09");
    ASSERT_FALSE(ReadPuzzle(model, port, file, n).notFound);
    EXPECT_EQ(puzzle["size"], model.GridSize);
    EXPECT_EQ(puzzle["signs"], model.ConstraintCount);
    EXPECT_EQ(puzzle["clues"], model.ClueCount);
    EXPECT_EQ(model.ClueCount, 6);
    EXPECT_TRUE(test::IsSoundPuzzle(model)) << n;
  }

  // For people: one line per puzzle and the summary.
  const CliRun plain = Create({"--count", "2", "--out", file, "--title", "Book \xC3\xA9t\xC3\xA9"}, false);
  ASSERT_EQ(plain.code, 0) << plain.err;
  EXPECT_NE(plain.out.find("#4  5x5, "), std::string::npos) << plain.out;
  EXPECT_NE(plain.out.find("Easy: Book \xC3\xA9t\xC3\xA9\n"), std::string::npos) << plain.out;
  EXPECT_NE(plain.out.find(" 2 Puzzles added to file: " + file + "\n"), std::string::npos);
  ASSERT_FALSE(ReadPuzzle(model, port, file, 5).notFound);
  EXPECT_EQ(model.Comment, "Book \xE9t\xE9");  // the file keeps its single-byte code page
}

TEST_F(CreateCommand, FixedClueCountsTheClueTheFileCarries) {
  const json j = Create({"--size", "4", "--clues", "fixed:2", "--out", file}).Json();
  EXPECT_EQ(j["puzzles"][0]["clues"], 1);
  EXPECT_EQ(j["puzzles"][0]["level"], "VeryHard");  // the fixed clue is not counted for the level
}

TEST_F(CreateCommand, EveryValidationMessageFailsWithIt) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"--count", "0"}, "Specify number of puzzles to create"},
      {{"--count", "-4"}, "Specify number of puzzles to create"},
      {{"--size", "6", "--clues", "none"}, "Must have clues in grid size >5"},
      {{"--size", "7", "--clues", "fixed:1"}, "Must have >1 clues in grid size >5"},
      {{"--size", "4", "--clues", "fixed:5"}, "Clue number is > grid size"},
      {{"--size", "Random", "--clues", "fixed:12"}, "Clue number is > maximum grid size"},
      {{"--size", "Random", "--clues", "exactly:4"}, "Cannot fix number of clues in random puzzle size"},
      {{"--size", "random", "--clues", "upto:4"}, "Cannot fix number of clues in random puzzle size"},
      {{"--size", "6", "--clues", "exactly:13"}, "Must have <12 clues for grid size6"},
      {{"--size", "6", "--clues", "upto:2"}, "Must have >3 clues for grid size6"},
      {{"--size", "3", "--clues", "exactly:1"}, "Must have <0 clues for grid size3"},
  };
  for (const auto& [args, message] : cases) {
    auto withOut = args;
    withOut.insert(withOut.end(), {"--out", file});
    const CliRun run = Create(withOut);
    EXPECT_EQ(run.code, 1) << message;
    EXPECT_EQ(run.Json(), (json{{"error", message}}));
    const CliRun plain = Create(withOut, false);
    EXPECT_EQ(plain.err, message + "\n");
  }
  EXPECT_FALSE(test::ReadBytes(file).size());
}

TEST_F(CreateCommand, AWrongCommandLineIsAUsageError) {
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"--size", "12", "--out", file},
           {"--size", "five", "--out", file},
           {"--clues", "lots", "--out", file},
           {"--clues", "level:Medium", "--out", file},
           {"--clues", "fixed:0", "--out", file},
           {"--clues", "exactly:x", "--out", file},
           {"--clues", "none:3", "--out", file},
           {"--count", "two", "--out", file},
           {"--jobs", "0", "--out", file},
           {"--seed", "-1", "--out", file},
           {"--title", "one, two", "--out", file},
           {"--display", "--count", "2"},
           {},
       }) {
    const CliRun run = Create(args);
    EXPECT_EQ(run.code, 2) << ::testing::PrintToString(args);
    EXPECT_FALSE(run.err.empty());
  }
  EXPECT_FALSE(test::ReadBytes(file).size());
}

TEST_F(CreateCommand, DisplayPrintsThePuzzleAndWritesNothing) {
  const CliRun run = Create({"--display", "--size", "5", "--clues", "exactly:3", "--title", "Look", "--out", file});
  ASSERT_EQ(run.code, 0) << run.err;
  const json j = run.Json();
  EXPECT_EQ(j["title"], "Look");
  EXPECT_EQ(j["size"], 5);
  EXPECT_EQ(j["clues"], 3);
  EXPECT_EQ(j["level"], "Hard");  // 3 clues reach the Hard count of a 5x5, not the Easy one
  EXPECT_EQ(j["message"], "Done");
  EXPECT_EQ(j["positions"].size(), 81u);
  EXPECT_EQ(j["solution"].size(), 81u);
  EXPECT_FALSE(test::ReadBytes(file).size());
  const CliRun plain = Create({"--display", "--size", "4"}, false);
  EXPECT_NE(plain.out.find("Solution"), std::string::npos);
  EXPECT_NE(plain.out.find("\nDone\n"), std::string::npos);
}

TEST_F(CreateCommand, TheSameSeedWritesTheSameFileForAnyJobs) {
  std::vector<std::string> files;
  for (const std::string jobs : {"1", "2", "1"}) {
    const std::string out = dir.File("run" + std::to_string(files.size()) + ".fut");
    const CliRun run = Create({"--size", "Random", "--clues", "random", "--count", "6", "--seed", "123", "--jobs",
                               jobs, "--stamp", "2026-01-01 12:00:00", "--out", out});
    ASSERT_EQ(run.code, 0) << run.err;
    files.push_back(test::ReadBytes(out));
  }
  EXPECT_EQ(files[0], files[1]);
  EXPECT_EQ(files[0], files[2]);
  const std::string other = dir.File("other.fut");
  Create({"--size", "Random", "--clues", "random", "--count", "6", "--seed", "124", "--stamp", "2026-01-01 12:00:00",
          "--out", other});
  EXPECT_NE(test::ReadBytes(other), files[0]);
}

TEST_F(CreateCommand, AnUnwritableFileFailsWithTheWriteMessage) {
  const CliRun run = Create({"--count", "2", "--out", dir.Path()});
  EXPECT_EQ(run.code, 1);
  const json j = run.Json();
  EXPECT_EQ(j["error"], "Error writing puzzle# 1 to file: " + dir.Path());
  EXPECT_EQ(j["added"], 0);
  EXPECT_EQ(j["message"], " 0 Puzzles added to file: " + dir.Path());
}

// The default collection is the generator's own work: every record solves by logic to
// its stored solution.
TEST(ShippedCollection, EveryPuzzleSolvesToItsStoredSolution) {
  const std::string collection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";
  const int count = CountPuzzles(collection);
  EXPECT_GE(count, 50);
  PuzzleModel model;
  HeadlessPort port;
  std::set<std::pair<int, std::string>> kinds;
  for (int n = 1; n <= count; ++n) {
    ASSERT_FALSE(ReadPuzzle(model, port, collection, n).notFound) << n;
    EXPECT_TRUE(test::IsSoundPuzzle(model)) << n;
    kinds.emplace(model.GridSize, model.Comment.substr(model.Comment.find(' ') + 1));
  }
  EXPECT_GE(kinds.size(), 24u);  // sizes 4 to 9 at the four levels (and the sample)
}

}  // namespace
}  // namespace qm::cli
