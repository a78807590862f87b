// Rungs 4 and 5: naked and hidden pairs, triples and quads within a line, and one digit's
// places across rows or columns (X-wing, swordfish).
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "reasoning/ladder_internal.h"
#include "solver/line_matching.h"

namespace qm::reasoning::internal {

namespace {

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

}  // namespace

bool Memo::Matched(const LineMasks& masks, int n) {
  // Only the contradiction rungs, which follow assumptions, meet lines again and again.
  if (!topology_) return AllMatched(masks, n);
  // Nine masks of ten bits each.
  std::uint64_t low = 0;
  std::uint64_t high = std::uint64_t{1} << 62;
  for (int i = 0; i < n; ++i) {
    const auto bits = static_cast<std::uint64_t>(masks[static_cast<std::size_t>(i)] & 1023u);
    if (i < 6) {
      low |= bits << (10 * i);
    } else {
      high |= bits << (10 * (i - 6));
    }
  }
  if (!matched_) matched_ = std::make_unique<std::array<MatchedEntry, 1024>>();
  const std::uint64_t hash = (low * 0x9E3779B97F4A7C15ull) ^ (high * 0xC2B2AE3D27D4EB4Full);
  MatchedEntry& entry = (*matched_)[static_cast<std::size_t>(hash >> 54)];
  if (entry.low == low && (entry.high & ~(std::uint64_t{1} << 63)) == high) return (entry.high >> 63) != 0;
  const bool all = AllMatched(masks, n);
  entry.low = low;
  entry.high = high | (all ? std::uint64_t{1} << 63 : 0);
  return all;
}

void Memo::View(const Grid& g) {
  if (viewN_ == g.n && g.cand == viewCand_ && g.placed == viewPlaced_) return;
  viewN_ = g.n;
  viewCand_ = g.cand;
  viewPlaced_ = g.placed;
  placesKnown_ = false;
  linesKnown_ = 0;
  linesFree_ = 0;
  digitsKnown_ = 0;
  digitsFree_ = 0;
}

std::uint32_t Memo::SubsetFreeLines(const Grid& g, std::uint32_t lines) {
  // Below 8x8 a line holds few enough subsets that trying them is quicker than matching.
  if (g.n < 8) return 0;
  View(g);
  const int n = g.n;
  lines &= (1u << (2 * n)) - 1u;  // a scope of the whole grid has every bit set
  for (std::uint32_t unknown = lines & ~linesKnown_; unknown != 0; unknown &= unknown - 1) {
    const int l = std::countr_zero(unknown);
    linesKnown_ |= 1u << l;
    // A subset strikes only what no way of filling the line uses.
    LineMasks masks{};
    const Line cells = LineCells(n, l);
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) masks[i] = g.cand[static_cast<std::size_t>(cells[i])];
    if (Matched(masks, n)) linesFree_ |= 1u << l;
  }
  return lines & linesFree_;
}

DigitMask Memo::FishFreeDigits(const Grid& g, DigitMask digits) {
  if (g.n < 8) return 0;  // as for subsets
  View(g);
  const int n = g.n;
  const DigitMask unknown = digits & ~digitsKnown_ & masks::Full(n);
  if (unknown == 0) return digits & digitsFree_;
  digitsKnown_ |= unknown;
  // For each digit and row, the columns where it may go (as digits 1..n): a fish strikes
  // only what no way of placing the digit once in every row and column uses.
  std::array<LineMasks, kMaxGridSize + 1> spots{};
  for (int r = 0; r < n; ++r) {
    const auto first = static_cast<std::size_t>(r * n);
    int k = 0;
#if defined(__SSE2__)
    // A row's first eight cells at once: each digit's bit shifted to the top of its lane.
    // The last row of a 9x9 ends at the last cell, so the load never leaves the grid.
    static_assert(sizeof(DigitMask) == 2 && kMaxCells >= 8 * kMaxGridSize + 8);
    const __m128i row = _mm_loadu_si128(reinterpret_cast<const __m128i*>(g.cand.data() + first));
    const unsigned inRow = (1u << std::min(n, 8)) - 1u;
    masks::ForEachDigit(unknown, [&](int d) {
      const __m128i top = _mm_sll_epi16(row, _mm_cvtsi32_si128(15 - d));
      const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(top, top))) & inRow;
      spots[static_cast<std::size_t>(d)][static_cast<std::size_t>(r)] = static_cast<DigitMask>(bits << 1);
    });
    k = std::min(n, 8);
