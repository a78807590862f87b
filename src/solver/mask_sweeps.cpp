#include "solver/mask_sweeps.h"

#include <array>
#include <bit>

#include "solver/digit_masks.h"
#include "solver/technique_table.h"

namespace qm {

namespace {

using Mask = MaskGrid::Mask;
using masks::Bit;
using masks::Count;
constexpr bool Fixed(Mask m) { return masks::IsSingle(m); }

enum : std::uint8_t {
  kSinglesLine = 1,
  kHiddenLine = 2,
  kPairLine = 4,
  kTripleLine = 8,
  kQuadLine = 16,
  kAllLines = 31,
};

// Stores a cell's new candidates and wakes its row and column for every technique.
void Set(MaskGrid& g, int c, Mask value) {
  g.cell[static_cast<std::size_t>(c)] = value;
  g.changedAt[static_cast<std::size_t>(c)] = ++g.clock;
  g.dirty[static_cast<std::size_t>(c / g.n)] = kAllLines;
  g.dirty[static_cast<std::size_t>(g.n + c % g.n)] = kAllLines;
}

// Whether `technique` has anything to look at in `line`; takes the flag down, and a
// change made while the line is worked on puts it back.
void Asleep(MaskGrid& g, int line, std::uint8_t technique) {
  std::uint8_t& flags = g.dirty[static_cast<std::size_t>(line)];
  flags = static_cast<std::uint8_t>(flags & ~technique);
}

bool Awake(MaskGrid& g, int line, std::uint8_t technique) {
  std::uint8_t& flags = g.dirty[static_cast<std::size_t>(line)];
  if ((flags & technique) == 0) return false;
  flags = static_cast<std::uint8_t>(flags & ~technique);
  return true;
}

// Visits every line the technique may find something in, with its cells' masks: `visit`
// is handed the line, its cells and their masks as they were when the visit began.
template <class Visit>
void ForEachAwakeLine(MaskGrid& g, std::uint8_t technique, Visit&& visit) {
  for (int line = 0; line < 2 * g.n; ++line) {
    if (!Awake(g, line, technique)) continue;
    const auto& cells = g.line[static_cast<std::size_t>(line)];
    std::array<Mask, kMaxGridSize> masks{};
    for (int i = 0; i < g.n; ++i) masks[static_cast<std::size_t>(i)] = g.cell[cells[static_cast<std::size_t>(i)]];
    visit(line, cells, masks);
  }
}

}  // namespace

int RemoveSinglesOnMasks(MaskGrid& g) {
  int changes = 0;
  bool fixedAny = true;
  while (fixedAny) {
    fixedAny = false;
    ForEachAwakeLine(g, kSinglesLine, [&](int line, const auto& cells, const auto& masks) {
      Mask singles = 0;
      for (int i = 0; i < g.n; ++i) {
        if (Fixed(masks[static_cast<std::size_t>(i)])) singles |= masks[static_cast<std::size_t>(i)];
      }
      if (singles == 0) return;
      bool fixedHere = false;
      for (int i = 0; i < g.n; ++i) {
        const int c = cells[static_cast<std::size_t>(i)];
        const Mask m = g.cell[static_cast<std::size_t>(c)];
        if ((m & singles) == 0 || Count(m) <= 1) continue;
        const Mask next = static_cast<Mask>(m & ~singles);
        Set(g, c, next);
        ++changes;
        if (Fixed(next)) fixedHere = true;
      }
      // Without a new single the line is clean: every other cell lost the singles.
      if (!fixedHere) Asleep(g, line, kSinglesLine);
      fixedAny = fixedAny || fixedHere;
    });
  }
  return changes;
}

int OrderPropagateOnMasks(MaskGrid& g) {
  int changes = 0;
  for (int r = 0; r < g.relations; ++r) {
    const int gc = g.relation[static_cast<std::size_t>(r)][0];
    const int sc = g.relation[static_cast<std::size_t>(r)][1];
    std::uint32_t& applied = g.appliedAt[static_cast<std::size_t>(r)];
    if (applied > g.changedAt[static_cast<std::size_t>(gc)] && applied > g.changedAt[static_cast<std::size_t>(sc)]) {
      continue;  // applying a relation twice in a row changes nothing
    }
    const Mask greater = g.cell[static_cast<std::size_t>(gc)];
    const Mask smaller = g.cell[static_cast<std::size_t>(sc)];
    Mask c2 = static_cast<Mask>(smaller & ~Bit(g.n));
    Mask c1 = static_cast<Mask>(greater & ~Bit(1));
    const int highest = c1 == 0 ? 0 : std::bit_width(c1) - 1;  // no candidates: nothing is below
    c2 &= static_cast<Mask>(Bit(highest) - 1);
    c1 = c2 == 0 ? Mask{0} : static_cast<Mask>(c1 & ~(Bit(std::countr_zero(c2) + 1) - 1));
    if (c1 != greater) {
      Set(g, gc, c1);
      ++changes;
    }
    if (c2 != smaller) {
      Set(g, sc, c2);
      ++changes;
    }
    applied = ++g.clock;
  }
  return changes;
}

int HiddenSingleOnMasks(MaskGrid& g) {
  int changes = 0;
  const Mask digits = static_cast<Mask>(Bit(g.n + 1) - 2);
  ForEachAwakeLine(g, kHiddenLine, [&](int, const auto& cells, const auto& masks) {
    Mask once = 0;
    Mask more = 0;
    for (int i = 0; i < g.n; ++i) {
      const Mask m = masks[static_cast<std::size_t>(i)];
      more |= once & m;
      once |= m;
    }
    const Mask unique = static_cast<Mask>(once & ~more & digits);
    if (unique == 0) return;
    // Each unique digit has one cell; where a cell holds several, the lowest digit,
    // taken first, wins.
    for (int i = 0; i < g.n; ++i) {
      const int c = cells[static_cast<std::size_t>(i)];
      const Mask m = g.cell[static_cast<std::size_t>(c)];
      const Mask mine = m & unique;
      if (mine == 0) continue;
      const Mask lowest = static_cast<Mask>(mine & -mine);
      if (m == lowest) continue;
      Set(g, c, lowest);
      ++changes;
    }
  });
  return changes;
}

// For ascending digit strings of one length, the string order: the one holding the
// lowest digit where they differ comes first.
namespace {

bool Before(Mask a, Mask b) { return a != b && (a & (a ^ b) & -(a ^ b)) != 0; }

int NakedSet(MaskGrid& g, int size, std::uint8_t technique) {
  int changes = 0;
  ForEachAwakeLine(g, technique, [&](int line, const auto& cells, const auto& masks) {
    Mask first = 0;
    int count = 0;
    for (int i = 0; i < g.n; ++i) {
      const Mask m = masks[static_cast<std::size_t>(i)];
      if (Count(m) != size) continue;
      if (count == 0 || Before(m, first)) {
        first = m;
        count = 1;
      } else if (m == first) {
        ++count;
      }
    }
    // The first set in string order must occur exactly `size` times.
    if (count != size) return;
    for (int i = 0; i < g.n; ++i) {
      const int c = cells[static_cast<std::size_t>(i)];
      const Mask m = g.cell[static_cast<std::size_t>(c)];
      if (m == first || (m & first) == 0) continue;
      Set(g, c, static_cast<Mask>(m & ~first));
      ++changes;
    }
    // The set still sorts first and has nothing left to take here.
    Asleep(g, line, technique);
  });
  return changes;
}

}  // namespace

bool LoadMaskGrid(const PuzzleModel& model, MaskGrid& grid) {
  const int n = model.GridSize;
  grid.n = n;
  grid.relations = 0;
  grid.dirty.fill(kAllLines);
  grid.clock = 1;
  grid.changedAt.fill(1);
  grid.appliedAt.fill(0);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      grid.line[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = static_cast<std::uint8_t>(i * n + j);
      grid.line[static_cast<std::size_t>(n + i)][static_cast<std::size_t>(j)] = static_cast<std::uint8_t>(j * n + i);
    }
  }
  std::array<int, kPositionCount> cellIndex{};
  cellIndex.fill(-1);
  int c = 0;
  for (int row = 1; row <= model.LayoutExtent; row += 2) {
    for (int col = 1; col <= model.LayoutExtent; col += 2, ++c) {
      const int k = model.PositionOf[row][col];
      Mask m = 0;
      char previous = '0';
      for (char ch : model.PosText[k]) {
        if (ch <= previous || ch > '9') return false;
        m |= Bit(ch - '0');
        previous = ch;
      }
      grid.cell[static_cast<std::size_t>(c)] = m;
      grid.position[static_cast<std::size_t>(c)] = k;
      cellIndex[static_cast<std::size_t>(k)] = c;
    }
  }
  for (c = 0; c < n * n; ++c) {
    const std::string& list = model.SmallerList[grid.position[static_cast<std::size_t>(c)]];
    if (list.size() % 3 != 0) return false;
    for (std::size_t i = 0; i < list.size(); i += 3) {
      int k = 0;
      for (std::size_t j = i; j < i + 3; ++j) {
        if (list[j] < '0' || list[j] > '9') return false;
        k = k * 10 + (list[j] - '0');
      }
      if (k >= kPositionCount || cellIndex[static_cast<std::size_t>(k)] < 0 ||
          grid.relations == static_cast<int>(grid.relation.size())) {
        return false;
      }
      grid.relation[static_cast<std::size_t>(grid.relations++)] = {static_cast<std::uint8_t>(c),
                                                                    static_cast<std::uint8_t>(cellIndex[static_cast<std::size_t>(k)])};
    }
  }
  return true;
}

void StoreMaskGrid(const MaskGrid& grid, PuzzleModel& model) {
  for (int c = 0; c < grid.n * grid.n; ++c) {
    char digits[kMaxGridSize + 1];
    std::size_t length = 0;
    for (int d = 1; d <= 9; ++d) {
      if ((grid.cell[static_cast<std::size_t>(c)] & Bit(d)) != 0) digits[length++] = static_cast<char>('0' + d);
    }
    model.PosText[grid.position[static_cast<std::size_t>(c)]].assign(digits, length);
  }
}

int NakedPairOnMasks(MaskGrid& grid) { return NakedSet(grid, 2, kPairLine); }
int NakedTripleOnMasks(MaskGrid& grid) { return NakedSet(grid, 3, kTripleLine); }
int NakedQuadOnMasks(MaskGrid& grid) { return NakedSet(grid, 4, kQuadLine); }

int MaskSweep(MaskGrid& grid, std::array<int, kTechniqueCount>& changes) {
  int total = 0;
  for (const SweepTechnique& technique : kSweepOrder) {
    const int found = technique.onMasks(grid);
    changes[static_cast<std::size_t>(technique.quiet)] += found;
    total += found;
  }
  return total;
}

}  // namespace qm
