// Rungs 6 and 7 and what they stand on: following an assumption by singles and signs
// (told with its trail, or decided by masks), forcing chains from a two-candidate cell,
// and proof by contradiction, quick or with rungs 1 to 5 inside the assumption.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "reasoning/ladder_internal.h"
#include "solver/solution_search.h"

namespace qm::reasoning::internal {

namespace {

// ---- Quick propagation for the chains and contradictions ------------------------------

struct Trail {
  std::vector<std::pair<int, int>> placed;  // in the order found
  std::string contradiction;                // empty while the grid holds
};

// Singles, hidden singles and sign bounds to a fixed point. Returns false with the
// reason in trail.contradiction when the grid breaks.
bool Propagate(Grid& g, Trail& trail) {
  const int n = g.n;
  const DigitMask full = masks::Full(n);
  auto place = [&](int c, int d) {
    g.placed[static_cast<std::size_t>(c)] = true;
    g.cand[static_cast<std::size_t>(c)] = masks::Bit(d);
    trail.placed.emplace_back(c, d);
    for (int i = 0; i < n; ++i) {
      for (const int peer : {c / n * n + i, i * n + c % n}) {
        if (peer != c && !g.placed[static_cast<std::size_t>(peer)]) {
          g.cand[static_cast<std::size_t>(peer)] &= static_cast<DigitMask>(~masks::Bit(d));
        }
      }
    }
  };
  for (int round = 0; round < 4 * kMaxCells; ++round) {
    bool changed = false;
    for (int c = 0; c < n * n; ++c) {
      const DigitMask m = g.cand[static_cast<std::size_t>(c)];
      if (m == 0) {
        trail.contradiction = CellName(n, c) + " would have no digit left";
        return false;
      }
      if (!g.placed[static_cast<std::size_t>(c)] && Single(m)) {
        place(c, DigitOf(m));
        changed = true;
      }
    }
    for (int l = 0; l < 2 * n; ++l) {
      const Line cells = LineCells(n, l);
      // Placed twice is a contradiction.
      const auto [seen, twice, placed, placedTwice] = DigestLine(g, cells);
      if (seen != full) {
        trail.contradiction = LineName(n, l) + " would have no place for " + std::to_string(DigitOf(full & ~seen));
        return false;
      }
      if (placedTwice != 0) {
        trail.contradiction = LineName(n, l) + " would hold " + std::to_string(DigitOf(placedTwice)) + " twice";
        return false;
      }
      const DigitMask single = static_cast<DigitMask>(seen & ~twice & ~placed);
      if (single == 0) continue;
      for (int i = 0; i < n; ++i) {
        const int c = cells[static_cast<std::size_t>(i)];
        const DigitMask here = g.cand[static_cast<std::size_t>(c)] & single;
        if (here == 0 || g.placed[static_cast<std::size_t>(c)]) continue;
        if (!Single(here)) {
          trail.contradiction = CellName(n, c) + " would need both " + Digits(here);
          return false;
        }
        place(c, DigitOf(here));
        changed = true;
        break;  // the line's masks are stale now
      }
    }
    for (const Sign& s : g.SignList()) {
      DigitMask& gm = g.cand[static_cast<std::size_t>(s.greater)];
      DigitMask& sm = g.cand[static_cast<std::size_t>(s.smaller)];
      if (gm == 0 || sm == 0) continue;
      const DigitMask ng = gm & masks::Above(masks::Lowest(sm));
      const DigitMask ns = sm & masks::Below(masks::Highest(gm));
      if (ng == 0 || ns == 0) {
        trail.contradiction = "the sign between " + CellName(n, s.greater) + " and " + CellName(n, s.smaller) +
                              " could not hold";
        return false;
      }
      if (ng != gm || ns != sm) {
        gm = ng;
        sm = ns;
        changed = true;
      }
    }
    if (!changed) return true;
  }
  return true;
}

// "row 4, column 3 would be 2, row 5, column 2 would be 7, …"
std::string TrailText(int n, const Trail& trail, std::size_t skip) {
  std::vector<std::string> items;
  for (std::size_t i = skip; i < trail.placed.size() && items.size() < 3; ++i) {
    items.push_back(CellName(n, trail.placed[i].first) + " would be " + std::to_string(trail.placed[i].second));
  }
  std::string text;
  for (const std::string& item : items) text += item + ", ";
  if (trail.placed.size() > skip + items.size()) text += "…, ";
  return text;
}

}  // namespace

// ---- Settling by masks: deciding, not telling -----------------------------------------

// The same rules as Propagate and the same fixed point (the rules only ever strike, and
// none of them depends on the order they run in), but driven by the cells that changed
// and with no trail. The contradiction and forcing rungs decide with it; only the one
// assumption a step is made of is then followed again with Propagate for its sentence.
struct Topology {
  int n = 0;
  std::array<std::array<std::uint8_t, 2 * (kMaxGridSize - 1)>, kMaxCells> peers{};
  struct Link {
    std::uint8_t other;
    bool greater;  // this cell is the greater one
  };
  std::array<Link, 2 * std::tuple_size_v<decltype(Grid::signs)>> links{};
  std::array<std::uint16_t, kMaxCells + 1> linkStart{};  // this cell's links: [start[c], start[c + 1])
  std::array<Line, 2 * kMaxGridSize> lines{};
  std::array<std::uint32_t, kMaxCells> lineBits{};  // the cell's row and column

