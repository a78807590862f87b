#include "generator/solution_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace qm {
namespace {

std::string CellLine(const PuzzleModel& model, int line, bool row) {
  std::string digits;
  for (int other = 1; other <= model.LayoutExtent; other += 2) {
    digits += model.PosText[row ? model.PositionOf[line][other] : model.PositionOf[other][line]];
  }
  return digits;
}

// Only row 1 (column 1) ever changes places, with one other line or none; and a built
// solution queues one entry per sign slot, in text order.
TEST(BuildSolution, OnlyTheFirstRowOrColumnIsExchanged) {
  PuzzleModel model;
  SeedRandom(model, 11);
  SetSize(model, 6);
  SignQueue queue;
  BuildSolution(model, queue);
  ASSERT_EQ(queue.size(), 60u);
  EXPECT_TRUE(std::is_sorted(queue.begin(), queue.end()));
  EXPECT_EQ(model.PosText[QueuedPosition(queue[7])], queue[7].substr(5));
  std::set<int> partners;
  for (int round = 0; round < 60; ++round) {
    const bool rows = round % 2 == 0;
    std::vector<std::string> before;
    for (int line = 1; line <= 11; line += 2) before.push_back(CellLine(model, line, rows));
    rows ? SwapRandomRow(model) : SwapRandomColumn(model);
    int partner = 0;
    for (int i = 1; i < 6; ++i) {
      if (CellLine(model, 2 * i + 1, rows) == before[static_cast<std::size_t>(i)]) continue;
      EXPECT_EQ(partner, 0) << "a second line moved";
      partner = i;
      EXPECT_EQ(CellLine(model, 2 * i + 1, rows), before[0]);
      EXPECT_EQ(CellLine(model, 1, rows), before[static_cast<std::size_t>(i)]);
    }
    partners.insert(partner);
  }
  EXPECT_EQ(partners.size(), 6u);  // every line, and none at all
}

}  // namespace
}  // namespace qm
