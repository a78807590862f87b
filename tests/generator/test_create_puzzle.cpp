#include "generator/create_puzzle.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <tuple>

#include "commands/headless_port.h"
#include "commands/run_control.h"
#include "generator/creation_options.h"
#include "core/rule_checks.h"
#include "solver/candidates.h"
#include "solver/solve_driver.h"
#include "support/created_puzzles.h"

namespace qm {
namespace {

TEST(CluesForLevel, TheCountsOfEveryLevelAndTheRandomSpan) {
  PuzzleModel model;
  const std::map<int, std::array<int, 4>> table = {{3, {0, 0, 0, 0}},  {4, {0, 1, 2, 3}},   {5, {0, 2, 4, 6}},
                                                   {6, {3, 6, 9, 12}}, {7, {4, 8, 12, 16}}, {8, {5, 10, 15, 20}},
                                                   {9, {6, 12, 18, 24}}};
  for (const auto& [n, counts] : table) {
    std::set<int> drawn;
    for (int i = 0; i < 400; ++i) drawn.insert(CluesForLevel(model, n, -1));
    EXPECT_EQ(static_cast<int>(drawn.size()), counts[3] - counts[0] + 1) << n;  // every count between
    EXPECT_EQ(*drawn.begin(), counts[0]) << n;
    EXPECT_EQ(CluesForLevel(model, n, 0) + CluesForLevel(model, n, -2), 0);
    for (int level = 1; level <= 4; ++level) {
      const int clues = counts[static_cast<std::size_t>(level - 1)];
      EXPECT_EQ(CluesForLevel(model, n, level), clues) << n << " " << level;
      EXPECT_EQ(LevelForClues(model, n, clues), n == 3 ? 2 : (n < 6 && level == 1 ? 1 : level));
    }
  }
  EXPECT_EQ(LevelForClues(model, 6, 2), 1);  // a fixed count below VeryHard
}

// The shuffle never leaves an entry in place: every result is one single cycle.
// The dialog's choices become the generator's codes in one place, and the validation
// goes through it: "Upto 1" shares its code with "Random".
TEST(ClueRules, EveryChoiceBecomesItsCode) {
  using Kind = ClueRule::Kind;
  EXPECT_EQ(ClueSpecOf({Kind::None}), 0);
  EXPECT_EQ(ClueSpecOf({Kind::Fixed, 3}), 103);
  EXPECT_EQ(ClueSpecOf({Kind::Exactly, 7}), 7);
  EXPECT_EQ(ClueSpecOf({Kind::Upto, 5}), -5);
  EXPECT_EQ(ClueSpecOf({Kind::ByLevel}), 99);
  EXPECT_EQ(ClueSpecOf({Kind::Upto, 1}), ClueSpecOf({Kind::Random}));

  CreationOptions options;
  options.size = "4";
  for (const auto& [choice, field, code] : std::vector<std::tuple<int, std::string, int>>{
           {kChoiceNoClues, "", 0}, {kChoiceFixedClue, "2", 102}, {kChoiceExactly, "2", 2},
           {kChoiceUpto, "2", -2}, {kChoiceByLevel, "", 99}, {kChoiceRandom, "", -1}}) {
    options.clueChoice = choice;
    options.fixedDigit = options.exactCount = options.uptoCount = field;
    const CreationValidation checked = ValidateCreationOptions(options);
    ASSERT_TRUE(checked.Accepted()) << choice << ": " << checked.message;
    EXPECT_EQ(checked.settings.clueSpec, code) << choice;
  }
}

TEST(ShuffleCellOrder, YieldsOnlyCyclicPermutations) {
  PuzzleModel model;
  for (int round = 0; round < 60; ++round) {
    Generator generator;
    SetUpCellOrder(generator, 3 + round % 7);
    const auto start = generator.CellOrder;
    ShuffleCellOrder(model, generator);
    std::map<int, int> next;
    for (std::size_t i = 0; i < start.size(); ++i) next[start[i]] = generator.CellOrder[i];
    std::size_t length = 1;
    for (int code = next[start[0]]; code != start[0]; code = next[code]) ++length;
    EXPECT_EQ(length, start.size());
  }
}

class CreatePuzzleTest : public ::testing::Test {
 protected:
  int Create(int n, int clueSpec, int level = 3) {
    SetSize(model, n);
    generator.ClueSpec = clueSpec;
    generator.RequestedLevel = level;
    return CreatePuzzle(model, run, generator);
  }
  PuzzleModel model;
  HeadlessPort port;
  RunControl run{model, port};
  Generator generator;
};

TEST_F(CreatePuzzleTest, EveryClueRuleGivesASoundPuzzleOfItsLevel) {
  SeedRandom(model, 2026);
  run.CancelRequest = true;  // a stale request is cleared first
  // N, ClueSpec, level; the recorded clue count's range; the clue cells (-1: as recorded).
  for (const std::array<int, 6>& c : std::vector<std::array<int, 6>>{
           {3, 99, 4, 0, 0, -1}, {4, 99, 1, 0, 0, -1}, {5, 99, 2, 2, 2, -1}, {6, 99, 4, 12, 12, -1},
           {8, 99, 2, 10, 10, -1}, {9, 99, 1, 6, 6, -1}, {5, 0, 3, 0, 0, -1}, {6, 7, 3, 7, 7, -1},
           {5, 103, 3, 0, 0, 1}, {3, 107, 3, 0, 0, 0}, {6, -1, 3, 3, 12, -1}, {6, -5, 3, 3, 5, -1},
           {4, 100, 3, 16, 16, -1}}) {
    SCOPED_TRACE(::testing::PrintToString(c));
    int result = -1;
    for (int tries = 0; tries < 5 && result != 99; ++tries) result = Create(c[0], c[1], c[2]);
    ASSERT_EQ(result, 99);
    EXPECT_TRUE(test::IsSoundPuzzle(model));
    EXPECT_TRUE(generator.ClueCount >= c[3] && generator.ClueCount <= c[4]) << generator.ClueCount;
    int clues = 0;
    int signs = 0;
    for (int k = 0; k <= model.LastPosition; ++k) {
      clues += model.GivenValue[k] != 0 && (c[1] != 103 || model.PosText[k] == "3");
      signs += IsSignSlot(model, k) && !model.PosText[k].empty();
    }
    EXPECT_EQ(clues, c[5] < 0 ? generator.ClueCount : c[5]);
    EXPECT_EQ(generator.LevelCode, LevelForClues(model, c[0], generator.ClueCount));
    EXPECT_EQ(model.ConstraintCount, signs);
  }
}

// Reduction never leaves a sign the logic could do without.
TEST_F(CreatePuzzleTest, EveryKeptSignIsNeeded) {
  for (int n : {3, 4, 5, 6}) {
    ASSERT_EQ(Create(n, 99, 2), 99);
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (!IsSignSlot(model, k) || model.PosText[k].empty()) continue;
      PuzzleModel without = model;
      without.PosText[k].clear();
      PrepareCandidates(without);
      EXPECT_NE(SolveByLogic(without).status, kSolved) << "N " << n << ", sign at " << k;
    }
  }
}

TEST_F(CreatePuzzleTest, CancelDuringReductionBlanksTheDisplayAndAHundredFailuresGiveUp) {
  SeedRandom(model, 11);  // a stream in which signs alone never finish a 9x9
  model.SolverBusy = true;
  int calls = 0;  // the grid is redrawn once the clues are settled; reduction follows
  port.onProcessEvents = [&] { run.CancelRequest = port.gridRedraws > 0 && ++calls >= 5; };
  EXPECT_EQ(Create(6, 99, 3), -1);
  EXPECT_FALSE(model.SolverBusy);
  std::set<int> blanked;
  for (const auto& [k, text] : port.shownTexts) blanked.insert(text.empty() ? k : -1);
  EXPECT_EQ(blanked.size(), static_cast<std::size_t>(model.LastPosition + 1));

  port.onProcessEvents = nullptr;
  EXPECT_EQ(Create(9, 0), -1);  // signs alone rarely let the logic finish a 9x9
}

}  // namespace
}  // namespace qm