  explicit Topology(const Grid& g) : n(g.n) {
    for (int c = 0; c < n * n; ++c) {
      std::size_t k = 0;
      for (int i = 0; i < n; ++i) {
        for (const int peer : {c / n * n + i, i * n + c % n}) {
          if (peer != c) peers[static_cast<std::size_t>(c)][k++] = static_cast<std::uint8_t>(peer);
        }
      }
    }
    for (const Sign& s : g.SignList()) {
      ++linkStart[static_cast<std::size_t>(s.greater) + 1];
      ++linkStart[static_cast<std::size_t>(s.smaller) + 1];
    }
    for (std::size_t c = 0; c < kMaxCells; ++c) linkStart[c + 1] = static_cast<std::uint16_t>(linkStart[c + 1] + linkStart[c]);
    std::array<std::uint16_t, kMaxCells + 1> fill = linkStart;
    for (const Sign& s : g.SignList()) {
      links[fill[static_cast<std::size_t>(s.greater)]++] = {static_cast<std::uint8_t>(s.smaller), true};
      links[fill[static_cast<std::size_t>(s.smaller)]++] = {static_cast<std::uint8_t>(s.greater), false};
    }
    for (int l = 0; l < 2 * n; ++l) lines[static_cast<std::size_t>(l)] = LineCells(n, l);
    for (int c = 0; c < n * n; ++c) lineBits[static_cast<std::size_t>(c)] = 1u << (c / n) | 1u << (n + c % n);
  }
};

namespace {

// Cells and lines still to look at, as bit sets.
struct Pending {
  std::array<std::uint64_t, 2> cells{};
  std::uint32_t lines = 0;
  void Cell(int c) { cells[static_cast<std::size_t>(c >> 6)] |= std::uint64_t{1} << (c & 63); }
  void All(int n) {
    for (int c = 0; c < n * n; ++c) Cell(c);
    lines = (1u << (2 * n)) - 1u;
  }
  int PopCell() {
    for (std::size_t w = 0; w < cells.size(); ++w) {
      if (cells[w] != 0) {
        const int bit = std::countr_zero(cells[w]);
        cells[w] &= cells[w] - 1;
        return static_cast<int>(w) * 64 + bit;
      }
    }
    return -1;
  }
};

// What a line's cells hold between them: the digits one or more may take, those two or
// more may, those of cells down to one digit, and those two such cells share.
struct LineSums {
  DigitMask seen = 0;
  DigitMask twice = 0;
  DigitMask fixed = 0;
  DigitMask clash = 0;
  void Add(DigitMask m) {
    twice |= static_cast<DigitMask>(seen & m);
    seen |= m;
    const DigitMask single = Single(m) ? m : DigitMask{0};
    clash |= static_cast<DigitMask>(fixed & single);
    fixed |= single;
  }
};

// Line l (rows first) of the grid, eight cells at a time where the compiler offers SSE2:
// settling asks after every cell that changed.
LineSums SumLine(const Cand& cand, int n, const Line& cells, [[maybe_unused]] int l) {
  LineSums sums;
  int i = 0;
#if defined(__SSE2__)
  __m128i v;
  if (l < n) {
    // A row's first eight cells are next to each other; past the grid the load reads
    // cells that are cleared below (n < 8) or that exist (n >= 8).
    static_assert(kMaxCells >= 8 * kMaxGridSize + 8);
    v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cand.data() + static_cast<std::ptrdiff_t>(l) * n));
  } else {
    auto at = [&](int k) {
      return k < n ? static_cast<short>(cand[static_cast<std::size_t>(cells[static_cast<std::size_t>(k)])]) : short{0};
    };
    v = _mm_set_epi16(at(7), at(6), at(5), at(4), at(3), at(2), at(1), at(0));
  }
  if (n < 8) {
    // Eight lanes kept, then eight cleared: from lane 8 - n on, the first n are kept.
    static constexpr std::uint16_t kLanes[16] = {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
    v = _mm_and_si128(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(kLanes + 8 - n)));
  }
  const __m128i zero = _mm_setzero_si128();
  const __m128i single = _mm_andnot_si128(
      _mm_cmpeq_epi16(v, zero), _mm_cmpeq_epi16(_mm_and_si128(v, _mm_sub_epi16(v, _mm_set1_epi16(1))), zero));
  __m128i seen = v;
  __m128i twice = zero;
  __m128i fixed = _mm_and_si128(v, single);
  __m128i clash = zero;
  // Halves folded onto each other: lane 0 ends with the sums of all eight.
  auto fold = [&](__m128i upperSeen, __m128i upperTwice, __m128i upperFixed, __m128i upperClash) {
    twice = _mm_or_si128(_mm_or_si128(twice, upperTwice), _mm_and_si128(seen, upperSeen));
    seen = _mm_or_si128(seen, upperSeen);
    clash = _mm_or_si128(_mm_or_si128(clash, upperClash), _mm_and_si128(fixed, upperFixed));
    fixed = _mm_or_si128(fixed, upperFixed);
  };
  fold(_mm_srli_si128(seen, 8), _mm_srli_si128(twice, 8), _mm_srli_si128(fixed, 8), _mm_srli_si128(clash, 8));
  fold(_mm_srli_si128(seen, 4), _mm_srli_si128(twice, 4), _mm_srli_si128(fixed, 4), _mm_srli_si128(clash, 4));
  fold(_mm_srli_si128(seen, 2), _mm_srli_si128(twice, 2), _mm_srli_si128(fixed, 2), _mm_srli_si128(clash, 2));
  sums.seen = static_cast<DigitMask>(_mm_cvtsi128_si32(seen));
  sums.twice = static_cast<DigitMask>(_mm_cvtsi128_si32(twice));
  sums.fixed = static_cast<DigitMask>(_mm_cvtsi128_si32(fixed));
  sums.clash = static_cast<DigitMask>(_mm_cvtsi128_si32(clash));
  i = std::min(n, 8);
#endif
  for (; i < n; ++i) sums.Add(cand[static_cast<std::size_t>(cells[static_cast<std::size_t>(i)])]);
  return sums;
}

