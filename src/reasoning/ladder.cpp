#include "reasoning/ladder.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <memory>
#include <tuple>
#include <string_view>

#include "solver/grid_masks.h"
#include "solver/solution_search.h"

namespace qm::reasoning {

namespace {

constexpr const char* kRungNames[] = {"Solved", "Gentle", "Easy",   "Moderate",    "Tough",
                                      "Hard",   "Fiendish", "Expert", "Needs search"};
constexpr double kRungWeights[] = {0, 1, 2, 3, 5, 8, 13, 21, 34};

using Line = std::array<int, kMaxGridSize>;

// Rows 0..n-1, then columns.
Line LineCells(int n, int l) {
  Line cells{};
  for (int i = 0; i < n; ++i) cells[static_cast<std::size_t>(i)] = l < n ? l * n + i : i * n + (l - n);
  return cells;
}

std::string LineName(int n, int l) {
  return (l < n ? "row " : "column ") + std::to_string((l < n ? l : l - n) + 1);
}

// The cell named by its place across the line: "column 3" within a row.
std::string CrossName(int n, int l, int cell) {
  return l < n ? "column " + std::to_string(cell % n + 1) : "row " + std::to_string(cell / n + 1);
}

std::string Capital(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}

// "4", "4 and 7", "1, 4 and 7".
std::string List(const std::vector<std::string>& items) {
  std::string out;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) out += i + 1 == items.size() ? " and " : ", ";
    out += items[i];
  }
  return out;
}

// "4 and 7", or with `word` "or": "4 or 7".
std::string Digits(DigitMask m, const char* word = "and") {
  std::vector<std::string> items;
  masks::ForEachDigit(m, [&](int d) { items.push_back(std::to_string(d)); });
  std::string out = List(items);
  if (std::string(word) != "and" && items.size() > 1) {
    const auto last = out.rfind(" and ");
    out.replace(last, 5, std::string(" ") + word + " ");
  }
  return out;
}

int DigitOf(DigitMask m) { return masks::Lowest(m); }

// One digit left; masks::IsSingle counts bits, a library call on plain x86-64.
constexpr bool Single(DigitMask m) { return m != 0 && (m & (m - 1)) == 0; }

int Cells(const Grid& g) { return g.n * g.n; }

// The part of a grid a rung of 1 to 5 looks at. Each finds its steps line by line, cell
// by cell, sign by sign or digit by digit, so on a grid where it found nothing it can
// find something only where cells have changed since: only there does it look again.
struct Scope {
  std::array<std::uint64_t, 2> cells{~std::uint64_t{0}, ~std::uint64_t{0}};
  std::uint32_t lines = ~0u;
  DigitMask digits = static_cast<DigitMask>(~0u);

  // Where g differs from a grid on which rungs 1 to 5 found nothing.
  static Scope Changed(const Grid& g, const Grid& quiet) {
    Scope scope{{}, 0, 0};
    const int n = g.n;
    for (int r = 0, c = 0; r < n; ++r) {
      for (int k = 0; k < n; ++k, ++c) {
        const auto ci = static_cast<std::size_t>(c);
        if (g.cand[ci] == quiet.cand[ci] && g.placed[ci] == quiet.placed[ci]) continue;
        scope.cells[ci >> 6] |= std::uint64_t{1} << (ci & 63);
        scope.lines |= 1u << r | 1u << (n + k);
        scope.digits |= quiet.cand[ci] | g.cand[ci];
      }
    }
    return scope;
  }
  // Adds a cell that lost or placed the digits.
  void Add(int n, int c, DigitMask changed) {
    cells[static_cast<std::size_t>(c >> 6)] |= std::uint64_t{1} << (c & 63);
    lines |= 1u << (c / n) | 1u << (n + c % n);
    digits |= changed;
  }
  void Add(const Scope& other) {
    cells[0] |= other.cells[0];
    cells[1] |= other.cells[1];
    lines |= other.lines;
    digits |= other.digits;
  }
  bool Cell(int c) const { return (cells[static_cast<std::size_t>(c >> 6)] >> (c & 63) & 1u) != 0; }
  // Calls f(c) for the cells below `count` in the scope, in order, until f says stop.
  template <class F>
  bool AnyCell(int count, F&& f) const {
    for (std::size_t w = 0; w < cells.size(); ++w) {
      for (std::uint64_t bits = cells[w]; bits != 0; bits &= bits - 1) {
        const int c = static_cast<int>(w * 64) + std::countr_zero(bits);
        if (c >= count) return false;
        if (f(c)) return true;
      }
    }
    return false;
  }
  bool Line(int l) const { return (lines >> l & 1u) != 0; }
  bool Digit(int d) const { return (digits & masks::Bit(d)) != 0; }
  bool Touches(const Sign& s) const { return Cell(s.greater) || Cell(s.smaller); }
  bool Empty() const { return lines == 0; }
};
constexpr Scope kWholeGrid{};
constexpr Scope kNothing{{}, 0, 0};

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

// ---- Rung 1: singles --------------------------------------------------------------

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
  for (int l = 0; l < 2 * n; ++l) {
    if (!scope.Line(l)) continue;
    const Line cells = LineCells(n, l);
    DigitMask seen = 0;
    DigitMask twice = 0;
    DigitMask placed = 0;
    for (int i = 0; i < n; ++i) {
      const auto c = static_cast<std::size_t>(cells[static_cast<std::size_t>(i)]);
      twice |= seen & g.cand[c];
      seen |= g.cand[c];
      if (g.placed[c]) placed |= g.cand[c];
    }
    const DigitMask single = static_cast<DigitMask>(seen & ~twice & ~placed);
    if (single == 0) continue;
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
  }
  return false;
}

