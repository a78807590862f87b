#include "reasoning/ladder.h"

#include <algorithm>
#include <bit>
#include <functional>
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

int Cells(const Grid& g) { return g.n * g.n; }

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

bool NakedSingle(const Grid& g, Step& step) {
  for (int c = 0; c < Cells(g); ++c) {
    const DigitMask m = g.cand[static_cast<std::size_t>(c)];
    if (g.placed[static_cast<std::size_t>(c)] || !masks::IsSingle(m)) continue;
    const int d = DigitOf(m);
    step = {"Naked single", kSingles, {c}, {}, {}, ""};
    PlaceWithPeers(g, c, d, step);
    step.text = Capital(CellName(g.n, c)) + " can only be " + std::to_string(d) + ": place it, and " +
                std::to_string(d) + " leaves the rest of its row and column.";
    return true;
  }
  return false;
}

bool HiddenSingle(const Grid& g, Step& step) {
  const int n = g.n;
  for (int l = 0; l < 2 * n; ++l) {
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

bool SignBesideDigit(const Grid& g, Step& step) {
  for (const Sign& s : g.SignList()) {
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

bool SignChain(const Grid& g, Step& step) {
  for (const bool down : {true, false}) {
    const Chains chains = LongestChains(g, down);
    for (int c = 0; c < Cells(g); ++c) {
      const int k = chains.length[static_cast<std::size_t>(c)];
      if (g.placed[static_cast<std::size_t>(c)] || k < 3) continue;
      const DigitMask allowed = down ? masks::Range(k, g.n) : masks::Range(1, g.n - k + 1);
      const DigitMask gone = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(c)] & ~allowed);
      if (gone == 0) continue;
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
    }
  }
  return false;
}

bool SignBounds(const Grid& g, Step& step) {
  for (const Sign& s : g.SignList()) {
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

// Calls f with every set of k indices out of 0..count-1, as a bit mask in increasing
// order, until f says stop.
template <class F>
bool ForEachCombination(int count, int k, F&& f) {
  if (k > count || k <= 0) return false;
  const unsigned end = 1u << count;
  for (unsigned set = (1u << k) - 1u; set < end;) {
    if (f(set)) return true;
    // The next larger set with as many bits.
    const unsigned low = set & -set;
    const unsigned ripple = set + low;
    set = (((ripple ^ set) >> 2) / low) | ripple;
  }
  return false;
}

constexpr const char* kSubsetNames[] = {"", "", "pair", "triple", "quad"};

bool NakedSubset(const Grid& g, int k, Step& step) {
  const int n = g.n;
  for (int l = 0; l < 2 * n; ++l) {
    const Line line = LineCells(n, l);
    std::vector<int> open;
    for (int i = 0; i < n; ++i) {
      const int c = line[static_cast<std::size_t>(i)];
      if (!g.placed[static_cast<std::size_t>(c)]) open.push_back(c);
    }
    const bool found = ForEachCombination(static_cast<int>(open.size()), k, [&](unsigned set) {
      DigitMask digits = 0;
      for (std::size_t i = 0; i < open.size(); ++i) {
        if ((set >> i & 1u) != 0) digits |= g.cand[static_cast<std::size_t>(open[i])];
      }
      if (masks::Count(digits) != k) return false;
      std::vector<int> members;
      for (std::size_t i = 0; i < open.size(); ++i) {
        if ((set >> i & 1u) != 0) members.push_back(open[i]);
      }
      std::vector<std::pair<int, DigitMask>> removed;
      for (std::size_t i = 0; i < open.size(); ++i) {
        const DigitMask gone = g.cand[static_cast<std::size_t>(open[i])] & digits;
        if ((set >> i & 1u) == 0 && gone != 0) removed.emplace_back(open[i], gone);
      }
      if (removed.empty()) return false;
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

bool HiddenSubset(const Grid& g, int k, Step& step) {
  const int n = g.n;
  for (int l = 0; l < 2 * n; ++l) {
    const Line line = LineCells(n, l);
    std::vector<int> open;
    DigitMask placedDigits = 0;
    for (int i = 0; i < n; ++i) {
      const int c = line[static_cast<std::size_t>(i)];
      if (g.placed[static_cast<std::size_t>(c)]) {
        placedDigits |= g.cand[static_cast<std::size_t>(c)];
      } else {
        open.push_back(c);
      }
    }
    std::vector<int> digits;
    for (int d = 1; d <= n; ++d) {
      if ((placedDigits & masks::Bit(d)) == 0) digits.push_back(d);
    }
    if (static_cast<int>(open.size()) <= k) continue;
    // Where each open digit may go, as a mask over the open cells.
    std::vector<unsigned> spots(digits.size());
    for (std::size_t i = 0; i < digits.size(); ++i) {
      for (std::size_t j = 0; j < open.size(); ++j) {
        if ((g.cand[static_cast<std::size_t>(open[j])] & masks::Bit(digits[i])) != 0) spots[i] |= 1u << j;
      }
    }
    const bool found = ForEachCombination(static_cast<int>(digits.size()), k, [&](unsigned set) {
      unsigned cover = 0;
      DigitMask chosen = 0;
      for (std::size_t i = 0; i < digits.size(); ++i) {
        if ((set >> i & 1u) == 0) continue;
        cover |= spots[i];
        chosen |= masks::Bit(digits[i]);
      }
      if (std::popcount(cover) != k) return false;
      std::vector<int> places;
      for (std::size_t j = 0; j < open.size(); ++j) {
        if ((cover >> j & 1u) != 0) places.push_back(open[j]);
      }
      std::vector<std::pair<int, DigitMask>> removed;
      for (int c : places) {
        const DigitMask gone = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(c)] & ~chosen);
        if (gone != 0) removed.emplace_back(c, gone);
      }
      if (removed.empty()) return false;
      step = {std::string("Hidden ") + kSubsetNames[k], kSubsets, places, {}, removed, ""};
      std::vector<std::string> where;
      for (int c : places) where.push_back(std::to_string((l < n ? c % n : c / n) + 1));
      step.text = "In " + LineName(n, l) + ", " + Digits(chosen) + " fit only in " + (l < n ? "columns " : "rows ") +
                  List(where) + ": those cells hold nothing else.";
      return true;
    });
    if (found) return true;
  }
  return false;
}

// ---- Rung 5: one digit across rows or columns -----------------------------------------

bool Fish(const Grid& g, int k, Step& step) {
  const int n = g.n;
  for (int d = 1; d <= n; ++d) {
    for (const bool byRows : {true, false}) {
      // For each base line (rows, or columns), the cross positions where d may go.
      std::vector<int> bases;
      std::vector<unsigned> spots;
      for (int b = 0; b < n; ++b) {
        unsigned spot = 0;
        bool placed = false;
        for (int i = 0; i < n; ++i) {
          const int c = byRows ? b * n + i : i * n + b;
          if ((g.cand[static_cast<std::size_t>(c)] & masks::Bit(d)) == 0) continue;
          if (g.placed[static_cast<std::size_t>(c)]) placed = true;
          spot |= 1u << i;
        }
        const int count = std::popcount(spot);
        if (!placed && count >= 2 && count <= k) {
          bases.push_back(b);
          spots.push_back(spot);
        }
      }
      const bool found = ForEachCombination(static_cast<int>(bases.size()), k, [&](unsigned set) {
        unsigned cover = 0;
        std::vector<int> chosen;
        for (std::size_t i = 0; i < bases.size(); ++i) {
          if ((set >> i & 1u) == 0) continue;
          cover |= spots[i];
          chosen.push_back(bases[i]);
        }
        if (std::popcount(cover) != k) return false;
        std::vector<std::pair<int, DigitMask>> removed;
        std::vector<int> cells;
        for (int i = 0; i < n; ++i) {
          if ((cover >> i & 1u) == 0) continue;
          for (int b = 0; b < n; ++b) {
            const int c = byRows ? b * n + i : i * n + b;
            if (std::find(chosen.begin(), chosen.end(), b) != chosen.end()) {
              if ((g.cand[static_cast<std::size_t>(c)] & masks::Bit(d)) != 0) cells.push_back(c);
              continue;
            }
            if (!g.placed[static_cast<std::size_t>(c)] && (g.cand[static_cast<std::size_t>(c)] & masks::Bit(d)) != 0) {
              removed.emplace_back(c, masks::Bit(d));
            }
          }
        }
        if (removed.empty()) return false;
        step = {k == 2 ? "X-wing" : "Swordfish", kFish, cells, {}, removed, ""};
        std::vector<std::string> baseNames;
        std::vector<std::string> coverNames;
        for (int b : chosen) baseNames.push_back(std::to_string(b + 1));
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
      if (!g.placed[static_cast<std::size_t>(c)] && masks::IsSingle(m)) {
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
        if (!masks::IsSingle(here)) {
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

// ---- Rung 6: forcing chains from a two-candidate cell ---------------------------------

bool ForcingChain(const Grid& g, Step& step) {
  for (int c = 0; c < Cells(g); ++c) {
    const DigitMask m = g.cand[static_cast<std::size_t>(c)];
    if (g.placed[static_cast<std::size_t>(c)] || masks::Count(m) != 2) continue;
    const int a = masks::Lowest(m);
    const int b = masks::Highest(m);
    Grid ga = g;
    Grid gb = g;
    Trail ta;
    Trail tb;
    ga.cand[static_cast<std::size_t>(c)] = masks::Bit(a);
    gb.cand[static_cast<std::size_t>(c)] = masks::Bit(b);
    // A branch that breaks is a contradiction, the next rung's business.
    if (!Propagate(ga, ta) || !Propagate(gb, tb)) continue;
    std::vector<std::pair<int, DigitMask>> removed;
    for (int x = 0; x < Cells(g); ++x) {
      if (x == c || g.placed[static_cast<std::size_t>(x)]) continue;
      const DigitMask either = ga.cand[static_cast<std::size_t>(x)] | gb.cand[static_cast<std::size_t>(x)];
      const DigitMask gone = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(x)] & ~either);
      if (gone != 0) removed.emplace_back(x, gone);
    }
    if (removed.empty()) continue;
    step = {"Forcing chain", kForcing, {c}, {}, removed, ""};
    const int x = removed[0].first;
    const DigitMask left = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(x)] & ~removed[0].second);
    step.cells.push_back(x);
    std::string result = masks::IsSingle(left) ? CellName(g.n, x) + " is " + std::to_string(DigitOf(left))
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
bool PropagateDeep(Grid& g, Trail& trail, int budget);

// Tries c = d on a copy; on a contradiction fills the step that strikes d from c.
bool TestAssumption(const Grid& g, int c, int d, bool deep, Step& step) {
  Grid trial = g;
  Trail trail;
  trial.cand[static_cast<std::size_t>(c)] = masks::Bit(d);
  const bool holds = deep ? PropagateDeep(trial, trail, 400) : Propagate(trial, trail);
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

bool Contradiction(const Grid& g, Step& step, bool deep) {
  for (const auto& [c, d] : Assumptions(g)) {
    if (TestAssumption(g, c, d, deep, step)) return true;
  }
  return false;
}

bool ContradictionQuick(const Grid& g, Step& step) { return Contradiction(g, step, false); }
bool ContradictionDeep(const Grid& g, Step& step) { return Contradiction(g, step, true); }

bool NakedPair(const Grid& g, Step& s) { return NakedSubset(g, 2, s); }
bool HiddenPair(const Grid& g, Step& s) { return HiddenSubset(g, 2, s); }
bool NakedTriple(const Grid& g, Step& s) { return NakedSubset(g, 3, s); }
bool HiddenTriple(const Grid& g, Step& s) { return HiddenSubset(g, 3, s); }
bool NakedQuad(const Grid& g, Step& s) { return NakedSubset(g, 4, s); }
bool HiddenQuad(const Grid& g, Step& s) { return HiddenSubset(g, 4, s); }
bool XWing(const Grid& g, Step& s) { return Fish(g, 2, s); }
bool Swordfish(const Grid& g, Step& s) { return Fish(g, 3, s); }

using Technique = bool (*)(const Grid&, Step&);

struct NamedTechnique {
  std::string_view name;
  Technique find;
};

// The ladder, easiest first; NextStep takes the first that finds something.
constexpr NamedTechnique kLadder[] = {
    {"Naked single", NakedSingle},     {"Hidden single", HiddenSingle},   {"Sign beside a digit", SignBesideDigit},
    {"Sign chain", SignChain},         {"Sign bounds", SignBounds},       {"Naked pair", NakedPair},
    {"Hidden pair", HiddenPair},       {"Naked triple", NakedTriple},     {"Hidden triple", HiddenTriple},
    {"Naked quad", NakedQuad},         {"Hidden quad", HiddenQuad},       {"X-wing", XWing},
    {"Swordfish", Swordfish},          {"Forcing chain", ForcingChain},   {"Contradiction", ContradictionQuick},
    {"Deep contradiction", ContradictionDeep}};
// Rungs 1 to 5 only, for testing an assumption deeply.
constexpr std::size_t kBelowChains = 13;

bool PropagateDeep(Grid& g, Trail& trail, int budget) {
  for (int i = 0; i < budget; ++i) {
    if (!Propagate(g, trail)) return false;
    if (IsSolved(g)) return true;
    Step step;
    bool found = false;
    for (std::size_t t = 0; t < kBelowChains && !found; ++t) found = kLadder[t].find(g, step);
    if (!found) return true;
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

bool IsSolved(const Grid& grid) {
  for (int c = 0; c < Cells(grid); ++c) {
    if (!grid.placed[static_cast<std::size_t>(c)]) return false;
  }
  return !IsBroken(grid);
}

bool IsBroken(const Grid& grid) {
  const int n = grid.n;
  for (int l = 0; l < 2 * n; ++l) {
    const Line cells = LineCells(n, l);
    DigitMask seen = 0;
    DigitMask placed = 0;
    for (int i = 0; i < n; ++i) {
      const auto c = static_cast<std::size_t>(cells[static_cast<std::size_t>(i)]);
      if (grid.cand[c] == 0) return true;
      if (grid.placed[c]) {
        if ((placed & grid.cand[c]) != 0) return true;
        placed |= grid.cand[c];
      }
      seen |= grid.cand[c];
    }
    if (seen != masks::Full(n)) return true;
  }
  for (const Sign& s : grid.SignList()) {
    const auto gi = static_cast<std::size_t>(s.greater);
    const auto si = static_cast<std::size_t>(s.smaller);
    if (masks::Highest(grid.cand[gi]) <= masks::Lowest(grid.cand[si])) return true;
  }
  return false;
}

bool NextStep(const Grid& grid, Step& step) {
  for (const NamedTechnique& technique : kLadder) {
    if (technique.find(grid, step)) return true;
  }
  return false;
}

bool TryTechnique(const Grid& grid, std::string_view name, Step& step) {
  for (const NamedTechnique& technique : kLadder) {
    if (technique.name == name) return technique.find(grid, step);
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
  while (!IsBroken(grid) && !IsSolved(grid) && static_cast<int>(out.steps.size()) < options.maxSteps) {
    if (options.cancel != nullptr && options.cancel->load(std::memory_order_relaxed)) {
      out.cancelled = true;
      break;
    }
    Step step;
    if (!NextStep(grid, step)) break;
    Apply(grid, step);
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