// Returns false when the grid breaks. A single cell counts as placed: one that was
// single before and is not in `todo` has left its lines already, and one that became
// single since is in `todo` and leaves them when its turn comes.
bool Settle(const Topology& t, Cand& cand, Pending& todo) {
  const int n = t.n;
  const DigitMask full = masks::Full(n);
  auto narrow = [&](std::size_t c, DigitMask to) {
    cand[c] = to;
    todo.Cell(static_cast<int>(c));
  };
  for (;;) {
    const int x = todo.PopCell();
    if (x < 0) {
      if (todo.lines == 0) return true;
      const auto l = static_cast<std::size_t>(std::countr_zero(todo.lines));
      todo.lines &= todo.lines - 1;
      const Line& cells = t.lines[l];
      const LineSums sums = SumLine(cand, n, cells, static_cast<int>(l));
      if (sums.seen != full || sums.clash != 0) return false;
      const DigitMask single = static_cast<DigitMask>(sums.seen & ~sums.twice & ~sums.fixed);
      if (single == 0) continue;
      for (int i = 0; i < n; ++i) {
        const auto c = static_cast<std::size_t>(cells[static_cast<std::size_t>(i)]);
        const DigitMask here = cand[c] & single;
        if (here == 0) continue;
        if (!Single(here)) return false;
        narrow(c, here);
      }
      continue;
    }
    const auto xi = static_cast<std::size_t>(x);
    const DigitMask m = cand[xi];
    if (m == 0) return false;
    if (Single(m)) {
      for (int i = 0; i < 2 * (n - 1); ++i) {
        const std::size_t p = t.peers[xi][static_cast<std::size_t>(i)];
        if ((cand[p] & m) != 0) narrow(p, static_cast<DigitMask>(cand[p] & ~m));
      }
    }
    for (std::size_t k = t.linkStart[xi]; k < t.linkStart[xi + 1]; ++k) {
      const Topology::Link& link = t.links[k];
      const std::size_t gi = link.greater ? xi : link.other;
      const std::size_t si = link.greater ? link.other : xi;
      const DigitMask gm = cand[gi];
      const DigitMask sm = cand[si];
      if (gm == 0 || sm == 0) return false;
      const DigitMask ng = gm & masks::Above(masks::Lowest(sm));
      const DigitMask ns = sm & masks::Below(masks::Highest(gm));
      if (ng == 0 || ns == 0) return false;
      if (ng != gm) narrow(gi, ng);
      if (ns != sm) narrow(si, ns);
    }
    todo.lines |= t.lineBits[xi];
  }
}

}  // namespace

