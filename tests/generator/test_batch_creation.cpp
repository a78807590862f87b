#include "generator/batch_creation.h"

#include <gtest/gtest.h>

#include <set>

#include "core/collection_file.h"
#include "core/headless_port.h"
#include "core/text_rules.h"
#include "support/created_puzzles.h"
#include "support/test_files.h"

namespace qm {
namespace {

constexpr std::string_view kStamp = "2026-03-04 05:06:07";

class Batch : public ::testing::Test {
 protected:
  Batch() {
    settings.count = 3;
    settings.gridSize = 4;
    settings.clueSpec = kCluesByLevel;
    settings.level = 3;
    settings.displayOne = false;
    settings.outputFile = file;
    options.stamp = kStamp;
    SeedRandom(model, 77);
  }
  BatchResult Run() { return CreatePuzzles(model, port, generator, settings, options); }

  test::TempDir dir;
  std::string file = dir.File("new.fut");
  CreationSettings settings;
  BatchOptions options;
  PuzzleModel model;
  HeadlessPort port;
  Generator generator;
};

TEST_F(Batch, AppendsEveryPuzzleWithItsCaptionsAndReadsThemBack) {
  test::WriteBytes(file, test::CrLf(test::SampleRecord()));  // one record numbered 3 already
  const BatchResult result = Run();
  EXPECT_EQ(result.added, 3);
  EXPECT_EQ(result.message, " 3 Puzzles added to file: " + file);
  EXPECT_EQ(port.messages, std::vector<std::string>{result.message});
  ASSERT_EQ(result.puzzles.size(), 3u);
  EXPECT_EQ(CountPuzzles(file), 4);

  PuzzleModel read;
  HeadlessPort readPort;
  for (int i = 1; i <= 3; ++i) {
    SCOPED_TRACE(i);
    const CreatedPuzzle& puzzle = result.puzzles[static_cast<std::size_t>(i - 1)];
    EXPECT_EQ(puzzle.number, i + 1);  // numbered CountPuzzles + 1 as it is appended
    EXPECT_EQ(puzzle.title, "Auto (Easy) " + std::string(kStamp));
    ASSERT_FALSE(ReadPuzzle(read, readPort, file, i + 1).notFound);
    EXPECT_EQ(read.RecordNumber, i + 1);
    EXPECT_EQ(read.Comment, puzzle.title);
    EXPECT_EQ(read.GridSize, 4);
    EXPECT_EQ(read.ConstraintCount, puzzle.signs);
    EXPECT_EQ(read.ClueCount, puzzle.clues);
    EXPECT_EQ(read.ClueCount, 2);
    EXPECT_EQ(puzzle.level, 3);
    EXPECT_TRUE(test::IsSoundPuzzle(read));
  }

  const std::string area = "Creating puzzle 3 of 3\r\nSize=4x4\r\nOutput File: " + file;
  EXPECT_EQ(port.progressAreas.back(), area);
  EXPECT_EQ(port.progressLines.front(), "Creating New Puzzle");
  EXPECT_NE(std::find(port.progressLines.begin(), port.progressLines.end(), "New 2 of 3"), port.progressLines.end());
  EXPECT_EQ(port.progressLines.back(), "");
  const std::string facts = ", Size=4x4, Constraints=" + Str(result.puzzles[2].signs) + ", Clues= 2, Level= Easy";
  ASSERT_GE(port.statusLines.size(), 2u);
  EXPECT_EQ(port.statusLines[port.statusLines.size() - 2], "New Puzzle" + facts);
  EXPECT_EQ(port.statusLines.back(), "Puzzle#3" + facts);
  EXPECT_FALSE(port.Busy());
  EXPECT_FALSE(model.SolverBusy);
}

TEST_F(Batch, OnePuzzleForDisplayWritesNothing) {
  settings.count = 1;
  settings.displayOne = true;
  settings.title = "  My own  ";
  settings.gridSize = 5;
  const BatchResult result = Run();
  EXPECT_EQ(result.message, "Done");
  EXPECT_EQ(port.messages, std::vector<std::string>{"Done"});
  EXPECT_FALSE(test::ReadBytes(file).size());
  EXPECT_EQ(model.Comment, "  My own  ");
  EXPECT_EQ(model.GridSize, 5);
  EXPECT_TRUE(test::IsSoundPuzzle(model));
  EXPECT_EQ(port.progressAreas.back(), "Creating puzzle 1 of 1\r\nSize=5x5\r\n");
}

TEST_F(Batch, ARandomSizeIsDrawnForEveryPuzzle) {
  settings.gridSize = 0;
  settings.count = 10;
  settings.clueSpec = kRandomClues;
  const BatchResult result = Run();
  std::set<int> sizes;
  PuzzleModel read;
  for (int i = 1; i <= 10; ++i) {
    ASSERT_FALSE(ReadPuzzle(read, port, file, i).notFound);
    EXPECT_EQ(read.GridSize, result.puzzles[static_cast<std::size_t>(i - 1)].size);
    EXPECT_TRUE(test::IsSoundPuzzle(read)) << i;
    sizes.insert(read.GridSize);
  }
  EXPECT_GE(sizes.size(), 3u);
}

TEST_F(Batch, CancelInTheThirdOfFiveKeepsTwo) {
  settings.count = 5;
  int seen = 0;  // inside the third puzzle's creation
  port.onProcessEvents = [&] {
    if (port.ProgressLine() == "New 3 of 5" && ++seen == 2) model.CancelRequest = kYes;
  };
  const BatchResult result = Run();
  EXPECT_EQ(result.added, 2);
  EXPECT_EQ(result.message, " 2 Puzzles added to file: " + file);
  EXPECT_EQ(CountPuzzles(file), 2);
  EXPECT_EQ(model.CancelRequest, kNo);
  EXPECT_EQ(port.progressLines.back(), "");
}

// Puzzle i comes from its own stream, so the file is the same with any number of workers.
TEST_F(Batch, WorkersWriteTheSameFileByteForByte) {
  settings.count = 7;
  settings.gridSize = 0;
  std::vector<std::string> files;
  for (int jobs : {1, 2, 3}) {
    PuzzleModel fresh;
    SeedRandom(fresh, 2024);
    options.jobs = jobs;
    settings.outputFile = dir.File("jobs" + std::to_string(jobs) + ".fut");
    EXPECT_EQ(CreatePuzzles(fresh, port, generator, settings, options).added, 7);
    files.push_back(test::ReadBytes(settings.outputFile));
  }
  EXPECT_EQ(files[0], files[1]);
  EXPECT_EQ(files[0], files[2]);
}

TEST_F(Batch, CancelWithWorkersKeepsTheFinishedOnesInOrder) {
  settings.count = 40;
  options.jobs = 2;
  port.onProcessEvents = [&] {
    if (CountPuzzles(file) >= 3) model.CancelRequest = kYes;
  };
  const BatchResult result = Run();
  EXPECT_GE(result.added, 3);
  EXPECT_LT(result.added, 40);
  EXPECT_EQ(CountPuzzles(file), result.added);
  EXPECT_EQ(result.message, Str(result.added) + " Puzzles added to file: " + file);
}

TEST_F(Batch, AnUnwritableFileEndsTheBatchWithItsMessage) {
  for (int jobs : {1, 2}) {
    HeadlessPort fresh;
    options.jobs = jobs;
    settings.outputFile = dir.Path();  // a directory
    const BatchResult result = CreatePuzzles(model, fresh, generator, settings, options);
    EXPECT_TRUE(result.writeFailed);
    EXPECT_EQ(result.added, 0);
    EXPECT_EQ(fresh.messages, (std::vector<std::string>{"Error writing puzzle# 1 to file: " + dir.Path(),
                                                         " 0 Puzzles added to file: " + dir.Path()}));
  }
}

TEST_F(Batch, TheRememberedPuzzleIsShownAgain) {
  const std::string current = dir.File("current.fut");
  test::WriteBytes(current, test::CrLf(test::SampleRecord()));
  model.CurrentFile = current;
  model.CurrentPuzzle = -1;
  settings.title = "Fixed";
  Run();
  EXPECT_EQ(model.Comment, "Sample");
  EXPECT_EQ(model.CurrentPuzzle, 1);
  PuzzleModel read;
  ASSERT_FALSE(ReadPuzzle(read, port, file, 2).notFound);
  EXPECT_EQ(read.Comment, "Fixed");
}

TEST(BatchHelpers, TitlesStampsAndStreams) {
  EXPECT_EQ(AutoTitle(1, "2026-01-02 03:04:05"), "Auto (VeryHard) 2026-01-02 03:04:05");
  const std::string stamp = ClockStamp();
  ASSERT_EQ(stamp.size(), 19u);
  EXPECT_EQ(stamp[4], '-');
  EXPECT_EQ(stamp[10], ' ');
  EXPECT_EQ(stamp[13], ':');
  EXPECT_NE(PuzzleStreamSeed(1, 1), PuzzleStreamSeed(1, 2));
  EXPECT_NE(PuzzleStreamSeed(1, 2), PuzzleStreamSeed(2, 1));
  EXPECT_EQ(PuzzleStreamSeed(5, 9), PuzzleStreamSeed(5, 9));
}

TEST(BatchHelpers, ASizeOutsideTheListIsRefused) {
  PuzzleModel model;
  HeadlessPort port;
  Generator generator;
  CreationSettings settings;
  settings.gridSize = 12;
  EXPECT_THROW(CreatePuzzles(model, port, generator, settings), std::invalid_argument);
}

}  // namespace
}  // namespace qm
