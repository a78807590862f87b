// What the ladder's technique files share: names of cells and lines in sentences, the
// scope a technique looks in, and the memory kept while one grid is explained. Only the
// files of src/reasoning include it.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <vector>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "reasoning/ladder.h"
#include "solver/grid_masks.h"

namespace qm::reasoning::internal {

using Line = std::array<int, kMaxGridSize>;

// Rows 0..n-1, then columns.
inline Line LineCells(int n, int l) {
  Line cells{};
  for (int i = 0; i < n; ++i) cells[static_cast<std::size_t>(i)] = l < n ? l * n + i : i * n + (l - n);
  return cells;
}

inline std::string LineName(int n, int l) {
  return (l < n ? "row " : "column ") + std::to_string((l < n ? l : l - n) + 1);
}

// The cell named by its place across the line: "column 3" within a row.
inline std::string CrossName(int n, int l, int cell) {
  return l < n ? "column " + std::to_string(cell % n + 1) : "row " + std::to_string(cell / n + 1);
}

inline std::string Capital(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}

// "4", "4 and 7", "1, 4 and 7".
inline std::string List(const std::vector<std::string>& items) {
  std::string out;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) out += i + 1 == items.size() ? " and " : ", ";
    out += items[i];
  }
  return out;
}

// "4 and 7", or with `word` "or": "4 or 7"; appended to `out`.
inline void AppendDigits(std::string& out, DigitMask m, const char* word = "and") {
  const int count = masks::Count(m);
  int i = 0;
  masks::ForEachDigit(m, [&](int d) {
    if (i > 0 && i + 1 == count) {
      out.append(" ").append(word).append(" ");
    } else if (i > 0) {
      out.append(", ");
    }
    out.push_back(static_cast<char>('0' + d));
    ++i;
  });
}

inline std::string Digits(DigitMask m, const char* word = "and") {
  std::string out;
  AppendDigits(out, m, word);
  return out;
}

// Clears `step` for a new finding, keeping the room its lists and sentence already have:
// the ladder writes thousands of steps.
inline void Begin(Step& step, const char* technique, int level) {
  step.technique = technique;
  step.level = level;
  step.cells.clear();
  step.placed.clear();
  step.removed.clear();
  step.text.clear();
  step.text.reserve(160);
}

inline void AppendNumber(std::string& out, int number) {
  if (number >= 10) out.push_back(static_cast<char>('0' + number / 10 % 10));
  out.push_back(static_cast<char>('0' + number % 10));
}

inline int DigitOf(DigitMask m) { return masks::Lowest(m); }

// One digit left; masks::IsSingle counts bits, a library call on plain x86-64.
constexpr bool Single(DigitMask m) { return m != 0 && (m & (m - 1)) == 0; }

inline int Cells(const Grid& g) { return g.n * g.n; }

// The cells where two grids' candidates differ, as bits.
inline std::array<std::uint64_t, 2> DifferingCells(const std::array<DigitMask, kMaxCells>& a,
                                                   const std::array<DigitMask, kMaxCells>& b) {
  std::array<std::uint64_t, 2> differ{};
  std::size_t x = 0;
#if defined(__SSE2__)
  static_assert(sizeof(DigitMask) == 2);
  for (; x + 8 <= a.size(); x += 8) {
    const __m128i same = _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a.data() + x)),
                                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(b.data() + x)));
    differ[x >> 6] |= static_cast<std::uint64_t>(~_mm_movemask_epi8(_mm_packs_epi16(same, same)) & 0xFF) << (x & 63);
  }
#endif
  for (; x < a.size(); ++x) {
    if (a[x] != b[x]) differ[x >> 6] |= std::uint64_t{1} << (x & 63);
  }
  return differ;
}

// The part of a grid a rung of 1 to 5 looks at. Each finds its steps line by line, cell
// by cell, sign by sign or digit by digit, so on a grid where it found nothing it can
// find something only where cells have changed since: only there does it look again.
struct Scope {
  using LineDigits = std::array<DigitMask, 2 * kMaxGridSize>;
  static constexpr LineDigits EveryDigit() {
    LineDigits all{};
    for (DigitMask& m : all) m = static_cast<DigitMask>(~0u);
    return all;
  }