Memo::Memo() = default;
Memo::~Memo() = default;

Memo& Memo::Nested() {
  if (!nested_) {
    nested_ = std::make_unique<Memo>();
    nested_->tells_ = false;
    nested_->parent_ = this;
  }
  return *nested_;
}

namespace {

// How many solutions the grid has, 0, 1 or 2 meaning more, by the exact search; the first
// is written to `first`.
int FindSolutions(const Grid& g, Cand& first) {
  const auto cells = static_cast<std::size_t>(g.n * g.n);
  if (std::find(g.cand.begin(), g.cand.begin() + static_cast<std::ptrdiff_t>(cells), DigitMask{0}) !=
      g.cand.begin() + static_cast<std::ptrdiff_t>(cells)) {
    return 0;
  }
  std::array<std::pair<int, int>, std::tuple_size_v<decltype(Grid::signs)>> signs{};
  for (int i = 0; i < g.signCount; ++i) {
    signs[static_cast<std::size_t>(i)] = {g.signs[static_cast<std::size_t>(i)].greater, g.signs[static_cast<std::size_t>(i)].smaller};
  }
  SearchOptions options;
  options.limit = 2;
  const SolutionCount found =
      CountSolutions(g.n, std::span<const DigitMask>(g.cand.data(), cells),
                     std::span<const std::pair<int, int>>(signs.data(), static_cast<std::size_t>(g.signCount)), options,
                     std::span<DigitMask>(first.data(), cells));
  return std::min(found.count, 2);
}

}  // namespace

int Memo::Solutions(const Grid& g) {
  if (solution_ == Several) solution_ = NotSought;  // a smaller grid may have fewer
  if (solution_ == NotSought) {
    const int count = FindSolutions(g, solutionCand_);
    solution_ = count == 0 ? None : count == 1 ? Unique : Several;
  }
  return solution_ == None ? 0 : solution_ == Unique ? 1 : 2;
}

const Cand* Memo::KnownSolution() {
  if (solution_ != Unique) return nullptr;
  // Still within the grid, as it stays while the rungs strike only false digits.
  for (std::size_t x = 0; x < static_cast<std::size_t>(cells_); ++x) {
    if ((solutionCand_[x] & last_[x]) == 0) return nullptr;
  }
  return &solutionCand_;
}

// Starts a search for a step on g: settles g's own candidates.
void Memo::Look(const Grid& g) {
  if (!topology_ || topology_->n != g.n) {
    topology_ = std::make_unique<Topology>(g);
    entries_.assign(static_cast<std::size_t>(g.n * g.n * (kMaxGridSize + 1)), Entry{});
    seen_ = false;
  }
  if (seen_ && g.cand == last_ && g.placed == lastPlaced_) return;
  cells_ = g.n * g.n;
  auto within = [&](const Cand& outer) {
    for (std::size_t c = 0; c < static_cast<std::size_t>(cells_); ++c) {
      if ((g.cand[c] & ~outer[c]) != 0) return false;
    }
    return true;
  };
  // A grid that is not within the last one: what was remembered may not hold. Where an
  // assumption leads on the grid it was made on holds within it, on the grid of another
  // assumption too: a start no worse than nothing.
  const bool narrower = seen_ && within(last_);
  if (!narrower) {
    solution_ = NotSought;
    stalled_.fill(0);
    if (parent_ != nullptr && parent_->seen_ && parent_->entries_.size() == entries_.size() && within(parent_->last_)) {
      entries_ = parent_->entries_;
    } else if (seen_) {
      std::fill(entries_.begin(), entries_.end(), Entry{});
    }
  }
  last_ = g.cand;
  lastPlaced_ = g.placed;
  seen_ = true;
  if (narrower && baseHolds_) {
    // Settled from what the step changed: the same state as settling g afresh, as
    // everything settling strikes from g lies outside the last settled grid already.
    baseHolds_ = Narrow(*topology_, base_, g.cand).holds;
  } else {
    base_ = g.cand;
    Pending todo;
    todo.All(g.n);
    baseHolds_ = Settle(*topology_, base_, todo);
  }
  quiet_ = Unknown;
  held_.fill(0);
}

