#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include "cli/commands.h"
#include "core/text_file.h"
#include "support/cli_run.h"
#include "support/test_files.h"

namespace qm::cli {
namespace {

using nlohmann::json;

using test::Cli;
using test::CliRun;

class CliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::vector<std::string> first = {"#1", "caf\xE9 3x3", "3 1 1", "1<...", ".....", ".....", ".....", "....."};
    auto lines = first;
    const auto sample = test::SampleRecord();
    lines.insert(lines.end(), sample.begin(), sample.end());
    file = dir.File("c.fut");
    test::WriteBytes(file, test::CrLf(lines));
  }
  test::TempDir dir;
  std::string file;
};

TEST_F(CliTest, Count) {
  const CliRun run = Cli({"count", file, "--json"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json(), (json{{"file", file}, {"count", 2}}));
  EXPECT_EQ(Cli({"count", dir.File("none.fut"), "--json"}).Json()["count"], 0);
  EXPECT_EQ(Cli({"count", file}).out, "2 puzzles in " + file + "\n");
}

TEST_F(CliTest, ShowPrintsTheModel) {
  const CliRun run = Cli({"show", file, "-n", "2", "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  const json j = run.Json();
  EXPECT_EQ(j["ordinal"], 2);
  EXPECT_EQ(j["number"], 3);
  EXPECT_EQ(j["title"], "#3 Sample");
  EXPECT_EQ(j["comment"], "Sample");
  EXPECT_EQ(j["size"], 4);
  EXPECT_EQ(j["signs"], 4);
  EXPECT_EQ(j["clues"], 3);
  EXPECT_EQ(j["puzzle_count"], 2);
  ASSERT_EQ(j["positions"].size(), 49u);
  EXPECT_EQ(j["positions"][1], "<");
  EXPECT_EQ(j["positions"][4], "3");
  EXPECT_EQ(j["given"][4], 3);
  EXPECT_EQ(j["given"][1], 0);
  EXPECT_EQ(j["solution"][0], "1");
  EXPECT_EQ(j["solution"][3], ".");

  // File text arrives as UTF-8; people get the grid drawn.
  EXPECT_EQ(Cli({"show", file, "--json"}).Json()["comment"], "caf\u00E9 3x3");
  const CliRun human = Cli({"show", file, "-n", "2"});
  EXPECT_NE(human.out.find("#3 Sample"), std::string::npos);
  EXPECT_NE(human.out.find(". < .   3   .    1 < 2   3   4"), std::string::npos) << human.out;
}

TEST_F(CliTest, ShowReportsAMissingRecord) {
  const CliRun run = Cli({"show", file, "-n", "5", "--json"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.Json()["error"], "Error reading puzzle# 5 in file:\r\n" + file);
  const CliRun plain = Cli({"show", dir.Path(), "-n", "1"});
  EXPECT_EQ(plain.code, 1);
  EXPECT_EQ(plain.err, "Error reading puzzle# 1 in file:\r\n" + dir.Path() + "\n");
  EXPECT_EQ(plain.out, "");
}

TEST_F(CliTest, CheckRunsBothChecksOnTheEditedGrid) {
  CliRun run = Cli({"check", file, "--json"});
  ASSERT_EQ(run.code, 0);
  EXPECT_EQ(run.Json(), (json{{"extremes", {{"result", 99}, {"message", ""}}},
                              {"grid", {{"result", -1}, {"message", "Cell 002 is empty"}}},
                              {"verify", "Puzzle appears valid but solution not completed yet"}}));

  // Position 2 now holds a 1 to the right of "<".
  run = Cli({"check", file, "--set", "2=1", "--set", "0=2", "--json"});
  EXPECT_EQ(run.Json()["extremes"], (json{{"result", 2}, {"message", "<1 error"}}));
  EXPECT_EQ(run.Json()["verify"], "<1 error");

  run = Cli({"check", file, "--json", "--set=0=1", "--set=2=2", "--set=4=3", "--set=10=2", "--set=12=3",
             "--set=14=1", "--set=20=3", "--set=22=1", "--set=24=2"});
  EXPECT_EQ(run.Json()["grid"]["result"], 99);
  EXPECT_EQ(run.Json()["verify"], "Puzzle appears to been solved");

  run = Cli({"check", file, "--set", "0=", "--set", "2=12"});
  EXPECT_EQ(run.code, 0);
  EXPECT_NE(run.out.find("Grid:     -1  Cell 000 is empty"), std::string::npos) << run.out;
}

TEST_F(CliTest, UsageErrorsExitWithTwo) {
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {},
           {"frobnicate"},
           {"show"},
           {"show", file, "-n", "x"},
           {"check", file, "--set", "x=1"},
           {"check", file, "--set", "5"},
           {"check", file, "--set", "291=1"},
           {"count", file, "extra"},
       }) {
    const CliRun run = Cli(args);
    EXPECT_EQ(run.code, 2) << ::testing::PrintToString(args);
    EXPECT_FALSE(run.err.empty());
  }
  const CliRun pastGrid = Cli({"check", file, "--set", "25=1"});  // the first puzzle is 3x3
  EXPECT_EQ(pastGrid.code, 2);
  EXPECT_NE(pastGrid.err.find("outside 0..24"), std::string::npos);
  EXPECT_EQ(Cli({"show", "--help"}).code, 0);
}

TEST_F(CliTest, FileNamesThatAreNotUtf8StillGiveOneJsonObject) {
  const CliRun run = Cli({"show", dir.File("caf\xE9.fut"), "--json"});
  EXPECT_EQ(run.code, 1);
  EXPECT_NE(run.Json()["error"].get<std::string>().find("caf\uFFFD.fut"), std::string::npos);
}

TEST(CliProgram, RunsOnTheShippedCollection) {
  const std::string cli = QUILLMERE_CLI;
  const std::string collection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";
  EXPECT_EQ(ApplicationDirectory(), QUILLMERE_APP_DIR);  // the data files sit beside the programs
  EXPECT_EQ(WEXITSTATUS(std::system((cli + " frobnicate 2>/dev/null").c_str())), 2);
  EXPECT_EQ(WEXITSTATUS(std::system((cli + " count " + collection + " >/dev/null").c_str())), 0);
  // Every shipped record reads and is a correctly filled solution.
  const json count = Cli({"count", collection, "--json"}).Json();
  ASSERT_GE(count["count"].get<int>(), 3);
  bool sampleSeen = false;
  for (int n = 1; n <= count["count"].get<int>(); ++n) {
    const json shown = Cli({"show", collection, "-n", std::to_string(n), "--json"}).Json();
    ASSERT_FALSE(shown.contains("error")) << n;
    sampleSeen = sampleSeen || shown["title"] == "#3 Sample";
    std::vector<std::string> sets;
    for (std::size_t k = 0; k < shown["solution"].size(); ++k) {
      const std::string s = shown["solution"][k];
      if (s != ".") sets.push_back("--set=" + std::to_string(k) + "=" + s);
    }
    sets.insert(sets.begin(), {"check", collection, "-n", std::to_string(n), "--json"});
    const json checked = Cli(sets).Json();
    EXPECT_EQ(checked["verify"], "Puzzle appears to been solved") << n;
  }
  EXPECT_TRUE(sampleSeen);
}

}  // namespace
}  // namespace qm::cli