#endif
    for (; k < n; ++k) {
      masks::ForEachDigit(static_cast<DigitMask>(g.cand[first + static_cast<std::size_t>(k)] & unknown), [&](int d) {
        spots[static_cast<std::size_t>(d)][static_cast<std::size_t>(r)] |= masks::Bit(k + 1);
      });
    }
  }
  masks::ForEachDigit(unknown, [&](int d) {
    if (Matched(spots[static_cast<std::size_t>(d)], n)) digitsFree_ |= masks::Bit(d);
  });
  return digits & digitsFree_;
}

const Places& Memo::PlacesFor(const Grid& g) {
  View(g);
  if (placesKnown_) return places_;
  const int n = g.n;
  Places& p = places_;
  p = Places{};
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
  placesKnown_ = true;
  return p;
}

namespace {

bool NakedSubset(const Grid& g, int k, Step& step, Memo& memo, const Scope& scope) {
  const int n = g.n;
  // A subset of unchanged cells struck nothing: a new one takes a changed open cell of k
  // digits or fewer, and only the lines of those need a look.
  Scope lines = scope;
  lines.lines = 0;
  scope.AnyCell(Cells(g), [&](int c) {
    const auto ci = static_cast<std::size_t>(c);
    if (!g.placed[ci] && masks::Count(g.cand[ci]) <= k) lines.lines |= 1u << (c / n) | 1u << (n + c % n);
    return false;
  });
  lines.lines &= scope.lines;
  if (lines.Empty()) return false;
  lines.lines &= ~memo.SubsetFreeLines(g, lines.lines);
  return AnyLineInScope(n, lines, [&](int l, const Line& line) {
    std::array<int, kMaxGridSize> open{};
    std::array<unsigned, kMaxGridSize> cand{};
    int count = 0;
    int small = 0;  // cells with k digits or fewer: a subset takes k of them
    for (int i = 0; i < n; ++i) {
      const int c = line[static_cast<std::size_t>(i)];
      if (g.placed[static_cast<std::size_t>(c)]) continue;
      open[static_cast<std::size_t>(count)] = c;
      cand[static_cast<std::size_t>(count++)] = g.cand[static_cast<std::size_t>(c)];
      small += masks::Count(g.cand[static_cast<std::size_t>(c)]) <= k ? 1 : 0;
    }
    // It strikes only from a cell outside it.
    if (small < k || count <= k) return false;
    return ForEachSmallUnion(cand.data(), count, k, [&](unsigned set, unsigned together) {
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
  });
}

bool HiddenSubset(const Grid& g, int k, Step& step, Memo& memo, const Scope& scope) {
  const int n = g.n;
  Scope lines = scope;
  lines.lines &= ~memo.SubsetFreeLines(g, scope.lines);
  if (lines.Empty()) return false;
  const Places& where = memo.PlacesFor(g);
  return AnyLineInScope(n, lines, [&](int l, const Line& line) {
    const auto li = static_cast<std::size_t>(l);
    const DigitMask placedDigits = where.placed[li];
    if (where.open[li] <= k) return false;
    // A subset of digits that kept their places struck nothing: a new one takes a digit
    // that lost places here and has k or fewer left.
    bool fresh = false;
    masks::ForEachDigit(static_cast<DigitMask>(scope.DigitsIn(l) & masks::Full(n) & ~placedDigits),
                        [&](int d) { fresh = fresh || Ones(where.at[li][static_cast<std::size_t>(d)]) <= k; });
    if (!fresh) return false;
    // Where each open digit may go: never a placed cell, which holds a placed digit.
    std::array<int, kMaxGridSize> digits{};
    std::array<unsigned, kMaxGridSize> spots{};
    int digitCount = 0;
    int few = 0;  // digits with k places or fewer: a subset takes k of them
    for (int d = 1; d <= n; ++d) {
      if ((placedDigits & masks::Bit(d)) != 0) continue;
      digits[static_cast<std::size_t>(digitCount)] = d;
      spots[static_cast<std::size_t>(digitCount++)] = where.at[li][static_cast<std::size_t>(d)];
      few += Ones(where.at[li][static_cast<std::size_t>(d)]) <= k ? 1 : 0;
    }
    if (few < k) return false;
    return ForEachSmallUnion(spots.data(), digitCount, k, [&](unsigned set, unsigned cover) {
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
  });
}

// ---- Rung 5: one digit across rows or columns -----------------------------------------

bool Fish(const Grid& g, int k, Step& step, Memo& memo, const Scope& scope) {
  const int n = g.n;
  if (scope.Empty()) return false;
  // A new fish has a base line where its digit lost places.
  DigitMask inRows = 0;
  DigitMask inColumns = 0;
  for (int l = 0; l < n; ++l) {
    inRows |= scope.DigitsIn(l);
    inColumns |= scope.DigitsIn(n + l);
  }
  DigitMask look = (inRows | inColumns) & scope.digits & masks::Full(n);
  if (look == 0) return false;
  look = static_cast<DigitMask>(look & ~memo.FishFreeDigits(g, look));
  if (look == 0) return false;
  const Places& where = memo.PlacesFor(g);
  for (int d = 1; d <= n; ++d) {
    if ((look & masks::Bit(d)) == 0) continue;
    for (const bool byRows : {true, false}) {
      if (((byRows ? inRows : inColumns) & masks::Bit(d)) == 0) continue;
      // For each base line (rows, or columns), the cross positions where d may go.
      std::array<int, kMaxGridSize> bases{};
      std::array<unsigned, kMaxGridSize> spots{};
      int count = 0;
      bool fresh = false;  // d lost places in one of them: a fish of the others struck nothing
      for (int b = 0; b < n; ++b) {
        const auto l = static_cast<std::size_t>(byRows ? b : n + b);
        const unsigned spot = where.at[l][static_cast<std::size_t>(d)];
        const bool placed = (where.placed[l] & masks::Bit(d)) != 0;
        const int places = Ones(spot);
        if (!placed && places >= 2 && places <= k) {
          bases[static_cast<std::size_t>(count)] = b;
          spots[static_cast<std::size_t>(count++)] = spot;
          fresh = fresh || (scope.DigitsIn(static_cast<int>(l)) & masks::Bit(d)) != 0;
        }
      }
      if (!fresh) continue;
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

}  // namespace

bool NakedPair(const Grid& g, Step& s, Memo& memo, const Scope& scope) { return NakedSubset(g, 2, s, memo, scope); }
bool HiddenPair(const Grid& g, Step& s, Memo& memo, const Scope& scope) { return HiddenSubset(g, 2, s, memo, scope); }
bool NakedTriple(const Grid& g, Step& s, Memo& memo, const Scope& scope) { return NakedSubset(g, 3, s, memo, scope); }
bool HiddenTriple(const Grid& g, Step& s, Memo& memo, const Scope& scope) { return HiddenSubset(g, 3, s, memo, scope); }
bool NakedQuad(const Grid& g, Step& s, Memo& memo, const Scope& scope) { return NakedSubset(g, 4, s, memo, scope); }
bool HiddenQuad(const Grid& g, Step& s, Memo& memo, const Scope& scope) { return HiddenSubset(g, 4, s, memo, scope); }
bool XWing(const Grid& g, Step& s, Memo& memo, const Scope& scope) { return Fish(g, 2, s, memo, scope); }
bool Swordfish(const Grid& g, Step& s, Memo& memo, const Scope& scope) { return Fish(g, 3, s, memo, scope); }

}  // namespace qm::reasoning::internal