void Memo::Held(const Cand& end) {
  for (std::size_t x = 0; x < static_cast<std::size_t>(cells_); ++x) {
    if (Single(end[x])) held_[x] |= end[x];
  }
}


// Where c = d leads by singles and signs, or nullptr when it breaks the grid.
const Cand* Memo::Quick(int c, int d) {
  if (!Possible(c, d)) return nullptr;
  Entry& e = At(c, d);
  if (!e.quickKnown) {
    e.quick = base_;
    e.quick[static_cast<std::size_t>(c)] = masks::Bit(d);
    Pending todo;
    todo.Cell(c);
    e.quickHolds = Settle(*topology_, e.quick, todo);
    e.quickKnown = true;
  } else if (e.quickHolds) {
    e.quickHolds = Renew(e.quick).holds;
  }
  return e.quickHolds ? &e.quick : nullptr;
}


// Whether c = d survives rungs 1 to 5 applied in turn, as PropagateDeep does.
bool Memo::DeepHolds(const Grid& g, int c, int d, int budget) {
  // Another assumption's end on this grid holds c = d and broke nothing: a state rungs 1
  // to 5 leave as it is, within the grid and c = d. Followed from c = d alone they strike
  // only digits outside some such state, so they never reach a broken one.
  if ((held_[static_cast<std::size_t>(c)] & masks::Bit(d)) != 0) return true;
  if (!Possible(c, d)) return false;
  Entry& e = At(c, d);
  // A settled grid the trial lies within on which rungs 1 to 5 found nothing: where it
  // ended before, or g itself. The rungs look again only where the trial differs from it.
  Cand quiet;
  bool scoped = true;
  if (e.deepKnown) {
    // Where it ended before lies within where singles and signs lead, so it breaks
    // whenever those do: that end is not renewed first.
    if (!e.deepHolds) return false;
    quiet = e.deep;
    const Renewed renewed = Renew(e.deep);
    if (!renewed.holds || !renewed.changed) {
      if (renewed.holds) Held(e.deep);
      return e.deepHolds = renewed.holds;
    }
  } else {
    const Cand* quick = Quick(c, d);
    if (quick == nullptr) return false;
    quiet = g.cand;
    e.deep = *quick;
    scoped = Quiet(g);
  }
  Grid trial = g;
  SetCand(trial, e.deep);
  e.deepKnown = true;
  e.deepHolds = false;
  // Each rung looks again only where the trial changed since it last found nothing.
  std::array<Scope, kBelowChains> since;
  since.fill(scoped ? Scope::ChangedSettled(trial, quiet) : kWholeGrid);
  Step step;
  for (int i = 0; i < budget; ++i) {
    SkipSettledRungs(since);  // the trial is settled
    if (IsSolved(trial) || !EasyStepSince(trial, step, *this, since)) {
      e.deep = trial.cand;
      Held(e.deep);
      return e.deepHolds = true;
    }
    const Cand before = trial.cand;
    Apply(trial, step);
    if (IsBroken(trial)) return false;
    Pending todo;
    for (const auto& [cell, digits] : step.removed) todo.Cell(cell);
    for (const auto& [cell, digit] : step.placed) todo.Cell(cell);
    if (!Settle(*topology_, trial.cand, todo)) return false;
    for (std::size_t x = 0; x < static_cast<std::size_t>(cells_); ++x) trial.placed[x] = Single(trial.cand[x]);
    const Scope changed = Scope::ChangedSettled(trial, before);
    for (Scope& scope : since) scope.Add(changed);
  }
  e.deepKnown = false;  // out of steps: held, but not to a known end
  return true;
}


// Whether rungs 1 to 5 find nothing on the grid last looked at, g.
bool Memo::Quiet(const Grid& g) {
  if (quiet_ == Unknown) {
    Step step;
    quiet_ = EasyStep(g, step, *this, kWholeGrid) ? No : Yes;
  }
  return quiet_ == Yes;
}


Memo::Renewed Memo::Renew(Cand& end) const { return Narrow(*topology_, end, base_); }

Memo::Renewed Memo::Narrow(const Topology& t, Cand& state, const Cand& to) {
  // Most states lie within `to` still: one pass the compiler does in vectors. Past the
  // grid's cells both are empty.
  DigitMask outside = 0;
  for (std::size_t x = 0; x < state.size(); ++x) outside |= static_cast<DigitMask>(state[x] & ~to[x]);
  if (outside == 0) return {true, false};
  const Cand was = state;
  for (std::size_t x = 0; x < state.size(); ++x) state[x] &= to[x];
  Pending todo;
  todo.cells = DifferingCells(was, state);
  return {Settle(t, state, todo), true};
}