namespace qm::cli {
namespace {

TEST_F(CliTest, SolveReportsTheDriverAndTheOutcome) {
  CliRun run = Cli({"solve", file, "-n", "2", "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  json j = run.Json();
  EXPECT_EQ(j["status"], 99);
  EXPECT_EQ(j["message"], "Are we done?");
  EXPECT_EQ(j["outcome"], "Done");
  EXPECT_EQ(j["snapshot"], "1,2,3,4,3,4,1,2,4,1,2,3,2,3,4,1,");
  EXPECT_EQ(j["positions"][1], "<");
  EXPECT_FALSE(j.contains("steps"));
  EXPECT_TRUE(j["techniques"].contains("OrderPropagate"));
  EXPECT_FALSE(j["techniques"].contains("OrderPropagateExplained"));

  run = Cli({"solve", file, "-n", "2", "--explain", "--json"});
  j = run.Json();
  ASSERT_FALSE(j["steps"].empty());
  const json& step = j["steps"][0];
  EXPECT_EQ(step["line"], "Remove single values 3 from row 1");
  EXPECT_EQ(step["shown"], "Remove single values 3 from row 1, new candidate: " + step["text"].get<std::string>());
  EXPECT_EQ(step["row"], 1);
  EXPECT_EQ(step["col"], -1);
  EXPECT_EQ(step["second"], -1);
  int changes = 0;
  for (const auto& [name, count] : j["techniques"].items()) changes += count.get<int>();
  EXPECT_EQ(changes, static_cast<int>(j["steps"].size()));

  // The 3x3 with one sign stalls: the texts go back as they were.
  run = Cli({"solve", file, "--json", "--set", "2=2"});
  j = run.Json();
  EXPECT_EQ(j["status"], 1);
  EXPECT_EQ(j["outcome"], "This puzzle has multiple solutions");
  EXPECT_EQ(j["snapshot"], "1,2,,,,,,,,");

  j = Cli({"solve", file, "-n", "2", "--json", "--set=0=1", "--set=2=2", "--set=4=3", "--set=6=4", "--set=14=3",
           "--set=16=4", "--set=18=1", "--set=20=2", "--set=28=4", "--set=30=1", "--set=32=2", "--set=34=3",
           "--set=42=2", "--set=44=3", "--set=46=4", "--set=48=1"})
          .Json();
  EXPECT_EQ(j["outcome"], "Solved already?");
  EXPECT_EQ(j["sweeps"], 0);
  EXPECT_EQ(j["message"], "");
}

TEST_F(CliTest, SolutionsCountsBySearch) {
  json j = Cli({"solutions", file, "--json"}).Json();
  EXPECT_EQ(j["solutions"], 2);
  EXPECT_EQ(j["complete"], false);
  EXPECT_EQ(j["first"].size(), 25u);
  j = Cli({"solutions", file, "-n", "2", "--json", "--limit", "5"}).Json();
  EXPECT_EQ(j["solutions"], 1);
  EXPECT_EQ(j["complete"], true);
  EXPECT_EQ(j["first"][0], "1");
  EXPECT_GT(j["nodes"], 0);
  EXPECT_EQ(Cli({"solutions", file, "--limit", "0"}).code, 2);
  EXPECT_EQ(Cli({"solutions", file, "--limit", "99999999999"}).code, 2);
  EXPECT_EQ(Cli({"solutions", file, "--time-limit", "0"}).code, 2);
  EXPECT_EQ(Cli({"solutions", file, "--time-limit", "soon"}).code, 2);
  EXPECT_EQ(Cli({"solutions", file, "--time-limit", "5", "--json"}).Json()["complete"], false);
}

}  // namespace
}  // namespace qm::cli