  std::array<std::uint64_t, 2> cells{~std::uint64_t{0}, ~std::uint64_t{0}};
  std::uint32_t lines = ~0u;
  DigitMask digits = static_cast<DigitMask>(~0u);
  // The digits whose places changed in each line: a subset or fish new since the rung
  // found nothing takes one of them.
  LineDigits lineDigits = EveryDigit();

  // Where g differs from a grid on which rungs 1 to 5 found nothing.
  static Scope Changed(const Grid& g, const Grid& quiet) { return Changed(g, quiet.cand, quiet.placed); }
  static Scope Changed(const Grid& g, const std::array<DigitMask, kMaxCells>& quietCand,
                       const std::array<bool, kMaxCells>& quietPlaced) {
    Scope scope{{}, 0, 0, {}};
    const int n = g.n;
    for (int r = 0, c = 0; r < n; ++r) {
      for (int k = 0; k < n; ++k, ++c) {
        const auto ci = static_cast<std::size_t>(c);
        if (g.cand[ci] == quietCand[ci] && g.placed[ci] == quietPlaced[ci]) continue;
        scope.cells[ci >> 6] |= std::uint64_t{1} << (ci & 63);
        scope.lines |= 1u << r | 1u << (n + k);
        scope.digits |= quietCand[ci] | g.cand[ci];
        // A cell placed with its one digit changes that digit's places too.
        const auto lost = static_cast<DigitMask>((quietCand[ci] ^ g.cand[ci]) |
                                                 (g.placed[ci] != quietPlaced[ci] ? g.cand[ci] : 0));
        scope.lineDigits[static_cast<std::size_t>(r)] |= lost;
        scope.lineDigits[static_cast<std::size_t>(n + k)] |= lost;
      }
    }
    return scope;
  }
  // The same for two settled grids, whose cells are placed exactly when they hold one
  // digit: only the candidates need comparing.
  static Scope ChangedSettled(const Grid& g, const std::array<DigitMask, kMaxCells>& quietCand) {
    Scope scope{{}, 0, 0, {}};
    const int n = g.n;
    const std::array<std::uint64_t, 2> differ = DifferingCells(g.cand, quietCand);
    for (std::size_t w = 0; w < differ.size(); ++w) {
      for (std::uint64_t bits = differ[w]; bits != 0; bits &= bits - 1) {
        const std::size_t ci = w * 64 + static_cast<std::size_t>(std::countr_zero(bits));
        const DigitMask now = g.cand[ci];
        const DigitMask was = quietCand[ci];
        // A cell placed with its one digit changes that digit's places too.
        scope.Add(n, static_cast<int>(ci), static_cast<DigitMask>((was ^ now) | (Single(now) && !Single(was) ? now : 0)));
        scope.digits |= was | now;
      }
    }
    return scope;
  }
  // Adds a cell that lost or placed the digits.
  void Add(int n, int c, DigitMask changed) {
    cells[static_cast<std::size_t>(c >> 6)] |= std::uint64_t{1} << (c & 63);
    lines |= 1u << (c / n) | 1u << (n + c % n);
    digits |= changed;
    lineDigits[static_cast<std::size_t>(c / n)] |= changed;
    lineDigits[static_cast<std::size_t>(n + c % n)] |= changed;
  }
  void Add(const Scope& other) {
    cells[0] |= other.cells[0];
    cells[1] |= other.cells[1];
    lines |= other.lines;
    digits |= other.digits;
    for (std::size_t l = 0; l < lineDigits.size(); ++l) lineDigits[l] |= other.lineDigits[l];
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
  DigitMask DigitsIn(int l) const { return lineDigits[static_cast<std::size_t>(l)]; }
  bool Touches(const Sign& s) const { return Cell(s.greater) || Cell(s.smaller); }
  bool Empty() const { return lines == 0; }
};
inline constexpr Scope kWholeGrid{};
inline constexpr Scope kNothing{{}, 0, 0, {}};

// What the cells of a line hold: the digits seen, seen in two cells or more, placed, and
// placed in two cells.
struct LineDigits {
  DigitMask seen = 0;
  DigitMask twice = 0;
  DigitMask placed = 0;
  DigitMask placedTwice = 0;
};

inline LineDigits DigestLine(const Grid& g, const Line& cells) {
  LineDigits line;
  for (int i = 0; i < g.n; ++i) {
    const auto c = static_cast<std::size_t>(cells[static_cast<std::size_t>(i)]);
    line.twice |= line.seen & g.cand[c];
    line.seen |= g.cand[c];
    if (g.placed[c]) {
      line.placedTwice |= line.placed & g.cand[c];
      line.placed |= g.cand[c];
    }
  }
  return line;
}

// Whether `found(l, cells)` holds for some line of the scope, trying them in order and
// stopping at the first.
template <class Found>
bool AnyLineInScope(int n, const Scope& scope, Found&& found) {
  for (int l = 0; l < 2 * n; ++l) {
    if (scope.Line(l) && found(l, LineCells(n, l))) return true;
  }
  return false;
}

// The longest chain of cells each below the one before, from every cell: the top of a
// chain of k cells is at least k. `down` follows signs to smaller cells, else to greater.
struct Chains {
  std::array<int, kMaxCells> length{};  // cells in the longest chain starting here
  std::array<int, kMaxCells> next{};    // the chain's next cell, or -1
};
Chains LongestChains(const Grid& g, bool down);

// Rungs 1 to 5 are the first techniques of the ladder.
inline constexpr std::size_t kBelowChains = 13;

// Where each digit may go in each line (bit i: the line's i-th cell), and the digits
// placed in each line: one pass over the cells instead of one per digit and line.
struct Places {
  std::array<std::array<unsigned, kMaxGridSize + 1>, 2 * kMaxGridSize> at{};
  std::array<DigitMask, 2 * kMaxGridSize> placed{};
  std::array<int, 2 * kMaxGridSize> open{};  // cells not placed
};

using Cand = std::array<DigitMask, kMaxCells>;
using Placed = std::array<bool, kMaxCells>;
struct Topology;

// What the ladder remembers while it explains one grid, whose candidates only ever
// shrink: where each assumption led. The rules only strike, so an assumption that broke
// the grid breaks it again, and one that held leads, on a smaller grid, to a state
// within where it led before: that end state, narrowed to the grid and settled from the
// cells that lost candidates, is the new one. Only what changed is followed again.
class Memo {
 public:
  Memo();
  ~Memo();
  Memo(const Memo&) = delete;
  Memo& operator=(const Memo&) = delete;

