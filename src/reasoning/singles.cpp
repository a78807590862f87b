// Rung 1: a cell with one digit left, and a digit with one place left in a line.
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
  // A row and a column share only the cell itself: no peer comes twice.
  for (int i = 0; i < n; ++i) {
    for (const int peer : {cell / n * n + i, i * n + cell % n}) {
      if (peer == cell || g.placed[static_cast<std::size_t>(peer)]) continue;
      if ((g.cand[static_cast<std::size_t>(peer)] & masks::Bit(d)) == 0) continue;
      step.removed.emplace_back(peer, masks::Bit(d));
    }
  }
}

void Start(Step& step, const char* technique, const int* cells, int count) {
  Begin(step, technique, kSingles);
  step.cells.assign(cells, cells + count);
  step.removed.reserve(static_cast<std::size_t>(2 * kMaxGridSize));
}

}  // namespace

bool NakedSingle(const Grid& g, Step& step, const Scope& scope) {
  return scope.AnyCell(Cells(g), [&](int c) {
    const DigitMask m = g.cand[static_cast<std::size_t>(c)];
    if (g.placed[static_cast<std::size_t>(c)] || !Single(m)) return false;
    const int d = DigitOf(m);
    Start(step, "Naked single", &c, 1);
    PlaceWithPeers(g, c, d, step);
    const char digit[] = {static_cast<char>('0' + d), '\0'};
    step.text.append(CellName(g.n, c)).append(" can only be ").append(digit).append(": place it, and ");
    step.text.append(digit).append(" leaves the rest of its row and column.");
    step.text[0] = 'R';
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
    Start(step, "Hidden single", cells.data(), n);
    PlaceWithPeers(g, place, d, step);
    const char digit[] = {static_cast<char>('0' + d), '\0'};
    step.text.append("In ").append(LineName(n, l)).append(", ").append(digit).append(" fits only in ");
    step.text.append(CrossName(n, l, place)).append(": place it at ").append(CellName(n, place)).append(".");
    return true;
  });
}

}  // namespace qm::reasoning::internal
