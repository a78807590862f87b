// Keeping the candidates some assignment of distinct digits uses, against trying every
// assignment: random lines of every size, most with an assignment, some without, some
// with cells already down to a digit no other cell may take, as settled lines are.
#include "solver/line_matching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace qm {
namespace {

TEST(LineMatching, KeepsExactlyWhatSomeAssignmentUses) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> unit(0, 1);
  int emptied = 0;
  int narrowed = 0;
  int untouched = 0;
  int counted = 0;
  for (int round = 0; round < 4000; ++round) {
    const int n = round % 80 == 79 ? 9 : 1 + round % 8;  // nine cells: 9! assignments each
    const double extra = 0.1 + 0.6 * unit(random);
    // Around a hidden assignment, except now and then, so that some lines have none.
    std::vector<int> digits(static_cast<std::size_t>(n));
    std::iota(digits.begin(), digits.end(), 1);
    std::shuffle(digits.begin(), digits.end(), random);
    const bool planted = unit(random) < 0.9;
    LineMasks line{};
    for (int i = 0; i < n; ++i) {
      if (planted) line[static_cast<std::size_t>(i)] = masks::Bit(digits[static_cast<std::size_t>(i)]);
      for (int d = 1; d <= n; ++d) {
        if (unit(random) < extra) line[static_cast<std::size_t>(i)] |= masks::Bit(d);
      }
    }
    if (round % 3 == 0) {
      for (int i = 0; i < n; ++i) {
        if (unit(random) >= 0.4) continue;
        const masks::DigitMask own = masks::Bit(digits[static_cast<std::size_t>(i)]);
        for (int j = 0; j < n; ++j) line[static_cast<std::size_t>(j)] &= static_cast<masks::DigitMask>(~own);
        line[static_cast<std::size_t>(i)] = own;
      }
    }
    // Every assignment, by permutations of the digits.
    LineMasks used{};
    bool any = false;
    std::vector<int> order(static_cast<std::size_t>(n));
    std::iota(order.begin(), order.end(), 1);
    do {
      bool fits = true;
      for (int i = 0; i < n && fits; ++i) {
        fits = (line[static_cast<std::size_t>(i)] & masks::Bit(order[static_cast<std::size_t>(i)])) != 0;
      }
      if (!fits) continue;
      any = true;
      for (int i = 0; i < n; ++i) used[static_cast<std::size_t>(i)] |= masks::Bit(order[static_cast<std::size_t>(i)]);
    } while (std::next_permutation(order.begin(), order.end()));

    const bool keepsAll = any && used == line;
    EXPECT_EQ(AllMatched(line, n), keepsAll) << "round " << round;
    if (MatchedByCounting(line, n)) {
      EXPECT_TRUE(keepsAll) << "round " << round;
      ++counted;
    }
    LineMasks kept = line;
    const int changed = KeepMatched(kept, n);
    if (!any) {
      EXPECT_EQ(changed, -1) << "round " << round;
      ++emptied;
      continue;
    }
    int expected = 0;
    for (int i = 0; i < n; ++i) {
      EXPECT_EQ(kept[static_cast<std::size_t>(i)], used[static_cast<std::size_t>(i)]) << "round " << round << ", cell " << i;
      if (used[static_cast<std::size_t>(i)] != line[static_cast<std::size_t>(i)]) expected |= 1 << i;
    }
    EXPECT_EQ(changed, expected) << "round " << round;
    (expected != 0 ? narrowed : untouched) += 1;
  }
  // The rounds reached every outcome.
  EXPECT_GT(emptied, 50);
  EXPECT_GT(narrowed, 500);
  EXPECT_GT(untouched, 500);
  EXPECT_GT(counted, 300);
}

}  // namespace
}  // namespace qm