// ---- Rung 2: a sign beside a placed digit ------------------------------------------

std::string Where(int n, int from, int to) {
  if (to == from - 1) return "to its left";
  if (to == from + 1) return "to its right";
  if (to == from - n) return "above it";
  if (to == from + n) return "below it";
  return "beside it";
}

bool SignBesideDigit(const Grid& g, Step& step, const Scope& scope) {
  for (const Sign& s : g.SignList()) {
    if (!scope.Touches(s)) continue;
    const auto gi = static_cast<std::size_t>(s.greater);
    const auto si = static_cast<std::size_t>(s.smaller);
    if (g.placed[si] && !g.placed[gi]) {
      const int d = DigitOf(g.cand[si]);
      const DigitMask gone = static_cast<DigitMask>(g.cand[gi] & ~masks::Above(d));
      if (gone == 0) continue;
      step = {"Sign beside a digit", kSignDigit, {s.greater, s.smaller}, {}, {{s.greater, gone}}, ""};
      step.text = Capital(CellName(g.n, s.greater)) + " must be greater than the " + std::to_string(d) + " " +
                  Where(g.n, s.greater, s.smaller) + ": it cannot be " + Digits(gone, "or") + ".";
      return true;
    }
    if (g.placed[gi] && !g.placed[si]) {
      const int d = DigitOf(g.cand[gi]);
      const DigitMask gone = static_cast<DigitMask>(g.cand[si] & ~masks::Below(d));
      if (gone == 0) continue;
      step = {"Sign beside a digit", kSignDigit, {s.smaller, s.greater}, {}, {{s.smaller, gone}}, ""};
      step.text = Capital(CellName(g.n, s.smaller)) + " must be less than the " + std::to_string(d) + " " +
                  Where(g.n, s.smaller, s.greater) + ": it cannot be " + Digits(gone, "or") + ".";
      return true;
    }
  }
  return false;
}

// ---- Rung 3: chains of signs, and signs between open cells ---------------------------

// The longest chain of cells each below the one before, from every cell: the top of a
// chain of k cells is at least k. `down` follows signs to smaller cells, else to greater.
struct Chains {
  std::array<int, kMaxCells> length{};  // cells in the longest chain starting here
  std::array<int, kMaxCells> next{};    // the chain's next cell, or -1
};

Chains LongestChains(const Grid& g, bool down) {
  Chains chains;
  chains.length.fill(1);
  chains.next.fill(-1);
  // Relaxation; a cycle of signs (no solution) stops at the bound instead of looping.
  for (int round = 0; round < Cells(g); ++round) {
    bool changed = false;
    for (const Sign& s : g.SignList()) {
      const int from = down ? s.greater : s.smaller;
      const int to = down ? s.smaller : s.greater;
      const int via = chains.length[static_cast<std::size_t>(to)] + 1;
      if (via > chains.length[static_cast<std::size_t>(from)] && via <= g.n + 1) {
        chains.length[static_cast<std::size_t>(from)] = via;
        chains.next[static_cast<std::size_t>(from)] = to;
        changed = true;
      }
    }
    if (!changed) break;
  }
  return chains;
}

class Memo;
// Rungs 1 to 5 are the first techniques of the ladder.
constexpr std::size_t kBelowChains = 13;
// The grid's longest chains, worked out once for all its steps: signs never change.
const Chains& ChainsOf(Memo& memo, const Grid& g, bool down);

bool SignChain(const Grid& g, Step& step, Memo& memo, const Scope& scope) {
  for (const bool down : {true, false}) {
    const Chains& chains = ChainsOf(memo, g, down);
    const bool found = scope.AnyCell(Cells(g), [&](int c) {
      const int k = chains.length[static_cast<std::size_t>(c)];
      if (g.placed[static_cast<std::size_t>(c)] || k < 3) return false;
      const DigitMask allowed = down ? masks::Range(k, g.n) : masks::Range(1, g.n - k + 1);
      const DigitMask gone = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(c)] & ~allowed);
      if (gone == 0) return false;
      step = {"Sign chain", kSignBounds, {}, {}, {{c, gone}}, ""};
      std::vector<std::string> names;
      for (int at = c; at >= 0 && static_cast<int>(names.size()) < k; at = chains.next[static_cast<std::size_t>(at)]) {
        step.cells.push_back(at);
        names.push_back(CellName(g.n, at));
      }
      std::string chain;
      for (std::size_t i = 0; i < names.size(); ++i) chain += (i == 0 ? "" : down ? " > " : " < ") + names[i];
      step.text = Capital(CellName(g.n, c)) + " is the " + (down ? "top" : "bottom") + " of a chain of " +
                  std::to_string(k) + " cells (" + chain + "), so it is at " + (down ? "least " : "most ") +
                  std::to_string(down ? k : g.n - k + 1) + ": it cannot be " + Digits(gone, "or") + ".";
      return true;
    });
    if (found) return true;
  }
  return false;
}

