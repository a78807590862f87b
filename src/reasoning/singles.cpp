// Rung 1: a cell with one digit left, and a digit with one place left in a line.
#include <algorithm>

#include "reasoning/ladder_internal.h"

namespace qm::reasoning::internal {

namespace {

// Places d at cell and strikes d from the open cells of its row and column.
void PlaceWithPeers(const Grid& g, int cell, int d, Step& step) {
  step.placed.emplace_back(cell, d);
  if (g.cand[static_cast<std::size_t>(cell)] != masks::Bit(d)) {
    step.removed.emplace_back(cell, static_cast<DigitMask>(g.cand[static_cast<std::size_t>(cell)] & ~masks::Bit(d)));
  }
  const int n = g.n;
  for (int i = 0; i < n; ++i) {
    for (const int peer : {cell / n * n + i, i * n + cell % n}) {
      if (peer == cell || g.placed[static_cast<std::size_t>(peer)]) continue;
      if ((g.cand[static_cast<std::size_t>(peer)] & masks::Bit(d)) == 0) continue;
      if (std::any_of(step.removed.begin(), step.removed.end(), [&](const auto& r) { return r.first == peer; })) continue;
      step.removed.emplace_back(peer, masks::Bit(d));
    }
  }
}

}  // namespace

bool NakedSingle(const Grid& g, Step& step, const Scope& scope) {
  return scope.AnyCell(Cells(g), [&](int c) {
    const DigitMask m = g.cand[static_cast<std::size_t>(c)];
    if (g.placed[static_cast<std::size_t>(c)] || !Single(m)) return false;
    const int d = DigitOf(m);
    step = {"Naked single", kSingles, {c}, {}, {}, ""};
    PlaceWithPeers(g, c, d, step);
    step.text = Capital(CellName(g.n, c)) + " can only be " + std::to_string(d) + ": place it, and " +
                std::to_string(d) + " leaves the rest of its row and column.";
    return true;
  });
}


bool HiddenSingle(const Grid& g, Step& step, const Scope& scope) {
  const int n = g.n;
  return AnyLineInScope(n, scope, [&](int l, const Line& cells) {
    const LineDigits line = DigestLine(g, cells);
    const DigitMask single = static_cast<DigitMask>(line.seen & ~line.twice & ~line.placed);
    if (single == 0) return false;
    const int d = masks::Lowest(single);
    int place = -1;
    for (int i = 0; i < n && place < 0; ++i) {
      if ((g.cand[static_cast<std::size_t>(cells[static_cast<std::size_t>(i)])] & masks::Bit(d)) != 0) {
        place = cells[static_cast<std::size_t>(i)];
      }
    }
    step = {"Hidden single", kSingles, {cells.begin(), cells.begin() + n}, {}, {}, ""};
    PlaceWithPeers(g, place, d, step);
    step.text = "In " + LineName(n, l) + ", " + std::to_string(d) + " fits only in " + CrossName(n, l, place) +
                ": place it at " + CellName(n, place) + ".";
    return true;
  });
}

}  // namespace qm::reasoning::internal