bool AllPlaced(const Grid& g) {
  for (int c = 0; c < Cells(g); ++c) {
    if (!g.placed[static_cast<std::size_t>(c)]) return false;
  }
  return true;
}

// IsBroken on the lines and signs of the scope only.
bool BrokenWithin(const Grid& g, const Scope& scope, Memo& memo) {
  const int n = g.n;
  // A line's cells are `step` apart from its first.
  auto lineBroken = [&](int first, int step) {
    DigitMask seen = 0;
    DigitMask placed = 0;
    for (int i = 0, c = first; i < n; ++i, c += step) {
      const DigitMask m = g.cand[static_cast<std::size_t>(c)];
      if (m == 0) return true;
      if (g.placed[static_cast<std::size_t>(c)]) {
        if ((placed & m) != 0) return true;
        placed |= m;
      }
      seen |= m;
    }
    return seen != masks::Full(n);
  };
  for (int l = 0; l < n; ++l) {
    if (scope.Line(l) && lineBroken(l * n, 1)) return true;
    if (scope.Line(n + l) && lineBroken(l, n)) return true;
  }
  return memo.AnySign(g, scope, [&](const Sign& s) {
    return masks::Highest(g.cand[static_cast<std::size_t>(s.greater)]) <=
           masks::Lowest(g.cand[static_cast<std::size_t>(s.smaller)]);
  });
}

Memo::SignSet Memo::SignsTouching(const Grid& g, const Scope& scope) {
  const auto count = static_cast<std::size_t>(g.signCount);
  SignSet set{};
  if (!signsAt_) {
    signsAt_ = std::make_unique<std::array<SignSet, kMaxCells>>();
    for (std::size_t i = 0; i < count; ++i) {
      for (const int c : {g.signs[i].greater, g.signs[i].smaller}) {
        (*signsAt_)[static_cast<std::size_t>(c)][i >> 6] |= std::uint64_t{1} << (i & 63);
      }
    }
  }
  scope.AnyCell(Cells(g), [&](int c) {
    const SignSet& at = (*signsAt_)[static_cast<std::size_t>(c)];
    for (std::size_t w = 0; w < set.size(); ++w) set[w] |= at[w];
    return false;
  });
  return set;
}

// ---- Rung 6: forcing chains from a two-candidate cell ---------------------------------

bool ForcingChain(const Grid& g, Step& step, Memo& memo) {
  memo.Look(g);
  for (int c = 0; c < Cells(g); ++c) {
    const DigitMask m = g.cand[static_cast<std::size_t>(c)];
    if (g.placed[static_cast<std::size_t>(c)] || masks::Count(m) != 2) continue;
    const int a = masks::Lowest(m);
    const int b = masks::Highest(m);
    // A branch that breaks is a contradiction, the next rung's business.
    const Cand* ga = memo.Quick(c, a);
    const Cand* gb = ga == nullptr ? nullptr : memo.Quick(c, b);
    if (gb == nullptr) continue;
    // Most pairs strike nothing: one pass over every cell, which the compiler does in
    // vectors, says so. The cell itself and placed cells never lose a digit here.
    DigitMask struck = 0;
    for (std::size_t x = 0; x < g.cand.size(); ++x) {
      struck |= static_cast<DigitMask>(g.cand[x] & ~((*ga)[x] | (*gb)[x]));
    }
    if (struck == 0) continue;
    std::vector<std::pair<int, DigitMask>> removed;
    for (int x = 0; x < Cells(g); ++x) {
      if (x == c || g.placed[static_cast<std::size_t>(x)]) continue;
      const DigitMask either = (*ga)[static_cast<std::size_t>(x)] | (*gb)[static_cast<std::size_t>(x)];
      const DigitMask gone = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(x)] & ~either);
      if (gone != 0) removed.emplace_back(x, gone);
    }
    if (removed.empty()) continue;
    step = {"Forcing chain", kForcing, {c}, {}, removed, ""};
    const int x = removed[0].first;
    const DigitMask left = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(x)] & ~removed[0].second);
    step.cells.push_back(x);
    std::string result = Single(left) ? CellName(g.n, x) + " is " + std::to_string(DigitOf(left))
                                               : CellName(g.n, x) + " is not " + Digits(removed[0].second, "or");
    step.text = Capital(CellName(g.n, c)) + " is " + std::to_string(a) + " or " + std::to_string(b) +
                ". Following singles and signs from either digit, both lead to the same place: " + result +
                (removed.size() == 2   ? " (and one more cell loses candidates)"
                 : removed.size() > 2 ? " (and " + std::to_string(removed.size() - 1) + " more cells lose candidates)"
                                      : "") +
                ".";
    return true;
  }
  return false;
}

