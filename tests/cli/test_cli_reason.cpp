#include <gtest/gtest.h>

#include "reasoning/ladder.h"
#include "support/cli_run.h"
#include "support/test_files.h"

namespace qm::cli {
namespace {

using nlohmann::json;
using test::Cli;

const std::string kCollection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";

TEST(ReasonCommands, ExplainNamesCellsFromOneAndEndsSolved) {
  const test::CliRun run = Cli({"explain", kCollection, "-n", "3", "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  const json j = run.Json();
  EXPECT_TRUE(j["solved"]);
  EXPECT_FALSE(j["needs_search"]);
  EXPECT_EQ(j["grade"]["name"], "Moderate");
  ASSERT_FALSE(j["steps"].empty());
  for (const json& step : j["steps"]) {
    for (const json& cell : step["cells"]) {
      EXPECT_GE(cell[0], 1);
      EXPECT_LE(cell[1], 4);
    }
    for (const json& placed : step["placed"]) EXPECT_EQ(placed["cell"].size(), 2u);
    for (const json& removed : step["removed"]) EXPECT_TRUE(removed["digits"].is_string());
  }
  // The end grid: the stored solution of the worked example.
  EXPECT_EQ(j["positions"][0], "1");
  EXPECT_EQ(j["positions"][1], "<");

  // An entered digit that breaks the puzzle: no solution, reported as such.
  const json broken = Cli({"explain", kCollection, "-n", "3", "--set", "0=2", "--json"}).Json();
  EXPECT_FALSE(broken["solved"]);
  EXPECT_EQ(broken["grade"]["name"], "Needs search");
}

TEST(ReasonCommands, GradeListsARangeAndReportsUnreadableRecords) {
  const json j = Cli({"grade", kCollection, "--range", "60-62", "--json"}).Json();
  ASSERT_EQ(j["puzzles"].size(), 3u);
  EXPECT_EQ(j["puzzles"][0]["ordinal"], 60);
  EXPECT_TRUE(j["puzzles"][0]["solved"]);
  EXPECT_GE(j["puzzles"][0]["level"], 1);
  EXPECT_EQ(j["puzzles"][2]["ordinal"], 62);
  EXPECT_TRUE(j["puzzles"][2].contains("error"));

  for (const std::string range : {"3-2", "0-4", "x", "2-"}) {
    EXPECT_EQ(Cli({"grade", kCollection, "--range", range}).code, 2) << range;
  }
}

TEST(ReasonCommands, CreateKeepsToTheGradeRangeAndNamesTheGrade) {
  test::TempDir dir;
  const std::string file = dir.File("graded.fut");
  const test::CliRun run = Cli({"create", "--size", "6", "--clues", "level:Hard", "--count", "3", "--seed", "4",
                                "--stamp", "today", "--min-grade", "tough", "--out", file, "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  const json made = run.Json();
  const json graded = Cli({"grade", file, "--json"}).Json();
  ASSERT_EQ(made["puzzles"].size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    // At least Tough: any grade from there up.
    EXPECT_GE(graded["puzzles"][i]["level"], 4);
    EXPECT_EQ(made["puzzles"][i]["title"], "Auto (" + graded["puzzles"][i]["name"].get<std::string>() + ") today");
  }

  EXPECT_EQ(Cli({"create", "--out", file, "--min-grade", "5", "--max-grade", "2"}).code, 2);
  EXPECT_EQ(Cli({"create", "--out", file, "--min-grade", std::to_string(reasoning::kTopRung + 1)}).code, 2);
}

}  // namespace
}  // namespace qm::cli
