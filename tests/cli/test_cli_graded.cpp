// Creation by grade through the command line: what reaches the file, and what does not.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/collection_file.h"
#include "reasoning/ladder.h"
#include "support/cli_run.h"
#include "support/test_files.h"

namespace qm::cli {
namespace {

using nlohmann::json;
using test::Cli;

const std::string kMix = reasoning::RungName(reasoning::kSignBounds) + ":3," +
                         reasoning::RungName(reasoning::kSubsets) + ":2," +
                         reasoning::RungName(reasoning::kContradiction) + ":2";

std::vector<std::string> MixArgs(const std::string& out) {
  return {"create", "--size", "5", "--grades", kMix, "--seed", "8", "--stamp", "s", "--out", out};
}

TEST(GradedCreate, MixIsMadeInOrderUniqueAndAsGradedAsItSays) {
  test::TempDir dir;
  const std::string file = dir.File("mix.fut");
  std::vector<std::string> args = MixArgs(file);
  args.push_back("--json");
  const test::CliRun run = Cli(args);
  ASSERT_EQ(run.code, 0) << run.err;
  const json made = run.Json();
  ASSERT_EQ(made["added"], 7);
  const std::vector<int> expected = {reasoning::kSignBounds, reasoning::kSignBounds, reasoning::kSignBounds,
                                     reasoning::kSubsets,    reasoning::kSubsets,    reasoning::kContradiction,
                                     reasoning::kContradiction};
  const json graded = Cli({"grade", file, "--json"}).Json();
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const json& puzzle = made["puzzles"][i];
    EXPECT_EQ(puzzle["grade"]["level"], expected[i]) << i;
    EXPECT_EQ(puzzle["title"], "Auto (" + reasoning::RungName(expected[i]) + ") s");
    // The file says the same to the grader and to the exact search.
    EXPECT_EQ(graded["puzzles"][i]["level"], expected[i]) << i;
    EXPECT_EQ(graded["puzzles"][i]["score"], puzzle["grade"]["score"]) << i;
    const json solutions = Cli({"solutions", file, "-n", std::to_string(i + 1), "--json"}).Json();
    EXPECT_EQ(solutions["solutions"], 1) << i;
    EXPECT_EQ(solutions["complete"], true) << i;
  }
}

TEST(GradedCreate, SameFileForAnyJobsAndShardsMergeIntoIt) {
  test::TempDir dir;
  ASSERT_EQ(Cli(MixArgs(dir.File("one.fut"))).code, 0);
  std::vector<std::string> three = MixArgs(dir.File("three.fut"));
  three.insert(three.end(), {"--jobs", "3"});
  ASSERT_EQ(Cli(three).code, 0);
  EXPECT_EQ(test::ReadBytes(dir.File("three.fut")), test::ReadBytes(dir.File("one.fut")));

  for (const std::string shard : {"1", "2"}) {
    std::vector<std::string> args = MixArgs(dir.File("shard" + shard + ".fut"));
    args.insert(args.end(), {"--shard", shard + "/2"});
    ASSERT_EQ(Cli(args).code, 0) << shard;
  }
  ASSERT_EQ(Cli({"merge", dir.File("merged.fut"), dir.File("shard1.fut"), dir.File("shard2.fut")}).code, 0);
  EXPECT_EQ(test::ReadBytes(dir.File("merged.fut")), test::ReadBytes(dir.File("one.fut")));

  // Symmetric puzzles and a clue rule, the same way.
  const std::vector<std::string> sym = {"create", "--size", "7", "--grade", reasoning::RungName(reasoning::kSubsets),
                                        "--count", "3", "--symmetry", "rotate", "--clues", "upto:12",
                                        "--seed", "2", "--stamp", "s"};
  std::vector<std::string> a = sym;
  a.insert(a.end(), {"--out", dir.File("a.fut")});
  std::vector<std::string> b = sym;
  b.insert(b.end(), {"--out", dir.File("b.fut"), "--jobs", "2"});
  ASSERT_EQ(Cli(a).code, 0);
  ASSERT_EQ(Cli(b).code, 0);
  EXPECT_EQ(test::ReadBytes(dir.File("a.fut")), test::ReadBytes(dir.File("b.fut")));
}

TEST(GradedCreate, UnreachableRangeAppendsOnlyInRangePuzzlesAndSaysHowMany) {
  test::TempDir dir;
  const std::string file = dir.File("small.fut");
  // No 3x3 puzzle needs subsets: two of three come.
  const std::string moderate = reasoning::RungName(reasoning::kSignBounds);
  const std::string tough = reasoning::RungName(reasoning::kSubsets);
  const test::CliRun run = Cli({"create", "--size", "3", "--grades", moderate + ":2," + tough + ":1", "--seed", "1",
                                "--tries", "400", "--out", file, "--json"});
  EXPECT_EQ(run.code, 1);
  const json reply = run.Json();
  EXPECT_EQ(reply["error"], "Made 2 of 3 puzzles: no puzzle graded " + tough + " came in 400 tries.\r\n" +
                                " 2 Puzzles added to file: " + file);
  EXPECT_EQ(reply["added"], 2);
  EXPECT_EQ(CountPuzzles(file), 2);
  const json graded = Cli({"grade", file, "--json"}).Json();
  for (const json& puzzle : graded["puzzles"]) EXPECT_EQ(puzzle["name"], moderate);

  EXPECT_EQ(Cli({"create", "--size", "3", "--grade", tough, "--out", file}).code, 1);
  EXPECT_EQ(CountPuzzles(file), 2);

  // A clue rule that cannot meet the grade is refused before anything is made.
  const test::CliRun refused = Cli({"create", "--size", "5", "--clues", "none", "--grade",
                                    reasoning::RungName(reasoning::kSingles), "--out", file});
  EXPECT_EQ(refused.code, 1);
  EXPECT_NE(refused.err.find("Cannot create 5x5 puzzles graded " + reasoning::RungName(reasoning::kSingles)),
            std::string::npos)
      << refused.err;
  EXPECT_EQ(CountPuzzles(file), 2);
}

TEST(GradedCreate, ConflictingOptionsAreUsageErrors) {
  test::TempDir dir;
  const std::string file = dir.File("x.fut");
  const std::string tough = reasoning::RungName(reasoning::kSubsets);
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"--grade", tough, "--min-grade", "1"},
           {"--grades", tough + ":2", "--count", "3"},
           {"--grades", tough + "=2"},
           {"--grades", "Nonsense:2"},
           {"--symmetry", "rotate"},
           {"--no-minimal"},
           {"--grade", tough, "--symmetry", "diagonal"},
           {"--grade", tough, "--min-signs", "101"}}) {
    std::vector<std::string> full = {"create", "--out", file};
    full.insert(full.end(), args.begin(), args.end());
    EXPECT_EQ(Cli(full).code, 2) << args.front() << " " << args.back();
  }
  EXPECT_EQ(CountPuzzles(file), 0);
}

}  // namespace
}  // namespace qm::cli
