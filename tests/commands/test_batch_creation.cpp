#include "commands/batch_creation.h"

#include <gtest/gtest.h>

#include "commands/record_commands.h"
#include "core/collection_file.h"
#include "commands/headless_port.h"
#include "core/text_rules.h"
#include "support/created_puzzles.h"
#include "support/test_files.h"

namespace qm {
namespace {

class Batch : public ::testing::Test {
 protected:
  Batch() {
    settings.count = 3;
    settings.gridSize = 4;
    settings.displayOne = false;
    settings.outputFile = file;
    options.stamp = "2026-03-04 05:06:07";
    SeedRandom(model, 77);
  }
  BatchResult Run() { return CreatePuzzles(model, run, generator, settings, options); }

  test::TempDir dir;
  std::string file = dir.File("new.fut");
  CreationSettings settings;  // 4x4 Easy
  BatchOptions options;
  PuzzleModel model;
  HeadlessPort port;
  RunControl run{model, port};
  Generator generator;
};

TEST_F(Batch, AppendsEveryPuzzleWithItsTitleAndCaptions) {
  test::WriteBytes(file, test::CrLf(test::SampleRecord()));
  const BatchResult result = Run();
  EXPECT_EQ(port.messages, std::vector<std::string>{" 3 Puzzles added to file: " + file});
  PuzzleModel read;
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(result.puzzles[static_cast<std::size_t>(i - 1)].number, i + 1);  // CountPuzzles + 1
    ASSERT_FALSE(ReadPuzzle(read, port, file, i + 1).notFound);
    EXPECT_EQ(read.Comment, "Auto (Easy) 2026-03-04 05:06:07");
    EXPECT_TRUE(test::IsSoundPuzzle(read)) << i;
  }
  EXPECT_EQ(port.progressAreas.back(), "Creating puzzle 3 of 3\r\nSize=4x4\r\nOutput File: " + file);
  EXPECT_EQ(port.progressLines.front(), "Creating New Puzzle");
  EXPECT_EQ(port.progressLines[port.progressLines.size() - 2], "New 3 of 3");
  EXPECT_EQ(port.progressLines.back(), "");
  const std::string facts = ", Size=4x4, Constraints=" + Str(result.puzzles[2].signs) + ", Clues= 2, Level= Easy";
  EXPECT_EQ(port.statusLines[port.statusLines.size() - 2], "New Puzzle" + facts);
  EXPECT_EQ(port.statusLines.back(), "Puzzle#3" + facts);
  EXPECT_FALSE(port.Busy() || model.SolverBusy);
}

TEST_F(Batch, CancelInTheThirdOfFiveKeepsTwo) {
  settings.count = 5;
  int seen = 0;  // inside the third puzzle's creation
  port.onProcessEvents = [&] {
    if (port.ProgressLine() == "New 3 of 5" && ++seen == 2) run.CancelRequest = true;
  };
  EXPECT_EQ(Run().message, " 2 Puzzles added to file: " + file);
  EXPECT_EQ(CountPuzzles(file), 2);
  EXPECT_FALSE(run.CancelRequest);
}

// Puzzle i comes from its own stream, so the file is the same with any number of
// workers, random sizes included; a cancel or a failed append stops the workers and
// keeps what was written.
TEST_F(Batch, WorkersWriteTheSameFileAndStopCleanly) {
  settings.count = 7;
  settings.gridSize = 0;
  std::vector<std::string> files;
  for (int jobs : {1, 2, 3}) {
    SeedRandom(model, 2024);
    options.jobs = jobs;
    settings.outputFile = dir.File("jobs" + std::to_string(jobs) + ".fut");
    EXPECT_EQ(Run().added, 7);
    files.push_back(test::ReadBytes(settings.outputFile));
  }
  EXPECT_EQ(files[0], files[1]);
  EXPECT_EQ(files[0], files[2]);

  settings.count = 40;
  settings.outputFile = file;
  port.onProcessEvents = [&] { run.CancelRequest = CountPuzzles(file) >= 3; };
  const int added = Run().added;
  EXPECT_TRUE(added >= 3 && added < 40) << added;
  EXPECT_EQ(CountPuzzles(file), added);

  HeadlessPort fresh;
  RunControl freshRun(model, fresh);
  settings.outputFile = dir.Path();  // a directory
  EXPECT_TRUE(CreatePuzzles(model, freshRun, generator, settings, options).writeFailed);
  EXPECT_EQ(fresh.messages, (std::vector<std::string>{"Error writing puzzle# 1 to file: " + dir.Path(),
                                                       " 0 Puzzles added to file: " + dir.Path()}));
}

}  // namespace
}  // namespace qm