// ---- Rung 7: proof by contradiction ---------------------------------------------------

namespace {

// The ladder's rungs 1 to 5 applied until they stop, as a deeper test of an assumption.
bool PropagateDeep(Grid& g, Trail& trail, int budget, Memo& memo);
constexpr int kDeepBudget = 400;  // steps of rungs 1 to 5 within one assumption

// Tries c = d on a copy; on a contradiction fills the step that strikes d from c.
bool TestAssumption(const Grid& g, int c, int d, bool deep, Step& step, Memo& memo) {
  Grid trial = g;
  Trail trail;
  trial.cand[static_cast<std::size_t>(c)] = masks::Bit(d);
  const bool holds = deep ? PropagateDeep(trial, trail, kDeepBudget, memo) : Propagate(trial, trail);
  if (holds) return false;
  step = {"Contradiction", kContradiction, {c}, {}, {{c, masks::Bit(d)}}, ""};
  for (const auto& [cell, digit] : trail.placed) {
    if (cell != c && step.cells.size() < 8) step.cells.push_back(cell);
  }
  // The first entry of the trail is the assumption itself.
  const std::size_t skip = !trail.placed.empty() && trail.placed[0].first == c ? 1 : 0;
  step.text = "If " + CellName(g.n, c) + " were " + std::to_string(d) + ", then " + TrailText(g.n, trail, skip) +
              (trail.placed.size() > skip ? "and " : "") + trail.contradiction + ": so it is not " +
              std::to_string(d) + ".";
  return true;
}

// Every open cell and digit, cells with fewer candidates first (in cell order among
// equals): their assumptions break soonest. A bucket per count, as every contradiction
// pass asks for them.
class Assumptions {
 public:
  explicit Assumptions(const Grid& g) {
    std::array<int, kMaxGridSize + 2> start{};
    auto count = [&](int c) { return static_cast<std::size_t>(masks::Count(g.cand[static_cast<std::size_t>(c)])); };
    for (int c = 0; c < Cells(g); ++c) {
      if (!g.placed[static_cast<std::size_t>(c)]) ++start[count(c) + 1];
    }
    for (std::size_t k = 1; k < start.size(); ++k) start[k] += start[k - 1];
    std::array<int, kMaxCells> order{};
    for (int c = 0; c < Cells(g); ++c) {
      if (!g.placed[static_cast<std::size_t>(c)]) order[static_cast<std::size_t>(start[count(c)]++)] = c;
    }
    for (int i = 0; i < start.back(); ++i) {
      const int c = order[static_cast<std::size_t>(i)];
      masks::ForEachDigit(g.cand[static_cast<std::size_t>(c)], [&](int d) { items_[size_++] = {c, d}; });
    }
  }
  const std::pair<int, int>* begin() const { return items_.data(); }
  const std::pair<int, int>* end() const { return items_.data() + size_; }

 private:
  std::array<std::pair<int, int>, kMaxCells * kMaxGridSize> items_;
  std::size_t size_ = 0;
};

bool Contradiction(const Grid& g, Step& step, bool deep, Memo& memo) {
  memo.Look(g);
  const Cand* solution = memo.KnownSolution();
  bool struck = false;
  for (const auto& [c, d] : Assumptions(g)) {
    if (solution != nullptr && (*solution)[static_cast<std::size_t>(c)] == masks::Bit(d)) continue;
    const bool holds = deep ? memo.DeepHolds(g, c, d, kDeepBudget) : memo.Quick(c, d) != nullptr;
    if (holds) continue;
    if (!memo.Tells()) {
      // Inside an assumption only what is struck counts, and the sooner the grid breaks
      // the better: one step strikes every digit that leads to a contradiction.
      if (!struck) Begin(step, "Contradiction", kContradiction);
      struck = true;
      if (step.removed.empty() || step.removed.back().first != c) {
        step.cells.push_back(c);
        step.removed.emplace_back(c, DigitMask{0});
      }
      step.removed.back().second = static_cast<DigitMask>(step.removed.back().second | masks::Bit(d));
      continue;
    }
    // Followed again, with its trail, only to be told.
    if (TestAssumption(g, c, d, deep, step, memo)) return true;
  }
  return struck;
}

bool PropagateDeep(Grid& g, Trail& trail, int budget, Memo& memo) {
  for (int i = 0; i < budget; ++i) {
    if (!Propagate(g, trail)) return false;
    if (IsSolved(g)) return true;
    Step step;
    if (!EasyStep(g, step, memo, kWholeGrid)) return true;
    Apply(g, step);
    for (const auto& [cell, digit] : step.placed) trail.placed.emplace_back(cell, digit);
    if (IsBroken(g)) {
      trail.contradiction = "the grid would break (" + step.technique + ")";
      Propagate(g, trail);  // names the break when it can
      return false;
    }
  }
  return true;
}

}  // namespace