bool SignBounds(const Grid& g, Step& step, const Scope& scope) {
  for (const Sign& s : g.SignList()) {
    if (!scope.Touches(s)) continue;
    const auto gi = static_cast<std::size_t>(s.greater);
    const auto si = static_cast<std::size_t>(s.smaller);
    if (g.placed[gi] || g.placed[si] || g.cand[gi] == 0 || g.cand[si] == 0) continue;
    const int lowest = masks::Lowest(g.cand[si]);
    const int highest = masks::Highest(g.cand[gi]);
    const DigitMask goneG = static_cast<DigitMask>(g.cand[gi] & ~masks::Above(lowest));
    const DigitMask goneS = static_cast<DigitMask>(g.cand[si] & ~masks::Below(highest));
    if (goneG == 0 && goneS == 0) continue;
    step = {"Sign bounds", kSignBounds, {s.greater, s.smaller}, {}, {}, ""};
    std::vector<std::string> parts;
    if (goneG != 0) {
      step.removed.emplace_back(s.greater, goneG);
      parts.push_back(CellName(g.n, s.greater) + " is greater than " + CellName(g.n, s.smaller) +
                      ", which is at least " + std::to_string(lowest) + ", so it cannot be " + Digits(goneG, "or"));
    }
    if (goneS != 0) {
      step.removed.emplace_back(s.smaller, goneS);
      parts.push_back(CellName(g.n, s.smaller) + " is less than " + CellName(g.n, s.greater) + ", which is at most " +
                      std::to_string(highest) + ", so it cannot be " + Digits(goneS, "or"));
    }
    step.text = Capital(parts[0]) + (parts.size() > 1 ? "; " + parts[1] : "") + ".";
    return true;
  }
  return false;
}

// ---- Rung 4: naked and hidden subsets -----------------------------------------------

// Bits set in a mask of at most 18 bits; a table, as masks::Count, not a library call.
constexpr int Ones(unsigned v) { return masks::kCountTable.count[v & 511u] + masks::kCountTable.count[(v >> 9) & 511u]; }

// Calls f(set, union) for every set of k of the items (a bit mask of their indices) whose
// items together have at most k bits, in increasing order of the set as a number, until
// f says stop. A set whose first items already have too many bits is not completed.
template <class F>
bool ForEachSmallUnion(const unsigned* items, int count, int k, F&& f) {
  // The highest index is chosen first, each next one below it, each in increasing order:
  // that is the order of the sets as numbers.
  auto pick = [&](auto& self, int need, int below, unsigned set, unsigned together) -> bool {
    if (need == 0) return f(set, together);
    for (int t = need - 1; t < below; ++t) {
      const unsigned with = together | items[t];
      if (Ones(with) > k) continue;
      if (self(self, need - 1, t, set | 1u << t, with)) return true;
    }
    return false;
  };
  return k > 0 && k <= count && pick(pick, k, count, 0u, 0u);
}

constexpr const char* kSubsetNames[] = {"", "", "pair", "triple", "quad"};

// Where each digit may go in each line (bit i: the line's i-th cell), and the digits
// placed in each line: one pass over the cells instead of one per digit and line.
struct Places {
  std::array<std::array<unsigned, kMaxGridSize + 1>, 2 * kMaxGridSize> at{};
  std::array<DigitMask, 2 * kMaxGridSize> placed{};
  std::array<int, 2 * kMaxGridSize> open{};  // cells not placed
};

Places PlacesOf(const Grid& g) {
  const int n = g.n;
  Places p;
  for (int r = 0, c = 0; r < n; ++r) {
    for (int k = 0; k < n; ++k, ++c) {
      const auto row = static_cast<std::size_t>(r);
      const auto column = static_cast<std::size_t>(n + k);
      const DigitMask m = g.cand[static_cast<std::size_t>(c)];
      masks::ForEachDigit(m, [&](int d) {
        p.at[row][static_cast<std::size_t>(d)] |= 1u << k;
        p.at[column][static_cast<std::size_t>(d)] |= 1u << r;
      });
      if (g.placed[static_cast<std::size_t>(c)]) {
        p.placed[row] |= m;
        p.placed[column] |= m;
      } else {
        ++p.open[row];
        ++p.open[column];
      }
    }
  }
  return p;
}

bool NakedSubset(const Grid& g, int k, Step& step, const Scope& scope) {
  const int n = g.n;
  for (int l = 0; l < 2 * n; ++l) {
    if (!scope.Line(l)) continue;
    const Line line = LineCells(n, l);
    std::array<int, kMaxGridSize> open{};
    std::array<unsigned, kMaxGridSize> cand{};
    int count = 0;
    for (int i = 0; i < n; ++i) {
      const int c = line[static_cast<std::size_t>(i)];
      if (g.placed[static_cast<std::size_t>(c)]) continue;
      open[static_cast<std::size_t>(count)] = c;
      cand[static_cast<std::size_t>(count++)] = g.cand[static_cast<std::size_t>(c)];
    }
    const bool found = ForEachSmallUnion(cand.data(), count, k, [&](unsigned set, unsigned together) {
      if (Ones(together) != k) return false;
      const auto digits = static_cast<DigitMask>(together);
      bool strikes = false;
      for (int i = 0; i < count && !strikes; ++i) {
        strikes = (set >> i & 1u) == 0 && (cand[static_cast<std::size_t>(i)] & digits) != 0;
      }
      if (!strikes) return false;
      std::vector<int> members;
      std::vector<std::pair<int, DigitMask>> removed;
      for (int i = 0; i < count; ++i) {
        const int c = open[static_cast<std::size_t>(i)];
        if ((set >> i & 1u) != 0) {
          members.push_back(c);
        } else if ((g.cand[static_cast<std::size_t>(c)] & digits) != 0) {
          removed.emplace_back(c, static_cast<DigitMask>(g.cand[static_cast<std::size_t>(c)] & digits));
        }
      }
      step = {std::string("Naked ") + kSubsetNames[k], kSubsets, members, {}, removed, ""};
      std::vector<std::string> where;
      for (int c : members) where.push_back(std::to_string((l < n ? c % n : c / n) + 1));
      step.text = "In " + LineName(n, l) + ", " + (l < n ? "columns " : "rows ") + List(where) +
                  " can only hold " + Digits(digits) + " between them: no other cell of " + LineName(n, l) +
                  " can hold " + (k == 2 ? "either" : "any of them") + ".";
      return true;
    });
    if (found) return true;
  }
  return false;
}