  // Starts a search for a step on g: settles g's own candidates.
  void Look(const Grid& g);
  // Where c = d leads by singles and signs, or nullptr when it breaks the grid.
  const Cand* Quick(int c, int d);
  // Whether c = d survives rungs 1 to 5 applied in turn, as PropagateDeep does.
  bool DeepHolds(const Grid& g, int c, int d, int budget);

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

  // Whether c = d held under the nested rung (with or without the deep contradiction
  // inside) on this grid or one it lies within.
  bool Stalled(int c, int d, bool deep) const { return (stalled_[Index(c, d)] >> (deep ? 1 : 0) & 1) != 0; }
  void Stall(int c, int d, bool deep) { stalled_[Index(c, d)] |= static_cast<std::uint8_t>(deep ? 2 : 1); }

  // The memory of the ladder followed inside one assumption, kept for the next.
  Memo& Nested();
  // Whether the steps found are told: inside an assumption only their digits count, and
  // a contradiction is not followed again for its sentence.
  bool Tells() const { return tells_; }

  // How many solutions g, the grid last looked at, has: 0, 1, or 2 for more. Searched for
  // once while the grid has one: a smaller grid then has at most that one.
  int Solutions(const Grid& g);
  // The solution of the grid last looked at when Solutions found it the only one, or
  // nullptr. An assumption that agrees with it never breaks (the rungs only strike
  // digits no solution has), so the contradiction rungs need not follow those.
  const Cand* KnownSolution();

