#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "solver/candidates.h"
#include "solver/mask_sweeps.h"
#include "solver/solve_driver.h"

namespace qm {
namespace {

// A grid as puzzles and hand edits leave it: digits and signs of a random solution,
// now and then a wrong digit or sign, a candidate list, or a contradiction.
PuzzleModel RandomGrid(int n, std::mt19937& random) {
  PuzzleModel m;
  SetSize(m, n);
  std::vector<int> rows(static_cast<std::size_t>(n));
  std::vector<int> cols(rows.size());
  std::iota(rows.begin(), rows.end(), 0);
  std::iota(cols.begin(), cols.end(), 0);
  std::shuffle(rows.begin(), rows.end(), random);
  std::shuffle(cols.begin(), cols.end(), random);
  auto value = [&](int k) {
    return 1 + (rows[static_cast<std::size_t>((m.RowOf[k] - 1) / 2)] + cols[static_cast<std::size_t>((m.ColOf[k] - 1) / 2)]) % n;
  };
  const unsigned signShare = random() % 100;
  const unsigned clueShare = random() % 40;
  for (int k = 0; k <= m.LastPosition; ++k) {
    const PositionKind kind = KindOf(m, k);
    const unsigned roll = random() % 100;
    if (kind == PositionKind::Cell) {
      if (roll < clueShare) m.PosText[k] = std::to_string(value(k));
      if (roll == 99) m.PosText[k] = std::to_string(1 + random() % n);  // maybe wrong
      if (roll == 98) {
        std::string list;
        for (int d = 1; d <= n; ++d) {
          if (random() % 2 != 0) list += static_cast<char>('0' + d);
        }
        m.PosText[k] = list;
      }
    } else if (kind == PositionKind::HorizontalSign && roll < signShare) {
      const bool less = value(m.LeftOf[k]) < value(m.RightOf[k]);
      m.PosText[k] = (less != (roll == 0)) ? "<" : ">";
    } else if (kind == PositionKind::VerticalSign && roll < signShare) {
      const bool less = value(m.UpOf[k]) < value(m.DownOf[k]);
      m.PosText[k] = (less != (roll == 0)) ? "^" : "v";
    }
  }
  return m;
}

TEST(MaskSweeps, AgreeWithTheTextTechniquesOnEveryGrid) {
  std::mt19937 random(31);
  int solved = 0;
  for (int trial = 0; trial < 1500; ++trial) {
    PuzzleModel masks = RandomGrid(3 + trial % 7, random);
    PrepareCandidates(masks);
    PuzzleModel texts = masks;
    MaskGrid grid;
    ASSERT_TRUE(LoadMaskGrid(masks, grid));
    const SolveOutcome fast = SolveByLogic(masks);
    const SolveOutcome reference = SolveByLogicOnTexts(texts);
    ASSERT_EQ(SaveCandidates(masks), SaveCandidates(texts)) << "trial " << trial;
    ASSERT_EQ(fast.status, reference.status) << "trial " << trial;
    ASSERT_EQ(fast.sweeps, reference.sweeps) << "trial " << trial;
    ASSERT_EQ(fast.message, reference.message) << "trial " << trial;
    ASSERT_EQ(fast.changes, reference.changes) << "trial " << trial;
    solved += fast.status == 99 ? 1 : 0;
  }
  EXPECT_GT(solved, 100);  // the trials reach every outcome, not only stalls
}

TEST(MaskSweeps, GridsTheMasksCannotHoldTakeTheTextPath) {
  PuzzleModel m;
  SetSize(m, 4);
  PrepareCandidates(m);
  MaskGrid grid;
  EXPECT_TRUE(LoadMaskGrid(m, grid));
  for (const char* text : {"21", "11", "1x", "0"}) {
    PuzzleModel odd = m;
    odd.PosText[0] = text;
    EXPECT_FALSE(LoadMaskGrid(odd, grid)) << text;
    PuzzleModel reference = odd;
    EXPECT_EQ(SolveByLogic(odd).message, SolveByLogicOnTexts(reference).message);
    EXPECT_EQ(SaveCandidates(odd), SaveCandidates(reference));
  }
}

}  // namespace
}  // namespace qm