bool HiddenSubset(const Grid& g, int k, Step& step, const Scope& scope) {
  const int n = g.n;
  if (scope.Empty()) return false;
  const Places where = PlacesOf(g);
  for (int l = 0; l < 2 * n; ++l) {
    if (!scope.Line(l)) continue;
    const Line line = LineCells(n, l);
    const auto li = static_cast<std::size_t>(l);
    const DigitMask placedDigits = where.placed[li];
    if (where.open[li] <= k) continue;
    // Where each open digit may go: never a placed cell, which holds a placed digit.
    std::array<int, kMaxGridSize> digits{};
    std::array<unsigned, kMaxGridSize> spots{};
    int digitCount = 0;
    for (int d = 1; d <= n; ++d) {
      if ((placedDigits & masks::Bit(d)) != 0) continue;
      digits[static_cast<std::size_t>(digitCount)] = d;
      spots[static_cast<std::size_t>(digitCount++)] = where.at[li][static_cast<std::size_t>(d)];
    }
    const bool found = ForEachSmallUnion(spots.data(), digitCount, k, [&](unsigned set, unsigned cover) {
      if (Ones(cover) != k) return false;
      DigitMask chosen = 0;
      for (int i = 0; i < digitCount; ++i) {
        if ((set >> i & 1u) != 0) chosen |= masks::Bit(digits[static_cast<std::size_t>(i)]);
      }
      bool strikes = false;
      for (int j = 0; j < n && !strikes; ++j) {
        strikes = (cover >> j & 1u) != 0 && (g.cand[static_cast<std::size_t>(line[static_cast<std::size_t>(j)])] & ~chosen) != 0;
      }
      if (!strikes) return false;
      std::vector<int> places;
      std::vector<std::pair<int, DigitMask>> removed;
      for (int j = 0; j < n; ++j) {
        if ((cover >> j & 1u) == 0) continue;
        const int c = line[static_cast<std::size_t>(j)];
        places.push_back(c);
        const DigitMask gone = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(c)] & ~chosen);
        if (gone != 0) removed.emplace_back(c, gone);
      }
      step = {std::string("Hidden ") + kSubsetNames[k], kSubsets, places, {}, removed, ""};
      std::vector<std::string> names;
      for (int c : places) names.push_back(std::to_string((l < n ? c % n : c / n) + 1));
      step.text = "In " + LineName(n, l) + ", " + Digits(chosen) + " fit only in " + (l < n ? "columns " : "rows ") +
                  List(names) + ": those cells hold nothing else.";
      return true;
    });
    if (found) return true;
  }
  return false;
}

// ---- Rung 5: one digit across rows or columns -----------------------------------------

bool Fish(const Grid& g, int k, Step& step, const Scope& scope) {
  const int n = g.n;
  if (scope.Empty()) return false;
  const Places where = PlacesOf(g);
  for (int d = 1; d <= n; ++d) {
    if (!scope.Digit(d)) continue;
    for (const bool byRows : {true, false}) {
      // For each base line (rows, or columns), the cross positions where d may go.
      std::array<int, kMaxGridSize> bases{};
      std::array<unsigned, kMaxGridSize> spots{};
      int count = 0;
      for (int b = 0; b < n; ++b) {
        const auto l = static_cast<std::size_t>(byRows ? b : n + b);
        const unsigned spot = where.at[l][static_cast<std::size_t>(d)];
        const bool placed = (where.placed[l] & masks::Bit(d)) != 0;
        const int places = Ones(spot);
        if (!placed && places >= 2 && places <= k) {
          bases[static_cast<std::size_t>(count)] = b;
          spots[static_cast<std::size_t>(count++)] = spot;
        }
      }
      const bool found = ForEachSmallUnion(spots.data(), count, k, [&](unsigned set, unsigned cover) {
        if (Ones(cover) != k) return false;
        unsigned chosen = 0;  // the base lines, as bits
        for (int i = 0; i < count; ++i) {
          if ((set >> i & 1u) != 0) chosen |= 1u << bases[static_cast<std::size_t>(i)];
        }
        std::vector<std::pair<int, DigitMask>> removed;
        std::vector<int> cells;
        for (int i = 0; i < n; ++i) {
          if ((cover >> i & 1u) == 0) continue;
          for (int b = 0; b < n; ++b) {
            const int c = byRows ? b * n + i : i * n + b;
            if ((g.cand[static_cast<std::size_t>(c)] & masks::Bit(d)) == 0) continue;
            if ((chosen >> b & 1u) != 0) {
              cells.push_back(c);
            } else if (!g.placed[static_cast<std::size_t>(c)]) {
              removed.emplace_back(c, masks::Bit(d));
            }
          }
        }
        if (removed.empty()) return false;
        step = {k == 2 ? "X-wing" : "Swordfish", kFish, cells, {}, removed, ""};
        std::vector<std::string> baseNames;
        std::vector<std::string> coverNames;
        for (int b = 0; b < n; ++b) {
          if ((chosen >> b & 1u) != 0) baseNames.push_back(std::to_string(b + 1));
        }
        for (int i = 0; i < n; ++i) {
          if ((cover >> i & 1u) != 0) coverNames.push_back(std::to_string(i + 1));
        }
        const std::string base = byRows ? "rows " : "columns ";
        const std::string across = byRows ? "columns " : "rows ";
        step.text = "In " + base + List(baseNames) + ", " + std::to_string(d) + " fits only in " + across +
                    List(coverNames) + ": each of those " + (byRows ? "columns" : "rows") + " gets its " +
                    std::to_string(d) + " there, so " + std::to_string(d) + " leaves the rest of " + across +
                    List(coverNames) + ".";
        return true;
      });
      if (found) return true;
    }
  }
  return false;
}

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
      // One pass: the digits seen, seen twice, and placed (twice is a contradiction).
      DigitMask seen = 0;
      DigitMask twice = 0;
      DigitMask placed = 0;
      DigitMask placedTwice = 0;
      for (int i = 0; i < n; ++i) {
        const auto c = static_cast<std::size_t>(cells[static_cast<std::size_t>(i)]);
        twice |= seen & g.cand[c];
        seen |= g.cand[c];
        if (g.placed[c]) {
          placedTwice |= placed & g.cand[c];
          placed |= g.cand[c];
        }
      }
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

