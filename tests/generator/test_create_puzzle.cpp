#include "generator/create_puzzle.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "core/headless_port.h"
#include "core/rule_checks.h"
#include "solver/candidates.h"
#include "solver/solve_driver.h"
#include "support/created_puzzles.h"

namespace qm {
namespace {

TEST(CluesForLevel, TheCountsOfEveryLevelAndSize) {
  PuzzleModel model;
  const std::map<int, std::array<int, 4>> table = {{3, {0, 0, 0, 0}},   {4, {0, 1, 2, 3}},    {5, {0, 2, 4, 6}},
                                                   {6, {3, 6, 9, 12}},  {7, {4, 8, 12, 16}}, {8, {5, 10, 15, 20}},
                                                   {9, {6, 12, 18, 24}}};
  for (const auto& [n, counts] : table) {
    for (int level = 1; level <= 4; ++level) {
      EXPECT_EQ(CluesForLevel(model, n, level), counts[static_cast<std::size_t>(level - 1)]) << n << " " << level;
    }
    EXPECT_EQ(CluesForLevel(model, n, 0), 0);
    EXPECT_EQ(CluesForLevel(model, n, -2), 0);
    // The random rule spans the same counts as the four levels, every one of them.
    std::set<int> drawn;
    for (int i = 0; i < 400; ++i) drawn.insert(CluesForLevel(model, n, -1));
    const int low = n == 3 ? 0 : n < 6 ? 0 : counts[0];
    const int expected = n == 3 ? 1 : counts[3] - low + 1;
    EXPECT_EQ(*drawn.begin(), low) << n;
    EXPECT_EQ(*drawn.rbegin(), counts[3]) << n;
    EXPECT_EQ(static_cast<int>(drawn.size()), expected) << n;
  }
}

TEST(LevelForClues, FollowsTheCluesAlone) {
  PuzzleModel model;
  struct Case {
    int n, clues, level;
  };
  for (const Case& c : std::vector<Case>{{3, 0, 2},  {4, 0, 1},  {5, 0, 1},  {4, 1, 2},  {4, 3, 4},  {5, 3, 2},
                                         {6, 12, 4}, {6, 11, 3}, {6, 3, 1},  {6, 2, 1},  {9, 6, 1},  {9, 17, 2},
                                         {9, 18, 3}, {9, 24, 4}, {9, 81, 4}, {7, 1, 1}}) {
    EXPECT_EQ(LevelForClues(model, c.n, c.clues), c.level) << c.n << " " << c.clues;
  }
}

TEST(CellOrder, FilledColumnByColumnAndKeptWhileTheSizeStays) {
  Generator generator;
  SetUpCellOrder(generator, 3);
  EXPECT_EQ(generator.CellOrder, (std::vector<int>{11, 12, 13, 21, 22, 23, 31, 32, 33}));
  PuzzleModel model;
  SetSize(model, 3);
  EXPECT_EQ(CellOfCode(model, 23), model.PositionOf[5][3]);  // column 2, row 3

  ShuffleCellOrder(model, generator);
  const auto shuffled = generator.CellOrder;
  SetUpCellOrder(generator, 3);
  EXPECT_EQ(generator.CellOrder, shuffled);
  SetUpCellOrder(generator, 4);
  EXPECT_EQ(generator.CellOrder.size(), 16u);
  EXPECT_EQ(generator.CellOrder.front(), 11);
}

// The shuffle never leaves an entry in place: every result is one single cycle.
TEST(ShuffleCellOrder, YieldsOnlyCyclicPermutations) {
  PuzzleModel model;
  SeedRandom(model, 8);
  for (int n : {3, 5, 9}) {
    for (int round = 0; round < 50; ++round) {
      Generator generator;
      SetUpCellOrder(generator, n);
      const auto start = generator.CellOrder;
      ShuffleCellOrder(model, generator);
      std::map<int, int> next;
      for (std::size_t i = 0; i < start.size(); ++i) next[start[i]] = generator.CellOrder[i];
      int length = 0;
      int code = start[0];
      do {
        code = next[code];
        ++length;
      } while (code != start[0]);
      EXPECT_EQ(length, n * n);
    }
  }
}

struct CreateCase {
  int n;
  int clueSpec;
  int level;
  int minClues;  // recorded clue count range
  int maxClues;
  int placed;    // clue cells on the grid, or -1 when equal to the recorded count
};

class CreatePuzzleTest : public ::testing::Test {
 protected:
  int Create(int n, int clueSpec, int level = 3) {
    SetSize(model, n);
    generator.ClueSpec = clueSpec;
    generator.RequestedLevel = level;
    return CreatePuzzle(model, port, generator);
  }
  PuzzleModel model;
  HeadlessPort port;
  Generator generator;
};

TEST_F(CreatePuzzleTest, EveryClueRuleGivesASoundPuzzleOfItsLevel) {
  SeedRandom(model, 2026);
  const std::vector<CreateCase> cases = {
      {3, 99, 4, 0, 0, -1},   {4, 99, 4, 3, 3, -1},   {4, 99, 1, 0, 0, -1},  {5, 99, 2, 2, 2, -1},
      {6, 99, 4, 12, 12, -1}, {7, 99, 3, 12, 12, -1}, {8, 99, 2, 10, 10, -1}, {9, 99, 2, 12, 12, -1},
      {9, 99, 1, 6, 6, -1},   {5, 0, 3, 0, 0, -1},    {4, 2, 3, 2, 2, -1},   {6, 7, 3, 7, 7, -1},
      {5, 103, 3, 0, 0, 1},   {3, 107, 3, 0, 0, 0},   {6, -1, 3, 3, 12, -1}, {6, -5, 3, 3, 5, -1},
      {5, -4, 3, 1, 4, -1},   {4, 100, 3, 16, 16, -1}};
  for (const CreateCase& c : cases) {
    SCOPED_TRACE(::testing::Message() << "N " << c.n << ", ClueSpec " << c.clueSpec << ", level " << c.level);
    int result = -1;
    for (int tries = 0; tries < 5 && result != 99; ++tries) result = Create(c.n, c.clueSpec, c.level);
    ASSERT_EQ(result, 99);
    EXPECT_EQ(generator.GenerationResult, 99);
    EXPECT_TRUE(test::IsSoundPuzzle(model));
    EXPECT_GE(generator.ClueCount, c.minClues);
    EXPECT_LE(generator.ClueCount, c.maxClues);
    EXPECT_EQ(test::CountedClues(model), c.placed < 0 ? generator.ClueCount : c.placed);
    EXPECT_EQ(generator.LevelCode, LevelForClues(model, c.n, generator.ClueCount));
    EXPECT_EQ(model.ClueCount, generator.ClueCount);
    int signs = 0;
    for (int k = 0; k <= model.LastPosition; ++k) signs += IsSignSlot(model, k) && !model.PosText[k].empty();
    EXPECT_EQ(generator.SignCount, signs);
    EXPECT_EQ(model.ConstraintCount, signs);
    if (c.clueSpec == 103) {
      for (int k = 0; k <= model.LastPosition; ++k) {
        if (model.GivenValue[k] != 0) {
          EXPECT_EQ(model.PosText[k], "3");
        }
      }
    }
  }
}

// A sign that had to stay is still needed in the finished puzzle: reduction never
// leaves a sign the logic could do without.
TEST_F(CreatePuzzleTest, EveryKeptSignIsNeeded) {
  SeedRandom(model, 17);
  for (int n : {3, 4, 5, 6}) {
    ASSERT_EQ(Create(n, 99, 2), 99);
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (!IsSignSlot(model, k) || model.PosText[k].empty()) continue;
      PuzzleModel without = model;
      without.PosText[k].clear();
      PrepareCandidates(without);
      EXPECT_NE(SolveByLogic(without, port).status, kSolved) << "N " << n << ", sign at " << k;
    }
  }
}

TEST_F(CreatePuzzleTest, TheSameSeedMakesTheSamePuzzle) {
  PuzzleModel other;
  Generator otherGenerator;
  otherGenerator.RequestedLevel = generator.RequestedLevel = 2;
  SeedRandom(model, 42);
  SeedRandom(other, 42);
  SetSize(model, 7);
  SetSize(other, 7);
  ASSERT_EQ(CreatePuzzle(model, port, generator), 99);
  ASSERT_EQ(CreatePuzzle(other, port, otherGenerator), 99);
  EXPECT_EQ(model.PosText, other.PosText);
  EXPECT_EQ(model.SolutionText, other.SolutionText);
}

TEST_F(CreatePuzzleTest, AStaleCancelRequestIsClearedFirst) {
  model.CancelRequest = kYes;
  EXPECT_EQ(Create(4, 99), 99);
}

TEST_F(CreatePuzzleTest, CancelDuringReductionBlanksTheDisplay) {
  SeedRandom(model, 3);
  model.SolverBusy = true;
  int calls = 0;
  // The grid is redrawn once the clues are settled; reduction follows.
  port.onProcessEvents = [&] {
    if (port.gridRedraws > 0 && ++calls == 5) model.CancelRequest = kYes;
  };
  EXPECT_EQ(Create(6, 99, 3), -1);
  EXPECT_EQ(generator.GenerationResult, -1);
  EXPECT_FALSE(model.SolverBusy);
  std::set<int> blanked;
  for (const auto& [k, text] : port.shownTexts) {
    if (text.empty()) blanked.insert(k);
  }
  EXPECT_EQ(static_cast<int>(blanked.size()), model.LastPosition + 1);
}

TEST_F(CreatePuzzleTest, GivesUpAfterAHundredAttempts) {
  // A 9x9 grid of signs alone is beyond the logic solve.
  SeedRandom(model, 1);
  int attempts = 0;
  port.onProcessEvents = [&] { ++attempts; };
  EXPECT_EQ(Create(9, 0), -1);
  EXPECT_GE(attempts, 100);
}

}  // namespace
}  // namespace qm