  // The grid's longest chains, worked out once for all its steps: signs never change.
  const Chains& ChainsFor(const Grid& g, bool down) {
    if (!chains_) chains_ = std::make_unique<std::array<Chains, 2>>(std::array{LongestChains(g, true), LongestChains(g, false)});
    return (*chains_)[down ? 0 : 1];
  }

  // The places of g's digits, worked out once while the rungs of subsets and fish look at
  // the same grid one after the other.
  const Places& PlacesFor(const Grid& g);

  // Of the lines given, those where no naked or hidden subset of any size strikes a digit
  // on g; of the digits given, those no fish of any size strikes. Most lines the subset
  // and fish rungs look at hold nothing, and this tells so for far less than a search.
  std::uint32_t SubsetFreeLines(const Grid& g, std::uint32_t lines);
  DigitMask FishFreeDigits(const Grid& g, DigitMask digits);

  // Calls f(sign) for the signs at a cell of the scope, in the grid's order, until f says
  // stop: after a step only the few signs beside a changed cell need a look.
  template <class F>
  bool AnySign(const Grid& g, const Scope& scope, F&& f) {
    const SignSet set = SignsTouching(g, scope);
    for (std::size_t w = 0; w < set.size(); ++w) {
      for (std::uint64_t bits = set[w]; bits != 0; bits &= bits - 1) {
        if (f(g.signs[w * 64 + static_cast<std::size_t>(std::countr_zero(bits))])) return true;
      }
    }
    return false;
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

  static std::size_t Index(int c, int d) { return static_cast<std::size_t>(c * (kMaxGridSize + 1) + d); }
  Entry& At(int c, int d) { return entries_[Index(c, d)]; }

  // A settled state as a grid: its single cells are placed.
  void SetCand(Grid& grid, const Cand& cand) const {
    grid.cand = cand;
    for (std::size_t x = 0; x < static_cast<std::size_t>(cells_); ++x) grid.placed[x] = Single(cand[x]);
  }

  // Whether rungs 1 to 5 find nothing on the grid last looked at, g.
  bool Quiet(const Grid& g);
  // Whether c = d is still open on the settled grid, so that an assumption of it may hold.
  bool Possible(int c, int d) const {
    return baseHolds_ && (base_[static_cast<std::size_t>(c)] & masks::Bit(d)) != 0;
  }
  // `end`, where an assumption led on this grid, held: so do the digits it places.
  void Held(const Cand& end);
  Renewed Renew(Cand& end) const;
  // A settled state narrowed to `to` and settled again from the cells that lost digits.
  static Renewed Narrow(const Topology& t, Cand& state, const Cand& to);

  // Signs as bits of their indices into Grid::signs.
  using SignSet = std::array<std::uint64_t, (std::tuple_size_v<decltype(Grid::signs)> + 63) / 64>;
  SignSet SignsTouching(const Grid& g, const Scope& scope);

  std::unique_ptr<Topology> topology_;
  std::unique_ptr<std::array<Chains, 2>> chains_;  // down, up
  std::unique_ptr<std::array<SignSet, kMaxCells>> signsAt_;  // the signs at each cell
  std::unique_ptr<Memo> nested_;
  std::vector<Entry> entries_;
  int cells_ = 0;
  bool seen_ = false;
  Cand last_{};
  Placed lastPlaced_{};
  Cand base_{};
  bool baseHolds_ = false;
  Cand held_{};  // digits placed in an end state that held on this grid
  enum { Unknown, Yes, No } quiet_ = Unknown;
  // The grid the places and the lines and digits free of subsets and fish were worked
  // out for; a grid that differs forgets them.
  void View(const Grid& g);
  Cand viewCand_{};
  Placed viewPlaced_{};
  int viewN_ = 0;
  bool placesKnown_ = false;
  Places places_;
  // Whether KeepMatched keeps every candidate of the line, remembered by the line once
  // the contradiction rungs follow assumptions: their trials meet the same lines again
  // and again.
  bool Matched(const std::array<DigitMask, kMaxGridSize>& masks, int n);
  struct MatchedEntry {
    std::uint64_t low = 0;
    std::uint64_t high = 0;  // 0: empty; bit 63: the answer
  };
  std::unique_ptr<std::array<MatchedEntry, 1024>> matched_;
  std::uint32_t linesKnown_ = 0;
  std::uint32_t linesFree_ = 0;
  DigitMask digitsKnown_ = 0;
  DigitMask digitsFree_ = 0;
  std::array<std::uint8_t, kMaxCells*(kMaxGridSize + 1)> stalled_{};  // bit 0: without deep, 1: with
  bool tells_ = true;
  const Memo* parent_ = nullptr;  // the memory of the grid the assumptions are made on
  enum { NotSought, None, Unique, Several } solution_ = NotSought;
  Cand solutionCand_{};
  std::array<Scope, kBelowChains> since_{};
  bool following_ = false;  // the grid is after_ unless a step was taken without Applied
  Cand after_{};
  Placed afterPlaced_{};
};

bool AllPlaced(const Grid& g);
// IsBroken on the lines and signs of the scope only.
bool BrokenWithin(const Grid& g, const Scope& scope, Memo& memo);

// The techniques, one family to a file. Each fills `step` with the first it finds.
// singles.cpp
bool NakedSingle(const Grid& g, Step& step, const Scope& scope);
bool HiddenSingle(const Grid& g, Step& step, const Scope& scope);
// signs.cpp
bool SignBesideDigit(const Grid& g, Step& step, Memo& memo, const Scope& scope);
bool SignChain(const Grid& g, Step& step, Memo& memo, const Scope& scope);
bool SignBounds(const Grid& g, Step& step, Memo& memo, const Scope& scope);
// subsets_and_fish.cpp
bool NakedPair(const Grid& g, Step& s, Memo& memo, const Scope& scope);
bool HiddenPair(const Grid& g, Step& s, Memo& memo, const Scope& scope);
bool NakedTriple(const Grid& g, Step& s, Memo& memo, const Scope& scope);
bool HiddenTriple(const Grid& g, Step& s, Memo& memo, const Scope& scope);
bool NakedQuad(const Grid& g, Step& s, Memo& memo, const Scope& scope);
bool HiddenQuad(const Grid& g, Step& s, Memo& memo, const Scope& scope);
bool XWing(const Grid& g, Step& s, Memo& memo, const Scope& scope);
bool Swordfish(const Grid& g, Step& s, Memo& memo, const Scope& scope);
// chains_and_contradictions.cpp
bool ForcingChain(const Grid& g, Step& step, Memo& memo);
bool ContradictionQuick(const Grid& g, Step& step, Memo& memo);
bool ContradictionDeep(const Grid& g, Step& step, Memo& memo);
bool NestedContradiction(const Grid& g, Step& step, Memo& memo);

// ladder.cpp: the first step of rungs 1 to 5 within the scope.
bool EasyStep(const Grid& g, Step& step, Memo& memo, const Scope& scope);
// The same, each rung within its own scope: where the grid changed since that rung last
// found nothing. The scopes of the rungs that find nothing are emptied.
bool EasyStepSince(const Grid& g, Step& step, Memo& memo, std::array<Scope, kBelowChains>& since);
// Singles, hidden singles and a sign's bound on its neighbour are what settling does: on
// a settled grid those rungs find nothing, and their scopes are emptied.
void SkipSettledRungs(std::array<Scope, kBelowChains>& since);
// The first step of rungs 1 to 7: the ladder as it is followed inside an assumption.
// Without `deep`, rungs 1 to 5 and the quick contradiction only.
bool StepBelowMaster(const Grid& g, Step& step, Memo& memo, bool deep);

}  // namespace qm::reasoning::internal