using Cand = std::array<DigitMask, kMaxCells>;
using Placed = std::array<bool, kMaxCells>;

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

// Returns false when the grid breaks.
bool Settle(const Topology& t, Cand& cand, Placed& placed, Pending& todo) {
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
      DigitMask seen = 0;
      DigitMask twice = 0;
      DigitMask fixed = 0;
      for (int i = 0; i < n; ++i) {
        const auto c = static_cast<std::size_t>(cells[static_cast<std::size_t>(i)]);
        twice |= seen & cand[c];
        seen |= cand[c];
        if (placed[c]) {
          if ((fixed & cand[c]) != 0) return false;
          fixed |= cand[c];
        }
      }
      if (seen != full) return false;
      const DigitMask single = static_cast<DigitMask>(seen & ~twice & ~fixed);
      if (single == 0) continue;
      for (int i = 0; i < n; ++i) {
        const auto c = static_cast<std::size_t>(cells[static_cast<std::size_t>(i)]);
        const DigitMask here = cand[c] & single;
        if (here == 0 || placed[c]) continue;
        if (!Single(here)) return false;
        narrow(c, here);
      }
      continue;
    }
    const auto xi = static_cast<std::size_t>(x);
    const DigitMask m = cand[xi];
    if (m == 0) return false;
    if (!placed[xi] && Single(m)) {
      placed[xi] = true;
      for (int i = 0; i < 2 * (n - 1); ++i) {
        const std::size_t p = t.peers[xi][static_cast<std::size_t>(i)];
        if (placed[p] || (cand[p] & m) == 0) continue;
        narrow(p, static_cast<DigitMask>(cand[p] & ~m));
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

// The first step of rungs 1 to 5 within the scope; defined with the ladder below.
bool EasyStep(const Grid& g, Step& step, Memo& memo, const Scope& scope);

// What the ladder remembers while it explains one grid, whose candidates only ever
// shrink: where each assumption led. The rules only strike, so an assumption that broke
// the grid breaks it again, and one that held leads, on a smaller grid, to a state
// within where it led before: that end state, narrowed to the grid and settled from the
// cells that lost candidates, is the new one. Only what changed is followed again.
class Memo {
 public:
  // Starts a search for a step on g: settles g's own candidates.
  void Look(const Grid& g) {
    if (!topology_ || topology_->n != g.n) {
      topology_ = std::make_unique<Topology>(g);
      entries_.assign(static_cast<std::size_t>(g.n * g.n * (kMaxGridSize + 1)), Entry{});
      seen_ = false;
    }
    if (seen_ && g.cand == last_ && g.placed == lastPlaced_) return;
    cells_ = g.n * g.n;
    for (std::size_t c = 0; seen_ && c < static_cast<std::size_t>(cells_); ++c) {
      // A grid that is not within the last one: what was remembered may not hold.
      if ((g.cand[c] & ~last_[c]) != 0) {
        std::fill(entries_.begin(), entries_.end(), Entry{});
        break;
      }
    }
    last_ = g.cand;
    lastPlaced_ = g.placed;
    seen_ = true;
    base_ = g.cand;
    basePlaced_ = g.placed;
    Pending todo;
    todo.All(g.n);
    baseHolds_ = Settle(*topology_, base_, basePlaced_, todo);
    quiet_ = Unknown;
  }

  // Where c = d leads by singles and signs, or nullptr when it breaks the grid.
  const Cand* Quick(int c, int d) {
    if (!baseHolds_ || (base_[static_cast<std::size_t>(c)] & masks::Bit(d)) == 0) return nullptr;
    Entry& e = At(c, d);
    if (!e.quickKnown) {
      e.quick = base_;
      e.quick[static_cast<std::size_t>(c)] = masks::Bit(d);
      Placed placed = basePlaced_;
      Pending todo;
      todo.Cell(c);
      e.quickHolds = Settle(*topology_, e.quick, placed, todo);
      e.quickKnown = true;
    } else if (e.quickHolds) {
      e.quickHolds = Renew(e.quick).holds;
    }
    return e.quickHolds ? &e.quick : nullptr;
  }

  // Whether c = d survives rungs 1 to 5 applied in turn, as PropagateDeep does.
  bool DeepHolds(const Grid& g, int c, int d, int budget) {
    const Cand* quick = Quick(c, d);
    if (quick == nullptr) return false;
    Entry& e = At(c, d);
    // A grid the trial lies within on which rungs 1 to 5 found nothing: where it ended
    // before, or g itself. The rungs look again only where the trial differs from it.
    Grid quiet = g;
    bool scoped = true;
    if (e.deepKnown) {
      if (!e.deepHolds) return false;
      SetCand(quiet, e.deep);
      const Renewed renewed = Renew(e.deep);
      if (!renewed.holds || !renewed.changed) return e.deepHolds = renewed.holds;
    } else {
      e.deep = *quick;
      scoped = Quiet(g);
    }
    Grid trial = g;
    SetCand(trial, e.deep);
    e.deepKnown = true;
    e.deepHolds = false;
    for (int i = 0; i < budget; ++i) {
      Step step;
      if (IsSolved(trial) || !EasyStep(trial, step, *this, scoped ? Scope::Changed(trial, quiet) : kWholeGrid)) {
        e.deep = trial.cand;
        return e.deepHolds = true;
      }
      Apply(trial, step);
      if (IsBroken(trial)) return false;
      Pending todo;
      for (const auto& [cell, digits] : step.removed) todo.Cell(cell);
      for (const auto& [cell, digit] : step.placed) {
        // Settle places it again, to clear its lines.
        trial.placed[static_cast<std::size_t>(cell)] = false;
        todo.Cell(cell);
      }
      if (!Settle(*topology_, trial.cand, trial.placed, todo)) return false;
    }
    e.deepKnown = false;  // out of steps: held, but not to a known end
    return true;
  }

  // Where rung t of 1 to 5 must look on the grid: everywhere, or, when the grid is the
  // one the last step left, only where steps changed it since the rung found nothing.
  const Scope& Since(const Grid& g, std::size_t t) {
    if (t == 0 && (!following_ || g.cand != after_ || g.placed != afterPlaced_)) since_.fill(kWholeGrid);
    following_ = false;
    return since_[t];
  }
  void FoundNothing(std::size_t t) { since_[t] = kNothing; }
  // The step was applied, giving `after`; returns where it changed the grid.
  Scope Applied(const Step& step, const Grid& after) {
    Scope changed = kNothing;
    for (const auto& [cell, digits] : step.removed) changed.Add(after.n, cell, digits);
    for (const auto& [cell, digit] : step.placed) changed.Add(after.n, cell, masks::Bit(digit));
    for (Scope& scope : since_) scope.Add(changed);
    after_ = after.cand;
    afterPlaced_ = after.placed;
    following_ = true;
    return changed;
  }

  const Chains& ChainsFor(const Grid& g, bool down) {
    if (!chains_) chains_ = std::make_unique<std::array<Chains, 2>>(std::array{LongestChains(g, true), LongestChains(g, false)});
    return (*chains_)[down ? 0 : 1];
  }

 private:
  struct Entry {
    bool quickKnown = false;
    bool quickHolds = false;
    bool deepKnown = false;
    bool deepHolds = false;
    Cand quick;
    Cand deep;
  };
  struct Renewed {
    bool holds;
    bool changed;
  };

  Entry& At(int c, int d) { return entries_[static_cast<std::size_t>(c * (kMaxGridSize + 1) + d)]; }

  // A settled state as a grid: its single cells are placed.
  void SetCand(Grid& grid, const Cand& cand) const {
    grid.cand = cand;
    for (std::size_t x = 0; x < static_cast<std::size_t>(cells_); ++x) grid.placed[x] = Single(cand[x]);
  }

  // Whether rungs 1 to 5 find nothing on the grid last looked at, g.
  bool Quiet(const Grid& g) {
    if (quiet_ == Unknown) {
      Step step;
      quiet_ = EasyStep(g, step, *this, kWholeGrid) ? No : Yes;
    }
    return quiet_ == Yes;
  }

  Renewed Renew(Cand& end) const {
    Pending todo;
    Placed placed{};
    bool changed = false;
    for (std::size_t x = 0; x < static_cast<std::size_t>(cells_); ++x) {
      placed[x] = Single(end[x]);
      const DigitMask within = end[x] & base_[x];
      if (within == end[x]) continue;
      end[x] = within;
      todo.Cell(static_cast<int>(x));
      changed = true;
    }
    return {!changed || Settle(*topology_, end, placed, todo), changed};
  }

  std::unique_ptr<Topology> topology_;
  std::unique_ptr<std::array<Chains, 2>> chains_;  // down, up
  std::vector<Entry> entries_;
  int cells_ = 0;
  bool seen_ = false;
  Cand last_{};
  Placed lastPlaced_{};
  Cand base_{};
  Placed basePlaced_{};
  bool baseHolds_ = false;
  enum { Unknown, Yes, No } quiet_ = Unknown;
  std::array<Scope, kBelowChains> since_{};
  bool following_ = false;  // the grid is after_ unless a step was taken without Applied
  Cand after_{};
  Placed afterPlaced_{};
};

const Chains& ChainsOf(Memo& memo, const Grid& g, bool down) { return memo.ChainsFor(g, down); }

bool AllPlaced(const Grid& g) {
  for (int c = 0; c < Cells(g); ++c) {
    if (!g.placed[static_cast<std::size_t>(c)]) return false;
  }
  return true;
}

// IsBroken on the lines and signs of the scope only.
bool BrokenWithin(const Grid& g, const Scope& scope) {
  const int n = g.n;
  for (int l = 0; l < 2 * n; ++l) {
    if (!scope.Line(l)) continue;
    const Line cells = LineCells(n, l);
    DigitMask seen = 0;
    DigitMask placed = 0;
    for (int i = 0; i < n; ++i) {
      const auto c = static_cast<std::size_t>(cells[static_cast<std::size_t>(i)]);
      if (g.cand[c] == 0) return true;
      if (g.placed[c]) {
        if ((placed & g.cand[c]) != 0) return true;
        placed |= g.cand[c];
      }
      seen |= g.cand[c];
    }
    if (seen != masks::Full(n)) return true;
  }
  for (const Sign& s : g.SignList()) {
    if (scope.Touches(s) && masks::Highest(g.cand[static_cast<std::size_t>(s.greater)]) <=
                                masks::Lowest(g.cand[static_cast<std::size_t>(s.smaller)])) {
      return true;
    }
  }
  return false;
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

// Every open cell and digit, cells with fewer candidates first: their assumptions break
// soonest.
std::vector<std::pair<int, int>> Assumptions(const Grid& g) {
  std::vector<int> order;
  for (int c = 0; c < Cells(g); ++c) {
    if (!g.placed[static_cast<std::size_t>(c)]) order.push_back(c);
  }
  std::stable_sort(order.begin(), order.end(), [&](int x, int y) {
    return masks::Count(g.cand[static_cast<std::size_t>(x)]) < masks::Count(g.cand[static_cast<std::size_t>(y)]);
  });
  std::vector<std::pair<int, int>> all;
  for (int c : order) {
    masks::ForEachDigit(g.cand[static_cast<std::size_t>(c)], [&](int d) { all.emplace_back(c, d); });
  }
  return all;
}

bool Contradiction(const Grid& g, Step& step, bool deep, Memo& memo) {
  memo.Look(g);
  for (const auto& [c, d] : Assumptions(g)) {
    const bool holds = deep ? memo.DeepHolds(g, c, d, kDeepBudget) : memo.Quick(c, d) != nullptr;
    // Followed again, with its trail, only to be told.
    if (!holds && TestAssumption(g, c, d, deep, step, memo)) return true;
  }
  return false;
}

bool ContradictionQuick(const Grid& g, Step& step, Memo& memo) { return Contradiction(g, step, false, memo); }
bool ContradictionDeep(const Grid& g, Step& step, Memo& memo) { return Contradiction(g, step, true, memo); }

bool NakedPair(const Grid& g, Step& s, const Scope& scope) { return NakedSubset(g, 2, s, scope); }
bool HiddenPair(const Grid& g, Step& s, const Scope& scope) { return HiddenSubset(g, 2, s, scope); }
bool NakedTriple(const Grid& g, Step& s, const Scope& scope) { return NakedSubset(g, 3, s, scope); }
bool HiddenTriple(const Grid& g, Step& s, const Scope& scope) { return HiddenSubset(g, 3, s, scope); }
bool NakedQuad(const Grid& g, Step& s, const Scope& scope) { return NakedSubset(g, 4, s, scope); }
bool HiddenQuad(const Grid& g, Step& s, const Scope& scope) { return HiddenSubset(g, 4, s, scope); }
bool XWing(const Grid& g, Step& s, const Scope& scope) { return Fish(g, 2, s, scope); }
bool Swordfish(const Grid& g, Step& s, const Scope& scope) { return Fish(g, 3, s, scope); }

using Technique = bool (*)(const Grid&, Step&, Memo&, const Scope&);

// Most of rungs 1 to 5 need nothing remembered.
template <bool (*Find)(const Grid&, Step&, const Scope&)>
bool Easy(const Grid& g, Step& step, Memo&, const Scope& scope) {
  return Find(g, step, scope);
}

// Rungs 6 and 7 look at the whole grid.
template <bool (*Find)(const Grid&, Step&, Memo&)>
bool Whole(const Grid& g, Step& step, Memo& memo, const Scope&) {
  return Find(g, step, memo);
}

struct NamedTechnique {
  std::string_view name;
  Technique find;
};

// The ladder, easiest first; NextStep takes the first that finds something.
constexpr NamedTechnique kLadder[] = {{"Naked single", Easy<NakedSingle>},
                                      {"Hidden single", Easy<HiddenSingle>},
                                      {"Sign beside a digit", Easy<SignBesideDigit>},
                                      {"Sign chain", SignChain},
                                      {"Sign bounds", Easy<SignBounds>},
                                      {"Naked pair", Easy<NakedPair>},
                                      {"Hidden pair", Easy<HiddenPair>},
                                      {"Naked triple", Easy<NakedTriple>},
                                      {"Hidden triple", Easy<HiddenTriple>},
                                      {"Naked quad", Easy<NakedQuad>},
                                      {"Hidden quad", Easy<HiddenQuad>},
                                      {"X-wing", Easy<XWing>},
                                      {"Swordfish", Easy<Swordfish>},
                                      {"Forcing chain", Whole<ForcingChain>},
                                      {"Contradiction", Whole<ContradictionQuick>},
                                      {"Deep contradiction", Whole<ContradictionDeep>}};
static_assert(kLadder[kBelowChains].name == "Forcing chain");

bool EasyStep(const Grid& g, Step& step, Memo& memo, const Scope& scope) {
  for (std::size_t t = 0; t < kBelowChains; ++t) {
    if (kLadder[t].find(g, step, memo, scope)) return true;
  }
  return false;
}

bool NextStep(const Grid& grid, Step& step, Memo& memo) {
  for (std::size_t t = 0; t < std::size(kLadder); ++t) {
    if (t >= kBelowChains) {
      if (kLadder[t].find(grid, step, memo, kWholeGrid)) return true;
      continue;
    }
    const Scope& scope = memo.Since(grid, t);
    if (!scope.Empty() && kLadder[t].find(grid, step, memo, scope)) return true;
    memo.FoundNothing(t);
  }
  return false;
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

std::string RungName(int rung) { return kRungNames[std::clamp(rung, 0, kTopRung)]; }
double RungWeight(int rung) { return kRungWeights[std::clamp(rung, 0, kTopRung)]; }

std::string CellName(int n, int cell) {
  return "row " + std::to_string(cell / n + 1) + ", column " + std::to_string(cell % n + 1);
}

Grid GridFromModel(const PuzzleModel& model) {
  Grid g;
  g.n = model.GridSize;
  const int n = g.n;
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      const std::string& text = model.PosText[CellPosition(model, i, j)];
      const auto c = static_cast<std::size_t>((i - 1) * n + (j - 1));
      g.cand[c] = CellMask(text, n);
      g.placed[c] = text.size() == 1 && text[0] >= '1' && text[0] - '0' <= n;
    }
  }
  // Placed digits leave their lines at once: nobody counts that as a step.
  for (int c = 0; c < n * n; ++c) {
    if (!g.placed[static_cast<std::size_t>(c)]) continue;
    for (int i = 0; i < n; ++i) {
      for (const int peer : {c / n * n + i, i * n + c % n}) {
        if (peer != c && !g.placed[static_cast<std::size_t>(peer)]) {
          g.cand[static_cast<std::size_t>(peer)] &= static_cast<DigitMask>(~g.cand[static_cast<std::size_t>(c)]);
        }
      }
    }
  }
  ForEachSign(model, [&](int greater, int smaller) { g.AddSign(greater, smaller); });
  return g;
}

void StoreGrid(const Grid& grid, PuzzleModel& model) {
  const int n = grid.n;
  for (int c = 0; c < n * n; ++c) {
    std::string text;
    masks::ForEachDigit(grid.cand[static_cast<std::size_t>(c)], [&](int d) { text += static_cast<char>('0' + d); });
    model.PosText[CellPosition(model, c / n + 1, c % n + 1)] = text;
  }
}

bool IsSolved(const Grid& grid) { return AllPlaced(grid) && !IsBroken(grid); }

bool IsBroken(const Grid& grid) {
  const int n = grid.n;
  // Rows and columns in one pass over the cells: the ladder asks after every step.
  std::array<DigitMask, 2 * kMaxGridSize> seen{};
  std::array<DigitMask, 2 * kMaxGridSize> placed{};
  for (int row = 0, c = 0; row < n; ++row) {
    for (int column = n; column < 2 * n; ++column, ++c) {
      const DigitMask m = grid.cand[static_cast<std::size_t>(c)];
      if (m == 0) return true;
      const auto r = static_cast<std::size_t>(row);
      const auto k = static_cast<std::size_t>(column);
      seen[r] |= m;
      seen[k] |= m;
      if (grid.placed[static_cast<std::size_t>(c)]) {
        if (((placed[r] | placed[k]) & m) != 0) return true;
        placed[r] |= m;
        placed[k] |= m;
      }
    }
  }
  for (int l = 0; l < 2 * n; ++l) {
    if (seen[static_cast<std::size_t>(l)] != masks::Full(n)) return true;
  }
  for (const Sign& s : grid.SignList()) {
    const auto gi = static_cast<std::size_t>(s.greater);
    const auto si = static_cast<std::size_t>(s.smaller);
    if (masks::Highest(grid.cand[gi]) <= masks::Lowest(grid.cand[si])) return true;
  }
  return false;
}

bool NextStep(const Grid& grid, Step& step) {
  Memo memo;
  return NextStep(grid, step, memo);
}

bool TryTechnique(const Grid& grid, std::string_view name, Step& step) {
  Memo memo;
  for (const NamedTechnique& technique : kLadder) {
    if (technique.name == name) return technique.find(grid, step, memo, kWholeGrid);
  }
  return false;
}

void Apply(Grid& grid, const Step& step) {
  for (const auto& [cell, digits] : step.removed) {
    grid.cand[static_cast<std::size_t>(cell)] &= static_cast<DigitMask>(~digits);
  }
  for (const auto& [cell, digit] : step.placed) {
    grid.cand[static_cast<std::size_t>(cell)] = masks::Bit(digit);
    grid.placed[static_cast<std::size_t>(cell)] = true;
  }
}

Explanation Explain(const Grid& start, const ExplainOptions& options) {
  Explanation out;
  Grid grid = start;
  Memo memo;
  bool broken = IsBroken(grid);
  while (!broken && !AllPlaced(grid) && static_cast<int>(out.steps.size()) < options.maxSteps) {
    if (options.cancel != nullptr && options.cancel->load(std::memory_order_relaxed)) {
      out.cancelled = true;
      break;
    }
    Step step;
    if (!NextStep(grid, step, memo)) break;
    Apply(grid, step);
    // A grid that held breaks only where the step changed it.
    broken = BrokenWithin(grid, memo.Applied(step, grid));
    out.grade.level = std::max(out.grade.level, step.level);
    out.grade.score += RungWeight(step.level);
    out.steps.push_back(std::move(step));
    if (options.keepGrids) out.after.push_back(grid);
  }
  out.broken = IsBroken(grid);
  out.solved = !out.broken && IsSolved(grid);
  out.needsSearch = !out.solved && !out.broken && !out.cancelled;
  if (out.needsSearch || out.broken) out.grade.level = kNeedsSearch;
  out.grade.needsSearch = out.needsSearch || out.broken;
  out.grade.name = RungName(out.grade.level);
  out.final = grid;
  return out;
}

Explanation ExplainModel(const PuzzleModel& model, const ExplainOptions& options) {
  Explanation out = Explain(GridFromModel(model), options);
  if (!out.needsSearch) return out;
  // The search takes over from where the ladder stopped.
  PuzzleModel rest = model;
  StoreGrid(out.final, rest);
  SearchOptions search;
  search.limit = 1;
  search.cancel = options.cancel;
  const SolutionCount found = CountSolutions(rest, search);
  if (found.count > 0) {
    for (int c = 0; c < out.final.n * out.final.n; ++c) {
      const int k = CellPosition(model, c / out.final.n + 1, c % out.final.n + 1);
      out.final.cand[static_cast<std::size_t>(c)] = masks::Bit(found.first[static_cast<std::size_t>(k)][0] - '0');
      out.final.placed[static_cast<std::size_t>(c)] = true;
    }
  }
  return out;
}

}  // namespace qm::reasoning