bool ContradictionQuick(const Grid& g, Step& step, Memo& memo) { return Contradiction(g, step, false, memo); }
bool ContradictionDeep(const Grid& g, Step& step, Memo& memo) { return Contradiction(g, step, true, memo); }

// ---- Rung 8: contradiction with the whole ladder inside the assumption ----------------

namespace {

// Steps of rungs 1 to 7 followed within one assumption, and within all the assumptions
// tried for one step: the rung gives up rather than take seconds.
constexpr int kNestedSteps = 200;
constexpr int kNestedBudget = 2000;

// Follows c = d with rungs 1 to 7 until the grid breaks (true, with the digits placed on
// the way and the break in trail), the ladder stops or the budget runs out.
bool BreaksUnderLadder(const Grid& g, int c, int d, bool deep, Memo& inner, int& budget, Trail& trail) {
  Grid trial = g;
  trial.cand[static_cast<std::size_t>(c)] = masks::Bit(d);
  for (int i = 0; i < kNestedSteps && budget > 0; ++i, --budget) {
    if (AllPlaced(trial)) return false;
    Step step;
    if (!StepBelowMaster(trial, step, inner, deep)) return false;
    Apply(trial, step);
    for (const auto& [cell, digit] : step.placed) trail.placed.emplace_back(cell, digit);
    if (BrokenWithin(trial, inner.Applied(step, trial), inner)) {
      // Singles and signs name the break: most often a cell with no digit left.
      Trail end;
      trail.contradiction = Propagate(trial, end) ? "the grid would break (" + step.technique + ")" : end.contradiction;
      return true;
    }
  }
  return false;
}

}  // namespace

bool NestedContradiction(const Grid& g, Step& step, Memo& memo) {
  memo.Look(g);
  // On a grid with several solutions no assumption can be refuted everywhere it matters,
  // and the rung would spend its whole effort for nothing: an empty 9x9 took seconds.
  if (memo.Solutions(g) > 1) return false;
  const Cand* solution = memo.KnownSolution();
  const Assumptions assumptions(g);
  // First with rungs 1 to 5 and the quick contradiction inside: inside a false assumption
  // those most often suffice, and the forcing chain and the deep contradiction cost the
  // most. Then with every rung. Each time those that did not break on the grid before
  // come last: on this one, narrowed by a single digit, most still do not.
  for (const bool deep : {false, true}) {
    int budget = kNestedBudget;
    for (const bool stalledBefore : {false, true}) {
      for (const auto& [c, d] : assumptions) {
        if (budget <= 0) break;
        if (solution != nullptr && (*solution)[static_cast<std::size_t>(c)] == masks::Bit(d)) continue;
        if (memo.Stalled(c, d, deep) != stalledBefore) continue;
        Trail trail;
        if (!BreaksUnderLadder(g, c, d, deep, memo.Nested(), budget, trail)) {
          memo.Stall(c, d, deep);
          continue;
        }
        step = {"Nested contradiction", kMaster, {c}, {}, {{c, masks::Bit(d)}}, ""};
        for (const auto& [cell, digit] : trail.placed) {
          if (cell != c && step.cells.size() < 8) step.cells.push_back(cell);
        }
        const std::size_t skip = !trail.placed.empty() && trail.placed[0].first == c ? 1 : 0;
        step.text = "If " + CellName(g.n, c) + " were " + std::to_string(d) +
                    ", then, with every rung up to contradictions followed inside that assumption, " +
                    TrailText(g.n, trail, skip) + (trail.placed.size() > skip ? "and " : "") + trail.contradiction +
                    ": so it is not " + std::to_string(d) + ".";
        return true;
      }
    }
  }
  return false;
}

}  // namespace qm::reasoning::internal
